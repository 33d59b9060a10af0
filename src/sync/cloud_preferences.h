#pragma once

#include "platform/dispatcher.h"
#include "platform/record_store.h"
#include "preferences/preference_sync.h"
#include "sync/sync_operation.h"

#include <functional>
#include <optional>

namespace tessaril {

/// All outlive it.
struct cloudPreferencesSurroundings {
    RecordStore& records;
    PreferenceSync& preferenceSync;
    Dispatcher& dispatcher;
    /// Deals with an error that says that there is no account any more: whether it was one.
    std::function<bool(const std::optional<recordError>&)> lostAccount;
};

/// The record of the synced preferences. Its functions are operations of the sync.
class CloudPreferences {
public:
    explicit CloudPreferences(cloudPreferencesSurroundings surroundings);

    /// The first fetch: those of the cloud are taken, or these become the cloud's.
    void fetch(const syncOperation& operation);

    /// Whether the record is in another state than the one known here.
    bool isNews(const cloudRecord& record) const;

    /// Takes over what another machine has saved. Ends when every preference has its value: what
    /// is sent next must not hold older ones.
    void take(const cloudRecord& record, const syncOperation& operation);

    void send(const syncOperation& operation);

private:
    void settle(const syncOperation& operation);

    cloudPreferencesSurroundings machine;
    cloudRecord cachedRecord;
    bool isLastSaveUncertain = false; ///< nobody answered it
};

extern const recordID preferencesRecordID;

} // namespace tessaril
