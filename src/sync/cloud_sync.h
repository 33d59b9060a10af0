#pragma once

#include "platform/dispatcher.h"
#include "platform/record_store.h"
#include "preferences/preference_sync.h"
#include "sync/cloud_merging.h"
#include "sync/serial_operations.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>

namespace tessaril {

/// All outlive it.
struct cloudSyncSurroundings {
    RecordStore& records;
    PreferenceSync& preferenceSync;
    Dispatcher& dispatcher;
    cloudMergingSurroundings merging;
};

/// Keeps the database and the preferences the same on all of the user's machines, by two records
/// that the machines share: fetches and merges them, and uploads what was saved here.
///
/// Operations run one after another, so that nothing older than what was sent is ever merged, and
/// what is sent is never older than what was merged. While `UseiCloud` is off nothing is done. Safe
/// to use from any thread.
class CloudSync {
public:
    explicit CloudSync(cloudSyncSurroundings surroundings);

    // State

    /// Whether the first fetch and merge runs, or has failed and waits for the user's word; the
    /// style list is locked meanwhile.
    bool syncInProgress() const { return isInProgress; }

    /// Whether a first fetch has been started in this run.
    bool initialFetchStarted() const { return hasStarted; }

    /// Called on the main thread when `syncInProgress` has become false. Set before anything else.
    void setReleaseHandler(std::function<void()> handler) { released = std::move(handler); }

    /// Whether an update of all styles waits for the first merge; called on any thread.
    void setUpdatePending(std::function<bool()> isPending) {
        isUpdatePending = std::move(isPending);
    }

    /// Sync was switched on: the next first merge keeps every style that only this machine has.
    void setFirstSyncPending() { firstSyncPending = true; }

    /// Opens the style once the first merge is done.
    void setPendingOpenStyleID(std::int64_t id);

    // Operations

    /// Both first fetches, of the database and then of the preferences.
    void begin();

    /// The first fetch; locks the list by `syncInProgress`.
    void fetchDatabaseRecord();
    void fetchPreferencesRecord();

    /// Another machine has saved. Until a first fetch has worked, that is tried instead.
    void fetchOnRemoteNotification();

    /// Uploads the document as it lies on disk; several uploads that wait are one. Until a first
    /// fetch has worked, that is tried instead, without a word of a failure.
    void uploadDatabase();
    void uploadPreferences();

    // What the user answers to a first fetch that failed.

    void retry();
    /// Releases the list. The first fetch is made up for by the next save or push.
    void workOffline();

    /// Sync has been switched off: releases the list.
    void switchedOff();

    /// The user resets the database: it may replace one in the cloud that cannot be read, for which
    /// the list may be waiting.
    void allowReplacing();

    /// Returns within a few seconds, and does nothing any more; for quitting.
    void finish() { machine.records.finish(); }

private:
    using Ended = SerialOperations::Ended;

    bool isOn() const;
    void beginFirstFetch(bool quiet);
    void firstFetchEnded(const recordFetch& fetched, bool quiet, const Ended& ended);
    void uploadFirst(const Ended& completed);
    void mergeFirst(const cloudRecord& record, bool quiet);
    void firstFetchFailed(bool quiet);
    void releaseList();
    void openPendingStyle();
    void preferencesFetched(const recordFetch& fetched, const Ended& ended);
    void remoteChangeFetched(const recordFetch& fetched, const Ended& ended);
    void takePreferences(const cloudRecord& record);
    std::optional<liveDatabase> decode(const cloudRecord& record);
    void adopt(const cloudRecord& record);
    bool lostAccount(const std::optional<recordError>& error);
    void sendDatabase(const Ended& ended);
    void landDatabase(const recordSave& saved);
    void settleUpload(const Ended& ended);
    bool wasUploaded(const cloudRecord& record);
    void sendPreferences(const Ended& ended);
    std::shared_ptr<const std::string> readDocument() const;

    cloudSyncSurroundings machine;
    CloudMerging merging;
    SerialOperations operations;
    std::function<void()> released;
    std::function<bool()> isUpdatePending;

    // Used by the operations only, one of which runs at a time.
    cloudRecord cachedDatabaseRecord;
    cloudRecord cachedPreferencesRecord;
    std::shared_ptr<const std::string> uncertainUpload; ///< a document that may have arrived

    std::atomic<bool> isInProgress = false;
    std::atomic<bool> hasStarted = false;
    std::atomic<bool> hasFirstFetch = false; ///< since sync was switched on
    std::atomic<bool> firstSyncPending = false;
    std::atomic<bool> isCloudUnreadable = false;
    std::atomic<bool> isUploadWaiting = false;
    std::atomic<bool> isPreferenceUploadWaiting = false;
    std::atomic<bool> isFetchWaiting = false;
    std::mutex mutex;
    std::optional<std::int64_t> pendingOpenStyleID; ///< guarded by `mutex`
};

} // namespace tessaril
