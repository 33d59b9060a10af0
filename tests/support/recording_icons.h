#pragma once

#include "platform/icon_loader.h"

#include <map>
#include <utility>
#include <vector>

namespace tessaril::testing {

/// An icon loader that writes down what it is asked for; the test finds the icons.
struct RecordingIcons : IconLoader {
    void setFoundHandler(Found handler) override { found = std::move(handler); }
    std::shared_ptr<const siteIcon> known(const styleContainer& style) const override {
        const auto icon = inMemory.find(style.uniqueID);
        return icon == inMemory.end() ? nullptr : icon->second;
    }
    void fetch(std::span<const std::int64_t> ids, iconRequest request) override {
        for (const std::int64_t id : ids)
            asked.emplace_back(id, request);
    }
    void setOnScreen(std::vector<std::int64_t> ids) override { onScreen = std::move(ids); }

    Found found;
    std::map<std::int64_t, std::shared_ptr<const siteIcon>> inMemory;
    std::vector<std::pair<std::int64_t, iconRequest>> asked;
    std::vector<std::int64_t> onScreen;
};

} // namespace tessaril::testing
