#pragma once

#include "events/notification_center.h"
#include "platform/dispatcher.h"
#include "preferences/preferences.h"

#include <functional>

namespace tessaril {

/// How the cloud is reached; what is not set is not there.
struct cloudAccess {
    /// Asks whether an account is available; answers once, on the main thread, now or later.
    std::function<void(std::function<void(bool isAvailable)>)> askAccountStatus;
    /// Called on the main thread before the style list is locked for the first sync.
    std::function<void()> prepareSync;
    /// The first sync; runs on a background task.
    std::function<void()> startSync;
    /// Called when sync has been switched off.
    std::function<void()> endSync;
};

/// The check box that switches cloud sync on and off. Main thread only.
class CloudSwitch {
public:
    /// All outlive it and its tasks.
    CloudSwitch(Preferences& standard, NotificationCenter& center, Dispatcher& dispatcher);

    void setAccess(cloudAccess access) { cloud = std::move(access); }

    /// Called when a state below has changed; nothing to stop.
    void setChangeHandler(std::function<void()> handler) { changed = std::move(handler); }

    /// The pane with the check box is shown: asks for the account. Without one sync is switched
    /// off.
    void paneShown();

    /// Whether the check box can be used; not before the account's status has come.
    bool isAvailable() const { return available; }
    bool isOn() const;

    /// The user switches sync. Beginning it locks the style list.
    void turn(bool on);

private:
    void accountAnswered(bool isAvailable);
    void turnOff();

    Preferences& standard;
    NotificationCenter& center;
    Dispatcher& dispatcher;
    cloudAccess cloud;
    std::function<void()> changed;
    bool available = false;
};

} // namespace tessaril
