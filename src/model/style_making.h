#pragma once

#include "model/style_container.h"

#include <cstdint>
#include <functional>

namespace tessaril {

/// What a reader needs from its surroundings to make a new style.
struct styleMaking {
    /// Draws an identifier that no style of the live database carries.
    std::function<std::int64_t()> generateUniqueID;
    /// Recomputes a style's compiled output in place.
    std::function<void(styleContainer&)> compileStyle;
};

} // namespace tessaril
