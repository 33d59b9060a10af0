#pragma once

#include "events/notification_center.h"
#include "platform/dispatcher.h"
#include "preferences/preferences.h"
#include "update/style_updates.h"

#include <atomic>

namespace tessaril {

/// Checks all styles for updates once per process, where the user wants it at launch. Main thread
/// only.
class LaunchUpdate {
public:
    /// All outlive it.
    LaunchUpdate(StyleUpdates& updates, Preferences& preferences, NotificationCenter& center,
                 Dispatcher& dispatcher);

    /// To be called when the style list is shown. While `UseiCloud` is on the check waits for
    /// `performFirstUpdate`.
    void listShown();

    /// Whether `performFirstUpdate` is waited for; from any thread.
    bool isPending() const { return pending; }

private:
    void run();

    StyleUpdates& updates;
    Preferences& preferences;
    bool done = false;
    std::atomic<bool> pending = false; ///< the cloud sync asks from threads of its own
    NotificationCenter::Subscription performFirstUpdate;
};

} // namespace tessaril
