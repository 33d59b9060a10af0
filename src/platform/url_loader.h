#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <stop_token>
#include <string>

namespace tessaril {

/// Of the addresses that a site may name, in bytes. No honest one needs more, and a stranger's page
/// may make many of a long one.
inline constexpr std::size_t longestWebAddress = 8192;

/// What to load, and how much of it at most. The limits are the widest; callers narrow them.
struct urlRequest {
    std::string address;                ///< http or https
    std::size_t largestBody = 32 << 20; ///< bytes, counted after decompression
    /// Whether a longer body is cut there; otherwise it is a failure.
    bool cutsLongerBody = false;
    int mostRedirects = 10;
    std::chrono::milliseconds connectTime = std::chrono::seconds(10);
    std::chrono::milliseconds stallTime = std::chrono::seconds(30); ///< without progress
    std::chrono::milliseconds totalTime = std::chrono::minutes(5);  ///< all redirects included
    /// Whether only hosts on the public internet are connected to: for addresses that strangers
    /// chose, which must not reach the user's own machine or network. Holds for every redirect too,
    /// and for the address that a name stands for. Redirects lead to the ports 80 and 443 only.
    bool publicHostsOnly = false;
    /// Whether a load that fails although a server has answered gives a response that says so: for
    /// who wants to know no more than that.
    bool givesFailedAnswers = false;
    std::stop_token stop = {}; ///< ends the load, which then gives nothing
};

struct urlResponse {
    /// Whole and decompressed, as far as the server says how long it is: where it tells the end by
    /// closing the connection, as HTTP/1 allows, a body that was cut cannot be told from a whole
    /// one.
    std::string body;
    std::string finalAddress; ///< after redirects
    std::string contentType;  ///< as the server named it; may be empty
    /// Whether a server answered, but not with what was asked for: by another status, a body that
    /// is too long or cut short, or a redirect that is not followed or leads nowhere. All texts are
    /// empty then. Only where it was asked for.
    bool hasFailed = false;
};

/// Loads addresses whole. Safe to use from any thread but the main thread, which must not wait.
class UrlLoader {
public:
    virtual ~UrlLoader() = default;

    /// Loads the address and waits for it. Redirects are followed, never from https to http nor to
    /// one longer than `longestWebAddress`; certificates are checked; nothing is kept between
    /// loads. Nothing, or what `givesFailedAnswers` says, and one log line that says why, unless
    /// the last answer's status is 2xx and its body arrived whole. Nothing at all once it is
    /// cancelled or stopped.
    virtual std::optional<urlResponse> load(const urlRequest& request) = 0;

    /// Makes all loads, running and later ones, give nothing soon; for quitting.
    virtual void cancelAll() = 0;
};

} // namespace tessaril
