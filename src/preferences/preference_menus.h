#pragma once

#include <span>
#include <string_view>

namespace tessaril {

/// An item of a menu of values, at the position where it stands in its list.
struct menuEntry {
    std::string_view title; ///< empty for a separator
    std::string_view value;

    bool isSeparator() const { return title.empty(); }
};

/// A menu that picks the text stored under `key`.
struct valueMenu {
    std::string_view key;
    std::span<const menuEntry> entries;
    std::string_view otherValue; ///< what a position outside the list stands for
};

extern const valueMenu themeMenu;
extern const valueMenu fontMenu;
extern const valueMenu toolbarMenu;

std::string_view valueAt(const valueMenu& menu, int position);

/// The position that shows `value`; for an unknown value the one of `otherValue`. Never a
/// separator's.
int positionOf(const valueMenu& menu, std::string_view value);

} // namespace tessaril
