#pragma once

#include <cstddef>

namespace tessaril {

/// A stretch of a text, in UTF-16 units.
struct textRange {
    std::size_t location = 0;
    std::size_t length = 0;

    std::size_t end() const { return location + length; }

    bool operator==(const textRange&) const = default;
};

} // namespace tessaril
