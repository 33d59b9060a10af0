#include "desktop/curl_url_loader.h"

#include "desktop/public_address.h"
#include "model/log.h"
#include "model/text.h"

#include <curl/curl.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cassert>
#include <memory>
#include <string_view>

namespace tessaril {

namespace {

using clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr const char* userAgent = "Tessaril/" TESSARIL_VERSION " (user style manager)";
constexpr const char* protocols = "http,https";

/// Of all redirects of a load together.
constexpr std::size_t largestSkippedBodies = 4 << 20;

constexpr std::string_view insecure = "http://";
constexpr std::string_view secure = "https://";

/// The port of an address to connect to; 0 where it has none.
int portOf(const sockaddr& address) {
    if (address.sa_family == AF_INET)
        return ntohs(reinterpret_cast<const sockaddr_in&>(address).sin_port);
    if (address.sa_family == AF_INET6)
        return ntohs(reinterpret_cast<const sockaddr_in6&>(address).sin6_port);
    return 0;
}

struct handleCloser {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};

/// One load with its redirects, and why it failed.
class Transfer {
public:
    Transfer(const urlRequest& asked, const std::filesystem::path& authorities,
             const std::atomic<bool>& cancelledFlag)
        : request(asked), cancelled(cancelledFlag), handle(curl_easy_init()) {
        if (handle) configure(authorities);
    }

    std::optional<urlResponse> run() {
        if (!handle) return failed("out of memory");
        std::string address = request.address;
        // The library would guess.
        if (!startsWith(address, insecure) && !startsWith(address, secure))
            return failed("no address of the web");
        for (;; ++redirects) {
            if (!loadOnce(address)) return std::nullopt;
            const char* target = info<char*>(CURLINFO_REDIRECT_URL);
            if (!target) break;
            if (redirects == request.mostRedirects) return failed("too many redirects");
            if (std::string_view(target).size() > longestWebAddress)
                return failed("a redirect to an overlong address");
            if (!startsWith(target, insecure) && !startsWith(target, secure))
                return failed("a redirect that leads off the web");
            if (startsWith(address, secure) && !startsWith(target, secure))
                return failed("a redirect to an insecure address");
            address = target;
        }
        const long status = answerStatus();
        if (!isSuccess(status)) return failed("status " + std::to_string(status));
        const char* type = info<char*>(CURLINFO_CONTENT_TYPE);
        return urlResponse{std::move(body), std::move(address), type ? type : "", false};
    }

    const std::string& reason() const { return why; }

    /// Whether any server has answered, if only by a redirect.
    bool wasAnswered() const { return isAnswered; }

private:
    std::nullopt_t failed(std::string text) {
        why = std::move(text);
        return std::nullopt;
    }

    static bool startsWith(std::string_view address, std::string_view scheme) {
        return lowercasedASCII(address.substr(0, scheme.size())) == scheme;
    }

    static bool isSuccess(long status) { return status >= 200 && status <= 299; }
    static bool isRedirect(long status) { return status >= 300 && status <= 399; }

    long answerStatus() const { return info<long>(CURLINFO_RESPONSE_CODE); }

    template <typename T>
    void set(CURLoption option, T value) {
        const bool known = curl_easy_setopt(handle.get(), option, value) == CURLE_OK;
        isConfigured = isConfigured && known;
    }

    template <typename T>
    T info(CURLINFO what) const {
        T value{};
        curl_easy_getinfo(handle.get(), what, &value);
        return value;
    }

    void configure(const std::filesystem::path& authorities) {
        if (!authorities.empty()) set(CURLOPT_CAINFO, authorities.c_str());
        set(CURLOPT_NOSIGNAL, 1L);
        set(CURLOPT_PROTOCOLS_STR, protocols);
        set(CURLOPT_PROXY, "");
        set(CURLOPT_USERAGENT, userAgent);
        set(CURLOPT_ACCEPT_ENCODING, ""); // all that the library can decompress
        set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(request.connectTime.count()));
        set(CURLOPT_ERRORBUFFER, message.data());
        set(CURLOPT_WRITEFUNCTION, &Transfer::received);
        set(CURLOPT_WRITEDATA, this);
        set(CURLOPT_HEADERFUNCTION, &Transfer::headerReceived);
        set(CURLOPT_HEADERDATA, this);
        set(CURLOPT_NOPROGRESS, 0L);
        set(CURLOPT_XFERINFOFUNCTION, &Transfer::progressed);
        set(CURLOPT_XFERINFODATA, this);
        set(CURLOPT_OPENSOCKETFUNCTION, &Transfer::openSocket);
        set(CURLOPT_OPENSOCKETDATA, this);
    }

    /// Loads without following; false when no whole answer came.
    bool loadOnce(const std::string& address) {
        body.clear();
        hasEnough = false;
        headIsWhole = false;
        message.front() = '\0';
        lastProgress = clock::now();
        const auto left = std::chrono::duration_cast<milliseconds>(end - lastProgress).count();
        set(CURLOPT_TIMEOUT_MS, static_cast<long>(std::max<milliseconds::rep>(left, 1)));
        set(CURLOPT_URL, address.c_str());
        if (!isConfigured) {
            why = "the library refuses its settings";
            return false;
        }
        const CURLcode result = curl_easy_perform(handle.get());
        if (hasEnough) return true;
        // The library takes the end of the connection for the end of the head too.
        if (result == CURLE_OK && headIsWhole) return true;
        if (result == CURLE_OK) why = "the answer is cut short";
        if (why.empty()) why = message.front() ? message.data() : curl_easy_strerror(result);
        return false;
    }

    static std::size_t received(const char* bytes, std::size_t, std::size_t count, void* self) {
        return static_cast<Transfer*>(self)->take({bytes, count});
    }

    static std::size_t headerReceived(const char* bytes, std::size_t, std::size_t count,
                                      void* self) {
        static_cast<Transfer*>(self)->noteHeader({bytes, count});
        return count;
    }

    /// Lines that come behind a chunked body are told here too.
    void noteHeader(std::string_view line) {
        if (line.starts_with("HTTP/")) headIsWhole = false;
        if (line != "\r\n" && line != "\n") return;
        headIsWhole = true;
        isAnswered = true;
    }

    /// Taking less than what came ends the load.
    std::size_t take(std::string_view piece) {
        const long status = answerStatus();
        if (isRedirect(status)) return skip(piece.size());
        if (!isSuccess(status)) {
            hasEnough = true;
            return CURL_WRITEFUNC_ERROR;
        }
        const std::size_t room = request.largestBody - body.size();
        body += piece.substr(0, room);
        if (piece.size() > room) {
            hasEnough = request.cutsLongerBody;
            if (!hasEnough) why = "a body of more than " + std::to_string(body.size()) + " bytes";
            return CURL_WRITEFUNC_ERROR;
        }
        return piece.size();
    }

    /// The body of a redirect, which nobody needs.
    std::size_t skip(std::size_t size) {
        skipped += size;
        if (skipped <= largestSkippedBodies) return size;
        why = "redirects with more than " + std::to_string(largestSkippedBodies) + " bytes";
        return CURL_WRITEFUNC_ERROR;
    }

    static int progressed(void* self, curl_off_t, curl_off_t downloaded, curl_off_t,
                          curl_off_t uploaded) {
        return static_cast<Transfer*>(self)->mayGoOn(downloaded + uploaded) ? 0 : 1;
    }

    /// Asked at least once a second.
    bool mayGoOn(curl_off_t transferred) {
        if (cancelled || request.stop.stop_requested()) {
            why = "cancelled";
            // Not to wait for a name that is being looked up.
            curl_easy_setopt(handle.get(), CURLOPT_QUICK_EXIT, 1L);
            return false;
        }
        const auto time = clock::now();
        if (transferred != lastTransferred) {
            lastTransferred = transferred;
            lastProgress = time;
        }
        if (time - lastProgress <= request.stallTime) return true;
        why = "no progress for too long";
        return false;
    }

    static curl_socket_t openSocket(void* self, curlsocktype, curl_sockaddr* address) {
        return static_cast<Transfer*>(self)->openSocketTo(*address);
    }

    curl_socket_t openSocketTo(const curl_sockaddr& address) {
        if (request.publicHostsOnly && !isPublicAddress(address.addr)) {
            why = "not a host of the public internet";
            return CURL_SOCKET_BAD;
        }
        const int port = portOf(address.addr);
        if (request.publicHostsOnly && redirects > 0 && port != 80 && port != 443) {
            why = "a redirect to a port where no web site is";
            return CURL_SOCKET_BAD;
        }
        why.clear(); // of a host's addresses the public ones are tried
        return ::socket(address.family, address.socktype | SOCK_CLOEXEC, address.protocol);
    }

    const urlRequest& request;
    const std::atomic<bool>& cancelled;
    const clock::time_point end = clock::now() + request.totalTime;
    clock::time_point lastProgress;
    curl_off_t lastTransferred = 0;
    std::array<char, CURL_ERROR_SIZE> message{};
    std::string body;
    std::string why;
    bool isConfigured = true;
    bool hasEnough = false; ///< of the answer, which was ended then
    bool isAnswered = false;
    std::size_t skipped = 0; ///< bytes of the bodies of redirects
    int redirects = 0;
    bool headIsWhole = false;
    std::unique_ptr<CURL, handleCloser> handle; ///< the last member: its end may use the others
};

} // namespace

CurlUrlLoader::CurlUrlLoader(std::filesystem::path authorities)
    : certificateAuthorities(std::move(authorities)), mainThread(std::this_thread::get_id()) {
    curl_global_init(CURL_GLOBAL_DEFAULT);
}

std::optional<urlResponse> CurlUrlLoader::load(const urlRequest& request) {
    assert(std::this_thread::get_id() != mainThread);
    std::string reason = "cancelled";
    bool wasAnswered = false;
    if (!cancelled && !request.stop.stop_requested()) {
        Transfer transfer(request, certificateAuthorities, cancelled);
        if (auto response = transfer.run()) return response;
        reason = transfer.reason();
        wasAnswered = transfer.wasAnswered();
    }
    logLine("Error loading " + forLog(request.address) + ": " + forLog(reason));
    if (!wasAnswered || !request.givesFailedAnswers || cancelled || request.stop.stop_requested())
        return std::nullopt;
    urlResponse failed;
    failed.hasFailed = true;
    return failed;
}

} // namespace tessaril
