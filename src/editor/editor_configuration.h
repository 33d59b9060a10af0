#pragma once

#include "events/notification_center.h"

#include <functional>
#include <string>
#include <string_view>

namespace tessaril {

class Preferences;
class WKAceView;

/// The editor's theme for a value of the preference `ACETheme`; "xcode" for an unknown one.
std::string_view aceThemeFor(std::string_view preference);

/// What a host shows in its editor.
struct editorContent {
    std::string text = "";
    std::string mode = "css"; ///< "css", "less" or "stylus"
    bool isReadOnly = false;
};

/// Sets up an editor whose page is ready: theme, text, mode, then everything else.
void configureEditor(WKAceView& editor, const Preferences& preferences, editorContent content);

/// Sets up anew what follows the preferences; text and mode stay.
void reconfigureEditor(WKAceView& editor, const Preferences& preferences);

/// Keeps an editor configured: sets it up whenever its page becomes ready, and follows the
/// preferences from then on.
class ConfiguredEditor {
public:
    /// Takes over the editor's `onReady`. All must live longer.
    /// - content: asked for each time the page becomes ready, so also after its process had ended;
    ///   gives the host's own, current copy
    /// - configured: the host's finishing touches, after each set-up; may be empty
    ConfiguredEditor(WKAceView& editor, const Preferences& preferences, NotificationCenter& center,
                     std::function<editorContent()> content, std::function<void()> configured = {});
    ~ConfiguredEditor();
    ConfiguredEditor(const ConfiguredEditor&) = delete;
    ConfiguredEditor& operator=(const ConfiguredEditor&) = delete;

    /// Whether the editor is set up and its page is there: what is sent now arrives.
    bool isReady() const;

private:
    void configure();

    WKAceView& editor;
    const Preferences& preferences;
    std::function<editorContent()> content;
    std::function<void()> configured;
    bool isConfigured = false;
    NotificationCenter::Subscription preferencesChanged;
};

} // namespace tessaril
