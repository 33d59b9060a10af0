#pragma once

#include "events/notification_center.h"
#include "platform/web_view_factory.h"
#include "preferences/preferences.h"

#include <filesystem>

namespace tessaril {

/// What a window with a code editor needs for it. All outlive the window.
struct editorParts {
    WebViewFactory makeWebView;
    std::filesystem::path page; ///< the editor page
    const Preferences& preferences;
    NotificationCenter& center;
};

} // namespace tessaril
