#pragma once

#include "support/temporary_folder.h"

#include <grp.h>
#include <netinet/in.h>
#include <pwd.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace tessaril::testing {

/// A PostgreSQL server of the tests' own: in a temporary folder, on a free port of 127.0.0.1, by
/// passwords, with a certificate of its own. It ends with the program, however that ends.
class PostgresServer {
public:
    /// The one of this program; started when it is asked for first.
    static PostgresServer& shared() {
        static PostgresServer server;
        return server;
    }

    PostgresServer() {
        const std::string password = (folder / "password").string();
        writeFile(password, "of the administrator");
        check(run({"openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-batch", "-days",
                   "2", "-subj", "/CN=tests", "-addext", "subjectAltName=IP:127.0.0.1", "-keyout",
                   (folder / "server.key").string(), "-out", certificate().string()}));
        giveAway();
        check(run({program("initdb"), "-D", data(), "-U", "administrator", "-A", "scram-sha-256",
                   "--pwfile=" + password, "-E", "UTF8", "--locale=C.UTF-8", "--no-sync"},
                  true));
        // The administrator of the tests comes by the socket in the folder, which is theirs alone.
        writeFile(data() + "/pg_hba.conf", "local all administrator trust\n"
                                           "host all all 127.0.0.1/32 scram-sha-256\n");
        port = freePort();
        start();
    }
    ~PostgresServer() { kill(); }
    PostgresServer(const PostgresServer&) = delete;
    PostgresServer& operator=(const PostgresServer&) = delete;

    /// Starts it on the same port, and waits until it is there.
    void start() {
        if (process > 0) return;
        std::array<int, 2> messages{};
        if (::pipe(messages.data()) != 0) std::abort();
        process = begin({program("postgres"), "-D", data(), "-p", std::to_string(port), "-c",
                         "listen_addresses=127.0.0.1", "-c",
                         "unix_socket_directories=" + folder.path.string(), "-c", "fsync=off", "-c",
                         "ssl=on", "-c", "ssl_cert_file=" + certificate().string(), "-c",
                         "ssl_key_file=" + (folder / "server.key").string(), "-c", "lc_messages=C"},
                        true, messages[1]);
        ::close(messages[1]);
        isReady = false;
        said.clear();
        reader = std::thread([this, from = messages[0]] { readMessages(from); });
        std::unique_lock lock(mutex);
        changed.wait(lock, [this] { return isReady; });
        if (!said.ends_with(ready)) std::cerr << said;
        check(said.ends_with(ready));
    }

    /// Ends it at once, in the middle of whatever it does.
    void kill() {
        if (process <= 0) return;
        ::kill(process, SIGQUIT);
        ::waitpid(process, nullptr, 0);
        process = 0;
        reader.join();
    }

    /// Executes statements as the administrator. Gives the rows, one a line.
    std::string execute(const std::string& statements, const std::string& inDatabase = "postgres") {
        const std::filesystem::path out = folder / "answer";
        check(run({program("psql"), "-h", folder.path.string(), "-p", std::to_string(port), "-U",
                   "administrator", "-d", inDatabase, "-XAtq", "-v", "ON_ERROR_STOP=1", "-o",
                   out.string(), "-c", statements}));
        return fileContent(out);
    }
    /// A new role that may log in, with its name as its password.
    std::string addUser() {
        const std::string user = "user" + std::to_string(++users);
        execute("CREATE ROLE " + user + " LOGIN PASSWORD '" + user + "'");
        return user;
    }
    std::string addDatabase(const std::string& owner) {
        const std::string database = "database" + std::to_string(++users);
        execute("CREATE DATABASE " + database + " OWNER " + owner);
        return database;
    }
    std::string address(const std::string& user, const std::string& database) const {
        return "postgresql://" + user + "@127.0.0.1:" + std::to_string(port) + "/" + database;
    }
    std::filesystem::path certificate() const { return folder / "server.crt"; }

private:
    static constexpr std::string_view ready = "ready to accept connections\n";

    static void check(bool isGood) {
        if (isGood) return;
        std::cerr << "The tests' PostgreSQL server failed.\n";
        std::abort();
    }

    /// Programs of the newest version that is installed.
    static std::string program(const std::string& name) {
        std::filesystem::path newest;
        std::error_code error;
        for (const auto& version :
             std::filesystem::directory_iterator("/usr/lib/postgresql", error))
            if (const auto path = version.path() / "bin" / name;
                std::filesystem::exists(path) && path > newest)
                newest = path;
        check(!newest.empty());
        return newest.string();
    }

    /// PostgreSQL does not run as root: then as who it has in the system, or as nobody.
    static const passwd* ordinaryUser() {
        if (::getuid() != 0) return nullptr;
        const passwd* user = ::getpwnam("postgres");
        return user ? user : ::getpwnam("nobody");
    }
    void giveAway() {
        const passwd* user = ordinaryUser();
        if (!user) return;
        check(::chown(folder.path.c_str(), user->pw_uid, user->pw_gid) == 0);
        for (const auto& entry : std::filesystem::directory_iterator(folder.path))
            check(::chown(entry.path().c_str(), user->pw_uid, user->pw_gid) == 0);
    }

    pid_t begin(const std::vector<std::string>& command, bool asOrdinary, int messages) {
        const passwd* user = asOrdinary ? ordinaryUser() : nullptr;
        const uid_t uid = user ? user->pw_uid : 0;
        const gid_t gid = user ? user->pw_gid : 0;
        std::vector<char*> arguments;
        for (const std::string& argument : command)
            arguments.push_back(const_cast<char*>(argument.c_str()));
        arguments.push_back(nullptr);
        const pid_t parent = ::getpid();
        const pid_t child = ::fork();
        if (child != 0) return child;
        if (user && (::setgroups(0, nullptr) != 0 || ::setgid(gid) != 0 || ::setuid(uid) != 0))
            ::_exit(126);
        ::prctl(PR_SET_PDEATHSIG, SIGQUIT); // after the change of user, which clears it
        if (::getppid() != parent) ::_exit(126);
        if (::chdir("/") != 0) ::_exit(126);
        ::dup2(messages, STDOUT_FILENO);
        ::dup2(messages, STDERR_FILENO);
        ::execvp(arguments[0], arguments.data());
        ::_exit(127);
    }

    bool run(const std::vector<std::string>& command, bool asOrdinary = false) {
        std::FILE* messages = std::tmpfile();
        int status = 0;
        const pid_t child = begin(command, asOrdinary, ::fileno(messages));
        const bool isGood = ::waitpid(child, &status, 0) == child && status == 0;
        std::rewind(messages);
        if (!isGood)
            for (int c = std::fgetc(messages); c != EOF; c = std::fgetc(messages))
                std::cerr.put(static_cast<char>(c));
        std::fclose(messages);
        return isGood;
    }

    void readMessages(int from) {
        std::array<char, 4096> buffer{};
        for (;;) {
            const ssize_t size = ::read(from, buffer.data(), buffer.size());
            const std::lock_guard lock(mutex);
            if (size > 0 && !isReady) said.append(buffer.data(), static_cast<std::size_t>(size));
            if (!isReady && (size <= 0 || said.ends_with(ready))) {
                isReady = true;
                changed.notify_all();
            }
            if (size <= 0) break;
        }
        ::close(from);
    }

    static int freePort() {
        const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        check(::bind(socket, reinterpret_cast<sockaddr*>(&address), size) == 0 &&
              ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size) == 0);
        ::close(socket);
        return ntohs(address.sin_port);
    }

    std::string data() const { return (folder / "data").string(); }

    TemporaryFolder folder;
    int port = 0;
    int users = 0;
    pid_t process = 0;
    std::thread reader;
    std::mutex mutex;
    std::condition_variable changed;
    bool isReady = false; ///< or ended
    std::string said;
};

} // namespace tessaril::testing
