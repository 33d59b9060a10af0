#include "preferences/change_announcement.h"

#include "events/notification_names.h"

namespace tessaril {

ChangeAnnouncement::ChangeAnnouncement(NotificationCenter& bus, Dispatcher& taskDispatcher)
    : center(bus), dispatcher(taskDispatcher) {}

void ChangeAnnouncement::announce() {
    if (isUnderWay.exchange(true)) return;
    dispatcher.onMain([this] {
        // Before the observers read: what is set from here on is announced anew.
        isUnderWay = false;
        center.post(notifications::preferencesDidChange);
    });
}

} // namespace tessaril
