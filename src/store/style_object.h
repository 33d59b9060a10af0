#pragma once

#include "model/style_container.h"

#include <cstdint>
#include <string>

namespace tessaril {

/// What one row of the style list shows.
struct styleObject {
    std::string source; ///< the row's second line
    std::string name;
    bool isEnabled = true;
    std::int64_t uniqueID = 0; ///< links the row to its style
    /// "none", "checking", "updated", "noupdates" or "error"
    std::string updateStatus = "none";
    std::string homepage;

    styleObject() = default;
    explicit styleObject(const styleContainer& style);

    bool operator==(const styleObject&) const = default;
};

} // namespace tessaril
