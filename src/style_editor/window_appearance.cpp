#include "style_editor/window_appearance.h"

#include "preferences/preference_keys.h"

namespace tessaril {

namespace {

toolbarStyle toolbarStyleFor(std::string_view value) {
    if (value == "compact") return toolbarStyle::compact;
    return value == "expanded" ? toolbarStyle::expanded : toolbarStyle::unified;
}

} // namespace

windowAppearance windowAppearanceFrom(const Preferences& preferences) {
    const toolbarStyle toolbar = toolbarStyleFor(preferences.string(preferenceKeys::editorStyle));
    return {.toolbar = toolbar,
            .showsTitle = toolbar == toolbarStyle::expanded ||
                          preferences.boolean(preferenceKeys::showEditorTitle)};
}

} // namespace tessaril
