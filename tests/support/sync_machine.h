#pragma once

#include "events/notification_names.h"
#include "support/store_machine.h"
#include "sync/cloud_sync.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tessaril::testing {

/// One of the user's machines: a store and its sync over a record store.
template <typename Tasks = SteppedDispatcher>
struct SyncMachine : StoreMachine<Tasks> {
    using Base = StoreMachine<Tasks>;

    explicit SyncMachine(std::unique_ptr<RecordStore> records) : recordStore(std::move(records)) {
        registerPreferenceDefaults(this->preferences, sharedPreferences, 7, false);
        this->store.setUploadHandler([this] { sync.uploadDatabase(); });
        preferenceSync.setUploadHandler([this] { sync.uploadPreferences(); });
        sync.setReleaseHandler([this] { ++releases; });
        for (const std::string_view name :
             {notifications::refreshTable, notifications::iCloudError,
              notifications::deletedStylesChanged, notifications::performFirstUpdate,
              notifications::openStyleNotif, notifications::stylesChangedInCloud,
              notifications::closeProperties})
            subscriptions.push_back(
                this->center.observe(name, [this](const notification& posted) { hear(posted); }));
    }
    ~SyncMachine() { sync.finish(); }

    /// What the switch and the launch do.
    void switchOn() {
        this->preferences.set("UseiCloud", true);
        sync.setFirstSyncPending();
        launch();
    }
    void launch() {
        sync.fetchDatabaseRecord();
        sync.fetchPreferencesRecord();
    }
    void add(const styleContainer& style) {
        this->store.appendStyle(style);
        this->store.saveDatabase();
    }
    void remove(std::int64_t id) { this->store.deleteStyle(*this->store.indexOfStyle(id)); }
    void edit(std::int64_t id, const std::string& code) {
        styleContainer style = *this->store.findStyle(id);
        style.styleData.sections = {{.code = code}};
        this->store.applyEditorChanges(id, style);
    }
    std::string codeOf(std::int64_t id) {
        return this->store.findStyle(id)->styleData.sections.at(0).code;
    }
    std::vector<std::string> takeHeard() {
        const std::lock_guard lock(mutex);
        return std::exchange(heard, {});
    }

    MemoryPreferences storedShared;
    Preferences sharedPreferences{storedShared};
    PreferenceSync preferenceSync{this->preferences, &sharedPreferences, this->center,
                                  this->dispatcher};
    RecoveryList recoveryList{this->store, this->center};
    OpenStyles openStyles{this->center};
    std::unique_ptr<RecordStore> recordStore;
    CloudSync sync{{.records = *recordStore,
                    .preferenceSync = preferenceSync,
                    .dispatcher = this->dispatcher,
                    .merging = {.store = this->store,
                                .files = this->files,
                                .preferences = this->preferences,
                                .center = this->center,
                                .alerts = this->alerts,
                                .openStyles = openStyles,
                                .recoveryList = recoveryList,
                                .container = Base::document.parent_path()}}};
    int releases = 0; ///< of the style list

private:
    void hear(const notification& posted) {
        std::string line(posted.name);
        if (const auto id = posted.id()) line += " " + std::to_string(*id);
        if (const auto* ids = posted.info<std::vector<std::int64_t>>("changedIDs"))
            for (const std::int64_t id : *ids)
                line += " " + std::to_string(id);
        const std::lock_guard lock(mutex);
        heard.push_back(std::move(line));
    }

    std::mutex mutex;
    std::vector<std::string> heard; ///< notifications
    std::vector<NotificationCenter::Subscription> subscriptions;
};

} // namespace tessaril::testing
