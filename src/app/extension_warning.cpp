#include "app/extension_warning.h"

#include "preferences/preference_keys.h"

#include <utility>

namespace tessaril {

ExtensionWarning::ExtensionWarning(BrowserExtension& browserExtension,
                                   Preferences& standardPreferences, PreferenceSync& preferenceSync,
                                   Alerts& alertPresenter)
    : extension(browserExtension)
    , preferences(standardPreferences)
    , sync(preferenceSync)
    , alerts(alertPresenter) {}

void ExtensionWarning::check() {
    if (shown || !preferences.boolean(preferenceKeys::warnIfDisabled)) return;
    if (extension.isEnabled().value_or(false)) return;
    shown = true;
    const alertAnswer answer =
        alerts.ask({.title = "Extension Not Enabled",
                    .text = "To use your custom styles, you'll need to enable the Tessaril "
                            "extension in Safari's Preferences.",
                    .buttons = {"Open Safari Preferences", "Later"},
                    .offersSuppression = true});
    if (answer.suppressed) {
        preferences.set(preferenceKeys::warnIfDisabled, false);
        sync.uploadPreferences();
    }
    if (answer.button == 0) extension.showPreferences();
}

} // namespace tessaril
