#pragma once

#include "platform/dispatcher.h"
#include "platform/record_store.h"
#include "preferences/preference_sync.h"
#include "sync/cloud_merging.h"
#include "sync/cloud_preferences.h"
#include "sync/serial_operations.h"
#include "sync/sync_operation.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

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

    /// A first fetch is about to be begun, by another thread: it counts as in progress.
    void setInitialFetchStarted() {
        hasStarted = true;
        isInProgress = true;
    }

    /// Sync was switched on: the next first merge keeps every style that only this machine has.
    void setFirstSyncPending() { firstSyncPending = true; }

    /// Opens the style once the first merge is done, or will not be.
    void setPendingOpenStyleID(std::int64_t id);

    // Operations

    /// Both first fetches, of the database and then of the preferences. Releases the list where
    /// sync is off by now.
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

    void retry() { begin(); }
    /// Releases the list. The first fetch is made up for by the next save or push.
    void workOffline() { releaseList(); }

    /// Sync has been switched off: releases the list, and whatever is under way is void.
    void switchedOff();

    /// The user has reset the database, which may replace one in the cloud that cannot be read,
    /// and for which the list may be waiting.
    void databaseWasReset();

    /// Lets what was asked for end, a few seconds at most; then does nothing any more. For
    /// quitting.
    void finish();

private:
    /// The first fetch that runs or waits.
    struct firstFetch {
        syncOperation operation;
        bool isQuiet; ///< the list was not locked for it, and a failure is not told
    };
    using Body = std::function<void(const syncOperation&)>;

    bool isOn() const;
    void endTerm();
    bool note(const syncOperation& operation, const std::function<void()>& change);
    void add(Body body);
    void addOnce(std::atomic<bool>& isWaiting, Body body);
    void runInTerm(int ofTerm, const SerialOperations::Ended& ended, const Body& body);
    void beginFirstFetch(bool isQuiet);
    void makeUpFirstFetches();
    void firstFetchEnded(const recordFetch& fetched, const firstFetch& first);
    void uploadFirst(const syncOperation& operation, const std::function<void()>& completed);
    std::shared_ptr<const std::string> readWholeDocument();
    void mergeFirst(const cloudRecord& record, const firstFetch& first);
    void firstFetchFailed(bool isQuiet);
    void releaseList();
    void openPendingStyle();
    void remoteChangeFetched(const recordFetch& fetched, const syncOperation& operation);
    std::optional<liveDatabase> decode(const cloudRecord& record, const syncOperation& operation,
                                       bool isQuiet);
    void adopt(const cloudRecord& record);
    bool lostAccount(const std::optional<recordError>& error);
    void sendDatabase(const syncOperation& operation);
    void landDatabase(const recordSave& saved, date sent);
    void settleUpload(const syncOperation& operation);
    bool wasUploaded(const cloudRecord& record);
    std::shared_ptr<const std::string> readDocument() const;

    cloudSyncSurroundings machine;
    CloudMerging merging;
    CloudPreferences cloudPreferences;
    SerialOperations operations;
    std::function<void()> released;
    std::function<bool()> isUpdatePending;

    // Used by the operations only, one of which runs at a time.
    cloudRecord cachedDatabaseRecord;
    std::shared_ptr<const std::string> uncertainUpload; ///< a document that may have arrived

    std::atomic<int> term = 0; ///< counts the times that sync was on
    std::atomic<bool> isInProgress = false;
    std::atomic<bool> hasStarted = false;
    std::atomic<bool> hasBegun = false;      ///< a first fetch, in this term
    std::atomic<bool> hasFirstFetch = false; ///< in this term, and nothing was missed since
    std::atomic<bool> firstSyncPending = false;
    std::atomic<bool> isCloudUnreadable = false;
    std::atomic<bool> isUploadWaiting = false;
    std::atomic<bool> isPreferenceUploadWaiting = false;
    std::atomic<bool> isFetchWaiting = false;
    std::mutex ending; ///< of a term, which nothing of it may follow
    std::mutex mutex;
    std::optional<std::int64_t> pendingOpenStyleID; ///< guarded by `mutex`
};

} // namespace tessaril
