#pragma once

#include "platform/icon_loader.h"

#include <cstddef>
#include <optional>
#include <string_view>

namespace tessaril {

/// A picture of more bytes is no icon.
inline constexpr std::size_t largestIconBytes = 512 << 10;

/// Makes pictures from strangers safe to show. Safe to use from any thread but the main thread,
/// which must not wait.
class IconDecoder {
public:
    virtual ~IconDecoder() = default;

    /// The picture that the bytes hold, whatever they are called, scaled to fit a site icon and
    /// centred on nothing; nothing where they hold none, or one that is broken, larger than any
    /// icon is, or takes too long.
    virtual std::optional<siteIcon> decode(std::string_view bytes) = 0;

    /// Makes all decodings, running and later ones, give nothing soon; for quitting.
    virtual void cancelAll() = 0;
};

} // namespace tessaril
