#pragma once

#include "events/notification_center.h"
#include "platform/dispatcher.h"
#include "platform/record_store.h"
#include "preferences/cloud_switch.h"
#include "preferences/preferences.h"
#include "store/style_list.h"
#include "store/style_store.h"
#include "sync/cloud_sync.h"

#include <functional>
#include <string>

namespace tessaril {

/// All outlive it and its tasks.
struct cloudStartSurroundings {
    CloudSync& sync;
    RecordStore& records;
    StyleStore& store;
    StyleList& list;
    Preferences& preferences;
    NotificationCenter& center;
    Dispatcher& dispatcher;
};

/// Decides when sync begins, at launch and by the switch of the preferences, and ends, and holds
/// the style list locked while its first merge is awaited. Main thread only.
class CloudStart {
public:
    explicit CloudStart(cloudStartSurroundings surroundings);

    /// The style list is on the screen: locked from now on where sync is on.
    void listShown();

    /// The launch checks: begins where sync is on, and switches it on at the first launch that
    /// finds an account. Without an account it is switched off.
    void check();

    /// For the switch.
    cloudAccess access();

    /// Whether the style list must not be used yet.
    bool holdsList() const { return awaitsCheck || machine.sync.syncInProgress(); }

private:
    void askAccountStatus(std::function<void(bool)> answer);
    void start();
    void startFirst();
    void switchOff();
    void showLock();
    void watchAddress();

    cloudStartSurroundings machine;
    bool awaitsCheck = false;
    std::string address; ///< of the record store
    NotificationCenter::Subscription lockForiCloud;
    NotificationCenter::Subscription preferencesDidChange;
};

} // namespace tessaril
