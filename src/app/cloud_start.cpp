#include "app/cloud_start.h"

#include "events/notification_names.h"
#include "preferences/preference_keys.h"

#include <utility>

namespace tessaril {

namespace keys = preferenceKeys;

CloudStart::CloudStart(cloudStartSurroundings surroundings)
    : machine(surroundings)
    , address(machine.preferences.string(keys::recordStoreAddress))
    , lockForiCloud(machine.center.observe(
          notifications::lockForiCloud,
          [this](const notification&) { machine.list.setLockedForSync(true); }))
    , preferencesDidChange(machine.center.observe(
          notifications::preferencesDidChange, [this](const notification&) { watchAddress(); })) {
    machine.sync.setReleaseHandler([this] { showLock(); });
}

void CloudStart::listShown() {
    if (!machine.preferences.boolean(keys::useiCloud) || machine.sync.initialFetchStarted()) return;
    awaitsCheck = true;
    showLock();
}

void CloudStart::check() {
    const bool isConfigured = machine.preferences.boolean(keys::hasConfigurediCloud);
    if (isConfigured && !machine.preferences.boolean(keys::useiCloud)) {
        awaitsCheck = false;
        return showLock(); // switched off since the list was shown
    }
    askAccountStatus([this, isConfigured](bool isAvailable) {
        awaitsCheck = false;
        if (!isAvailable) switchOff();
        if (isAvailable && !machine.sync.initialFetchStarted())
            isConfigured ? start() : startFirst();
        else
            showLock();
        if (!isConfigured) machine.preferences.set(keys::hasConfigurediCloud, true);
    });
}

cloudAccess CloudStart::access() {
    return {.askAccountStatus = [this](auto answer) { askAccountStatus(std::move(answer)); },
            .prepareSync =
                [this] {
                    machine.sync.setInitialFetchStarted();
                    machine.sync.setFirstSyncPending();
                },
            .startSync =
                [this] {
                    // Whole before anything may be merged.
                    machine.store.writePreCloudBackup();
                    machine.sync.begin();
                },
            .endSync = [this] { machine.sync.switchedOff(); }};
}

void CloudStart::askAccountStatus(std::function<void(bool)> answer) {
    machine.records.askAccountStatus(
        [&dispatcher = machine.dispatcher, answer = std::move(answer)](accountStatus status) {
            dispatcher.onMain([answer, isAvailable = status == accountStatus::available] {
                answer(isAvailable);
            });
        });
}

void CloudStart::start() {
    machine.sync.setInitialFetchStarted();
    machine.list.setLockedForSync(true);
    machine.dispatcher.inBackground(taskPriority::userInitiated, [this] { machine.sync.begin(); });
}

void CloudStart::startFirst() {
    machine.preferences.set(keys::useiCloud, true);
    machine.sync.setInitialFetchStarted();
    machine.sync.setFirstSyncPending();
    machine.list.setLockedForSync(true);
    machine.dispatcher.inBackground(taskPriority::userInitiated, access().startSync);
}

void CloudStart::switchOff() {
    if (!machine.preferences.boolean(keys::useiCloud)) return;
    machine.preferences.set(keys::useiCloud, false);
    machine.sync.switchedOff();
}

void CloudStart::showLock() {
    machine.list.setLockedForSync(holdsList());
}

/// Another server is another sync: what this machine knows of the first one does not hold there,
/// and the user has to begin it.
void CloudStart::watchAddress() {
    std::string wanted = machine.preferences.string(keys::recordStoreAddress);
    if (wanted == std::exchange(address, wanted)) return;
    switchOff();
}

} // namespace tessaril
