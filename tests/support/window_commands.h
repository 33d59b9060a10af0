#pragma once

#include "app/application.h"
#include "windows/main_window.h"

namespace tessaril::testing {

/// What a main window over the application needs; whatever leads out of it does nothing.
inline mainWindowCommands windowCommands(Application& application) {
    return {.list = application.styleList(),
            .listCommands = application.listCommands(),
            .newStyle = application.newStyle(),
            .listUndo = application.listUndo(),
            .updates = application.styleUpdates(),
            .center = application.notificationCenter(),
            .dispatcher = application.dispatcher(),
            .canImport = [] { return false; },
            .importFiles = [](const auto&) {},
            .openFiles = [](const auto&) {},
            .openPreferences = [] {},
            .emailSupport = [] {},
            .openWebsite = [] {},
            .retrySync = [&application] { application.cloudSync().retry(); },
            .workOffline = [&application] { application.cloudSync().workOffline(); }};
}

} // namespace tessaril::testing
