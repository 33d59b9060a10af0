#pragma once

#include "platform/alerts.h"
#include "platform/browser_extension.h"
#include "preferences/preference_sync.h"
#include "preferences/preferences.h"

namespace tessaril {

/// Warns once per process that the browser extension is not enabled. Main thread only.
class ExtensionWarning {
public:
    ExtensionWarning(BrowserExtension& extension, Preferences& preferences, PreferenceSync& sync,
                     Alerts& alerts);

    /// Shows the warning unless the extension is enabled, the warning was shown before, or the user
    /// turned it off.
    void check();

private:
    BrowserExtension& extension;
    Preferences& preferences;
    PreferenceSync& sync;
    Alerts& alerts;
    bool shown = false;
};

} // namespace tessaril
