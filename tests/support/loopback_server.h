#pragma once

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace tessaril::testing {

/// A web server on this machine that sends prepared bytes, one request at a time, and closes. What
/// has no answer prepared is left waiting until the other side gives up.
class LoopbackServer {
public:
    explicit LoopbackServer(std::map<std::string, std::string> answersByPath)
        : answers(std::move(answersByPath)), listener(::socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto* generic = reinterpret_cast<sockaddr*>(&address);
        if (::bind(listener, generic, size) != 0 || ::listen(listener, 8) != 0 ||
            ::getsockname(listener, generic, &size) != 0)
            std::abort();
        port = ntohs(address.sin_port);
        thread = std::thread([this] { serve(); });
    }
    ~LoopbackServer() {
        ::shutdown(listener, SHUT_RDWR); // ends the wait for the next connection
        thread.join();
        ::close(listener);
    }
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    std::string address(const std::string& path, const std::string& host = "127.0.0.1") const {
        return "http://" + host + ":" + std::to_string(port) + path;
    }

    /// The heads of all requests so far.
    std::vector<std::string> requests() const {
        const std::lock_guard lock(mutex);
        return heads;
    }

    static std::string withLength(const std::string& body, const std::string& fields = "",
                                  const std::string& status = "200 OK") {
        return "HTTP/1.1 " + status +
               "\r\nConnection: close\r\nContent-Length: " + std::to_string(body.size()) + "\r\n" +
               fields + "\r\n" + body;
    }
    static std::string redirect(const std::string& target) {
        return withLength("", "Location: " + target + "\r\n", "302 Found");
    }

private:
    void serve() {
        for (int peer; (peer = ::accept(listener, nullptr, nullptr)) >= 0; ::close(peer))
            answer(peer);
    }

    void answer(int peer) {
        std::string head;
        while (!head.ends_with("\r\n\r\n"))
            if (!receive(peer, head)) return;
        {
            const std::lock_guard lock(mutex);
            heads.push_back(head);
        }
        const std::size_t start = head.find(' ') + 1;
        const auto found = answers.find(head.substr(start, head.find(' ', start) - start));
        if (found == answers.end()) {
            while (receive(peer, head)) {
            }
            return;
        }
        for (std::string_view rest = found->second; !rest.empty();) {
            const ssize_t sent = ::send(peer, rest.data(), rest.size(), MSG_NOSIGNAL);
            if (sent <= 0) return;
            rest.remove_prefix(static_cast<std::size_t>(sent));
        }
        ::shutdown(peer, SHUT_WR);
    }

    static bool receive(int peer, std::string& to) {
        char c = 0;
        const bool received = ::recv(peer, &c, 1, 0) == 1;
        if (received) to += c;
        return received;
    }

    const std::map<std::string, std::string> answers;
    const int listener;
    int port = 0;
    mutable std::mutex mutex;
    std::vector<std::string> heads;
    std::thread thread;
};

} // namespace tessaril::testing
