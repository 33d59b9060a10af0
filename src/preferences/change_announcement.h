#pragma once

#include "events/notification_center.h"
#include "platform/dispatcher.h"

#include <atomic>

namespace tessaril {

/// Posts `preferencesDidChange` on the main thread after a value was set; settings in a row are
/// announced as one. Must outlive the tasks of the dispatcher.
class ChangeAnnouncement {
public:
    ChangeAnnouncement(NotificationCenter& center, Dispatcher& dispatcher);

    /// From any thread.
    void announce();

private:
    NotificationCenter& center;
    Dispatcher& dispatcher;
    std::atomic<bool> isUnderWay = false;
};

} // namespace tessaril
