#pragma once

#include "platform/icon_decoder.h"
#include "platform/url_loader.h"

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace tessaril::testing {

/// A network in memory: addresses and what they give; all others fail.
struct MapUrlLoader : UrlLoader {
    std::optional<urlResponse> load(const urlRequest& request) override {
        {
            const std::lock_guard lock(mutex);
            asked.push_back(request.address);
            allForPublicHosts = allForPublicHosts && request.publicHostsOnly;
        }
        if (onLoad) onLoad(request);
        const auto found = responses.find(request.address);
        if (found == responses.end()) return std::nullopt;
        urlResponse response = found->second;
        if (response.hasFailed && !request.givesFailedAnswers) return std::nullopt;
        if (response.finalAddress.empty()) response.finalAddress = request.address;
        return response;
    }
    void cancelAll() override { cancelled = true; }

    std::vector<std::string> taken() {
        const std::lock_guard lock(mutex);
        return std::exchange(asked, {});
    }

    std::map<std::string, urlResponse> responses;
    std::function<void(const urlRequest&)> onLoad; ///< called on the loading thread
    std::vector<std::string> asked;
    bool allForPublicHosts = true;
    bool cancelled = false;
    std::mutex mutex;
};

/// Takes for a picture what begins with "picture ".
struct MarkedPictures : IconDecoder {
    std::optional<siteIcon> decode(std::string_view bytes) override {
        if (!bytes.starts_with("picture ")) return std::nullopt;
        return siteIcon{std::string(bytes)};
    }
    void cancelAll() override { cancelled = true; }

    bool cancelled = false;
};

} // namespace tessaril::testing
