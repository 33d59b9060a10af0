#pragma once

#include "preferences/preferences.h"

namespace tessaril {

/// How a Style Editor's window shows its toolbar.
enum class toolbarStyle {
    unified,  ///< the style's name stands within it
    compact,  ///< the same, with small icons
    expanded, ///< the style's name stands above it, each item's label below the item
};

struct windowAppearance {
    toolbarStyle toolbar = toolbarStyle::unified;
    bool showsTitle = true;

    bool operator==(const windowAppearance&) const = default;
};

/// What the preferences ask for.
windowAppearance windowAppearanceFrom(const Preferences& preferences);

} // namespace tessaril
