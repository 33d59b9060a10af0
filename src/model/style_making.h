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

/// Recomputes a style's compiled output in place and gives what tells the user of its errors; empty
/// where it could be compiled. The latter may not be called at all, as the style may turn out not
/// to be wanted. Both on any thread.
using QuietCompile = std::function<std::function<void()>(styleContainer&)>;

} // namespace tessaril
