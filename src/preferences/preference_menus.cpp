#include "preferences/preference_menus.h"

#include "preferences/preference_keys.h"

#include <algorithm>

namespace tessaril {

namespace {

// The two themes that follow the desktop's appearance stand apart from the others.
constexpr menuEntry themes[] = {{"Light", "light"},
                                {"", "light"},
                                {"Blue", "blue"},
                                {"Tomorrow", "tomorrow"},
                                {"Solarized Light", "solarlight"},
                                {"IPlastic", "iplastic"},
                                {"Chrome", "chrome"},
                                {"", "dark"},
                                {"Dark", "dark"},
                                {"", "dark"},
                                {"Black", "black"},
                                {"Monokai", "monokai"},
                                {"Solarized Dark", "solar"},
                                {"Green", "green"},
                                {"Nord", "nord"}};

constexpr menuEntry fonts[] = {{"Menlo", "Menlo"},
                               {"Courier", "Courier"},
                               {"Monaco", "Monaco"},
                               {"Fira Code", "Fira Code"},
                               {"Cascadia Code", "Cascadia Code"},
                               {"System Monospace", "ui-monospace"}};

constexpr menuEntry toolbars[] = {
    {"Unified", "unified"}, {"Compact", "compact"}, {"Expanded", "expanded"}};

int find(const valueMenu& menu, std::string_view value) {
    const auto found = std::ranges::find_if(menu.entries, [value](const menuEntry& entry) {
        return !entry.isSeparator() && entry.value == value;
    });
    return found != menu.entries.end() ? static_cast<int>(found - menu.entries.begin()) : -1;
}

} // namespace

const valueMenu themeMenu{preferenceKeys::theme, themes, "light"};
const valueMenu fontMenu{preferenceKeys::font, fonts, "Menlo"};
const valueMenu toolbarMenu{preferenceKeys::editorStyle, toolbars, "unified"};

std::string_view valueAt(const valueMenu& menu, int position) {
    if (position < 0 || position >= static_cast<int>(menu.entries.size())) return menu.otherValue;
    return menu.entries[static_cast<std::size_t>(position)].value;
}

int positionOf(const valueMenu& menu, std::string_view value) {
    const int position = find(menu, value);
    return position >= 0 ? position : find(menu, menu.otherValue);
}

} // namespace tessaril
