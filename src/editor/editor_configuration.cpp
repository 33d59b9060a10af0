#include "editor/editor_configuration.h"

#include "editor/wk_ace_view.h"
#include "events/notification_names.h"
#include "preferences/preference_keys.h"
#include "preferences/preferences.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tessaril {

namespace {

namespace keys = preferenceKeys;

constexpr std::string_view defaultTheme = "xcode";
constexpr std::string_view defaultFont = "Menlo";

constexpr std::array<std::pair<std::string_view, std::string_view>, 12> themes{{
    {"blue", "tomorrow_night_blue"},
    {"dark", "tomorrow_night"},
    {"light", "xcode"},
    {"black", "tomorrow_night_bright"},
    {"chrome", "chrome"},
    {"tomorrow", "tomorrow"},
    {"monokai", "monokai"},
    {"iplastic", "iplastic"},
    {"solar", "solarized_dark"},
    {"green", "gob"},
    {"solarlight", "solarized_light"},
    {"nord", "nord_dark"},
}};

// The steps that follow the preferences; the set-up and its repetition share them.

void applyTheme(WKAceView& editor, const Preferences& preferences) {
    editor.setTheme(aceThemeFor(preferences.string(keys::theme)));
}

void applyOption(WKAceView& editor, std::string_view name, bool value) {
    editor.setOption(name, value ? "true" : "false");
}

void applyCheckingAndCompletion(WKAceView& editor, const Preferences& preferences) {
    const bool completes = preferences.boolean(keys::autocomplete);
    applyOption(editor, "useWorker", preferences.boolean(keys::showErrors));
    applyOption(editor, "enableBasicAutocompletion", completes);
    applyOption(editor, "enableLiveAutocompletion", completes);
    applyOption(editor, "showGutter", preferences.boolean(keys::showGutter));
}

void applyWrapAndFont(WKAceView& editor, const Preferences& preferences) {
    editor.setWrap(preferences.boolean(keys::wordWrap));
    // "ui-monospace" needs no second choice: no system that this runs on is too old for it.
    const std::string font = preferences.string(keys::font);
    editor.setFontFamily(font.empty() ? defaultFont : font);
    editor.setFontSize(preferences.integer(keys::fontSize));
}

} // namespace

std::string_view aceThemeFor(std::string_view preference) {
    const auto* found =
        std::ranges::find(themes, preference, [](const auto& t) { return t.first; });
    return found == themes.end() ? defaultTheme : found->second;
}

void configureEditor(WKAceView& editor, const Preferences& preferences, editorContent content) {
    applyTheme(editor, preferences);
    editor.setString(std::move(content.text));
    editor.setMode(content.mode);
    editor.setKeyboardHandler("ace");
    editor.setShowPrintMargin(false);
    applyOption(editor, "showInvisibles", false);
    applyCheckingAndCompletion(editor, preferences);
    applyOption(editor, "enableSnippets", false);
    editor.setUseSoftTabs(false);
    applyOption(editor, "enableEmmet", false);
    applyWrapAndFont(editor, preferences);
    if (content.isReadOnly) editor.setReadOnly();
}

void reconfigureEditor(WKAceView& editor, const Preferences& preferences) {
    applyTheme(editor, preferences);
    applyCheckingAndCompletion(editor, preferences);
    applyWrapAndFont(editor, preferences);
}

ConfiguredEditor::ConfiguredEditor(WKAceView& ownEditor, const Preferences& ownPreferences,
                                   NotificationCenter& center,
                                   std::function<editorContent()> ownContent,
                                   std::function<void()> whenConfigured)
    : editor(ownEditor)
    , preferences(ownPreferences)
    , content(std::move(ownContent))
    , configured(std::move(whenConfigured))
    , preferencesChanged(
          center.observe(notifications::preferencesDidChange, [this](const notification&) {
              if (isReady()) reconfigureEditor(editor, preferences);
          })) {
    editor.setOnReady([this] { configure(); });
    if (editor.isReady()) configure();
}

ConfiguredEditor::~ConfiguredEditor() {
    editor.setOnReady({});
}

bool ConfiguredEditor::isReady() const {
    return isConfigured && editor.isReady();
}

void ConfiguredEditor::configure() {
    configureEditor(editor, preferences, content());
    isConfigured = true;
    if (configured) configured();
}

} // namespace tessaril
