#pragma once

#include "platform/icon_decoder.h"

#include <atomic>
#include <filesystem>

namespace tessaril {

/// Decodes each picture in a process of its own, which is ended when it takes too long, and takes
/// nothing from it but the pixels of an icon. What begins like no picture starts no process.
class HelperIconDecoder : public IconDecoder {
public:
    /// - program: tessaril_icon_decoder
    explicit HelperIconDecoder(std::filesystem::path program);

    std::optional<siteIcon> decode(std::string_view bytes) override;
    void cancelAll() override { cancelled = true; }

private:
    std::filesystem::path program;
    std::atomic<bool> cancelled = false;
};

} // namespace tessaril
