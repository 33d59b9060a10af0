#pragma once

#include "platform/url_loader.h"

#include <atomic>
#include <filesystem>
#include <thread>

namespace tessaril {

/// Loads by libcurl, each address by a handle of its own. To be made on the main thread.
///
/// No proxy is used: it would look names up itself, where nobody sees what they lead to.
class CurlUrlLoader : public UrlLoader {
public:
    /// - certificateAuthorities: a file of those to trust (PEM); empty for the system's
    explicit CurlUrlLoader(std::filesystem::path certificateAuthorities = {});

    std::optional<urlResponse> load(const urlRequest& request) override;
    void cancelAll() override { cancelled = true; }

private:
    const std::filesystem::path certificateAuthorities;
    std::thread::id mainThread;
    std::atomic<bool> cancelled = false;
};

} // namespace tessaril
