#include "sync/cloud_sync.h"

#include "events/notification_names.h"
#include "model/database_json.h"
#include "model/log.h"
#include "preferences/preference_keys.h"
#include "store/style_store.h"

#include <chrono>
#include <string>
#include <utility>

namespace tessaril {

namespace {

const recordID databaseRecordID{"styleDatabase", "styleDatabase"};

constexpr std::chrono::seconds quittingTime(3); ///< for what is still to be sent

} // namespace

CloudSync::CloudSync(cloudSyncSurroundings surroundings)
    : machine(std::move(surroundings))
    , merging(machine.merging)
    , cloudPreferences({.records = machine.records,
                        .preferenceSync = machine.preferenceSync,
                        .dispatcher = machine.dispatcher,
                        .lostAccount = [this](const auto& error) { return lostAccount(error); }})
    , cachedDatabaseRecord{.id = databaseRecordID} {
    machine.records.setChangeHandler([this] { fetchOnRemoteNotification(); });
}

void CloudSync::setPendingOpenStyleID(std::int64_t id) {
    const std::lock_guard lock(mutex);
    pendingOpenStyleID = id;
}

void CloudSync::finish() {
    operations.waitUntilIdle(quittingTime);
    machine.records.finish();
}

// The operations and the terms they belong to

bool CloudSync::isOn() const {
    return machine.merging.preferences.boolean(preferenceKeys::useiCloud);
}

void CloudSync::endTerm() {
    {
        const std::lock_guard lock(ending);
        ++term;
        hasBegun = false;
        hasFirstFetch = false;
        isCloudUnreadable = false;
    }
    releaseList();
}

/// Changes what is known of the operation's term, unless that has ended meanwhile.
bool CloudSync::note(const syncOperation& operation, const std::function<void()>& change) {
    const std::lock_guard lock(ending);
    if (!operation.isWanted()) return false;
    change();
    return true;
}

void CloudSync::switchedOff() {
    endTerm();
}

bool CloudSync::lostAccount(const std::optional<recordError>& error) {
    if (!error || error->code != recordErrorCode::notAuthenticated) return false;
    machine.merging.preferences.set(preferenceKeys::useiCloud, false);
    endTerm();
    return true;
}

/// Of the present term.
void CloudSync::add(Body body) {
    if (!isOn()) return;
    operations.add([this, asked = term.load(), body = std::move(body)](const auto& ended) {
        runInTerm(asked, ended, body);
    });
}

/// Of the term in which it begins. Nothing where one waits already.
void CloudSync::addOnce(std::atomic<bool>& isWaiting, Body body) {
    if (!isOn() || isWaiting.exchange(true)) return;
    operations.add([this, &isWaiting, body = std::move(body)](const auto& ended) {
        isWaiting = false;
        runInTerm(term, ended, body);
    });
}

void CloudSync::runInTerm(int ofTerm, const SerialOperations::Ended& ended, const Body& body) {
    const syncOperation operation{.isWanted = [this, ofTerm] { return isOn() && term == ofTerm; },
                                  .end = ended};
    if (operation.isWanted())
        body(operation);
    else
        ended();
}

// The first fetch of the database

void CloudSync::begin() {
    if (!isOn()) return releaseList();
    fetchDatabaseRecord();
    fetchPreferencesRecord();
}

void CloudSync::fetchDatabaseRecord() {
    {
        const std::lock_guard lock(ending);
        if (!isOn()) return;
        hasStarted = true;
        hasBegun = true;
        hasFirstFetch = false;
        isInProgress = true;
    }
    beginFirstFetch(false);
}

void CloudSync::fetchPreferencesRecord() {
    add([this](const syncOperation& operation) { cloudPreferences.fetch(operation); });
}

void CloudSync::makeUpFirstFetches() {
    beginFirstFetch(true);
    fetchPreferencesRecord();
}

void CloudSync::beginFirstFetch(bool isQuiet) {
    add([this, isQuiet](const syncOperation& operation) {
        // Before the fetch, as a change between the two would go unnoticed.
        machine.records.saveSubscription(databaseRecordID.type, [](const auto& error) {
            logFailure("No subscription to the style database of the cloud", error);
        });
        machine.records.fetchRecords(
            {databaseRecordID},
            [this, first = firstFetch{operation, isQuiet}](const recordFetch& fetched) {
                firstFetchEnded(fetched, first);
            });
    });
}

void CloudSync::firstFetchEnded(const recordFetch& fetched, const firstFetch& first) {
    const syncOperation& operation = first.operation;
    logFailure("Error fetching the style database from the cloud", fetched.error);
    if (!isOn()) releaseList();
    if (!operation.isWanted() || lostAccount(fetched.error)) return operation.end();
    if (fetched.error) firstFetchFailed(first.isQuiet);
    // A fetch that failed tells nothing of what the cloud lacks.
    if (!fetched.records || (fetched.error && fetched.records->empty())) return operation.end();
    if (fetched.records->empty())
        return uploadFirst(operation, [this, operation] {
            if (operation.isWanted()) releaseList();
            operation.end();
        });
    if (const cloudRecord* record = findRecord(fetched, databaseRecordID))
        mergeFirst(*record, first);
    operation.end();
}

/// The cloud has no database yet: this one becomes it.
void CloudSync::uploadFirst(const syncOperation& operation,
                            const std::function<void()>& completed) {
    isCloudUnreadable = false;
    uncertainUpload = nullptr;
    const date sent = now();
    cachedDatabaseRecord = {.id = databaseRecordID, .file = readWholeDocument()};
    if (!cachedDatabaseRecord.file) {
        logLine("Error reading the style database for its first upload.");
        return completed();
    }
    machine.records.saveRecord(
        cachedDatabaseRecord, [this, operation, completed, sent](const recordSave& saved) {
            logFailure("Error saving the first style database in the cloud", saved.error);
            landDatabase(saved, sent);
            note(operation, [&] { hasFirstFetch = !saved.error; });
            completed();
        });
}

/// The document as it lies on disk, or written anew where that one cannot be read: no other machine
/// could do anything with it.
std::shared_ptr<const std::string> CloudSync::readWholeDocument() {
    auto document = readDocument();
    if (!document || decodeDatabase(*document)) return document;
    StyleStore& store = machine.merging.store;
    store.saveDatabaseWithoutUpload();
    return store.waitForSaves() ? readDocument() : nullptr;
}

void CloudSync::mergeFirst(const cloudRecord& record, const firstFetch& first) {
    const auto cloud = decode(record, first.operation, first.isQuiet);
    const auto outcome =
        cloud ? merging.mergeFirstFetch(*cloud, firstSyncPending) : cloudMergeOutcome::failed;
    const bool counts = note(first.operation, [&] {
        if (outcome == cloudMergeOutcome::failed) return;
        // One that is in memory only may be merged again, after the program's next start at the
        // latest.
        if (outcome == cloudMergeOutcome::changed) firstSyncPending = false;
        hasFirstFetch = outcome != cloudMergeOutcome::unwritten;
    });
    if (!isOn()) releaseList();
    if (!counts) return; // the list is not this term's any more
    if (outcome == cloudMergeOutcome::failed) return firstFetchFailed(first.isQuiet);
    if (hasFirstFetch) adopt(record);
    releaseList();
    if (isUpdatePending && isUpdatePending())
        machine.merging.center.post(notifications::performFirstUpdate);
}

void CloudSync::firstFetchFailed(bool isQuiet) {
    if (!isQuiet) machine.merging.center.post(notifications::iCloudError);
}

void CloudSync::releaseList() {
    isInProgress = false;
    machine.merging.center.post(notifications::refreshTable);
    machine.dispatcher.onMain([this] {
        if (released) released();
    });
    openPendingStyle();
}

void CloudSync::openPendingStyle() {
    const std::lock_guard lock(mutex);
    if (const auto id = std::exchange(pendingOpenStyleID, std::nullopt))
        machine.dispatcher.onMain(
            [this, id] { machine.merging.center.post(notifications::openStyleNotif, *id); });
}

// What another machine has saved

void CloudSync::fetchOnRemoteNotification() {
    addOnce(isFetchWaiting, [this](const syncOperation& operation) {
        if (!hasFirstFetch) {
            if (hasBegun) makeUpFirstFetches();
            return operation.end();
        }
        machine.records.fetchRecords({databaseRecordID, preferencesRecordID},
                                     [this, operation](const recordFetch& fetched) {
                                         remoteChangeFetched(fetched, operation);
                                     });
    });
}

void CloudSync::remoteChangeFetched(const recordFetch& fetched, const syncOperation& operation) {
    logFailure("Error fetching a change from the cloud", fetched.error);
    if (!operation.isWanted() || lostAccount(fetched.error)) return operation.end();
    // Whoever has missed something begins anew: no upload would get through, and that merge keeps
    // what was made here meanwhile.
    if (fetched.error) hasFirstFetch = false;
    if (!fetched.records || (fetched.error && fetched.records->empty())) return operation.end();
    if (fetched.records->empty())
        return uploadFirst(operation, [this, operation] {
            machine.merging.center.post(notifications::refreshTable);
            operation.end();
        });
    // Two records of one state are equal, whatever they hold.
    const cloudRecord* database = findRecord(fetched, databaseRecordID);
    if (database && database->changeTag != cachedDatabaseRecord.changeTag &&
        !wasUploaded(*database)) {
        const auto cloud = decode(*database, operation, false);
        if (cloud && merging.mergeRemoteChange(*cloud) == cloudMergeOutcome::changed &&
            operation.isWanted())
            adopt(*database);
    }
    if (!operation.isWanted()) return operation.end(); // after the merge
    const cloudRecord* preferences = findRecord(fetched, preferencesRecordID);
    if (preferences && cloudPreferences.isNews(*preferences))
        return cloudPreferences.take(*preferences, operation);
    operation.end();
}

/// The cloud's database. One that cannot be read must not be replaced by what somebody saves next:
/// this program may only be too old for it. The user's word for that is a reset.
std::optional<liveDatabase> CloudSync::decode(const cloudRecord& record,
                                              const syncOperation& operation, bool isQuiet) {
    auto cloud = merging.decodeCloudDatabase(record, isQuiet);
    note(operation, [&] { isCloudUnreadable = !cloud; });
    if (!cloud && merging.keepUnreadable(record)) adopt(record);
    return cloud;
}

/// To be called when what the record held is in the document on disk: what is uploaded from now on
/// carries its tag.
void CloudSync::adopt(const cloudRecord& record) {
    cachedDatabaseRecord = record;
    cachedDatabaseRecord.file = nullptr;
    uncertainUpload = nullptr;
}

// Uploads

void CloudSync::uploadDatabase() {
    addOnce(isUploadWaiting, [this](const syncOperation& operation) { sendDatabase(operation); });
}

void CloudSync::sendDatabase(const syncOperation& operation) {
    if (isInProgress) return operation.end();
    if (!hasFirstFetch) {
        if (hasBegun) makeUpFirstFetches();
        return operation.end();
    }
    if (isCloudUnreadable) {
        logLine("Not uploaded, as the style database of the cloud could not be read.");
        return operation.end();
    }
    if (uncertainUpload) return settleUpload(operation);
    // What is made while it travels is newer than the sync.
    const date sent = now();
    cachedDatabaseRecord.file = readDocument();
    if (!cachedDatabaseRecord.file) return operation.end();
    machine.records.modifyRecords(
        {cachedDatabaseRecord}, [this, operation, sent](const recordSave& saved) {
            logFailure("Error uploading the style database", saved.error);
            if (isUncertain(saved.error)) uncertainUpload = cachedDatabaseRecord.file;
            landDatabase(saved, sent);
            // Nothing is sent again, but what the other machine has saved may have gone unheard.
            if (saved.error && saved.error->code == recordErrorCode::changed)
                fetchOnRemoteNotification();
            operation.end();
        });
}

/// Takes over the tag of the state that the server has from now on.
void CloudSync::landDatabase(const recordSave& saved, date sent) {
    cachedDatabaseRecord.file = nullptr; // of no use any more
    if (saved.error) return;
    if (!saved.changeTags.empty()) cachedDatabaseRecord.changeTag = saved.changeTags.front();
    machine.merging.preferences.set(preferenceKeys::lastSuccessfulSync, sent);
}

/// Learns what became of an upload that nobody answered, then sends what is new. If it arrived, its
/// tag is unknown here, and no other upload would get through.
void CloudSync::settleUpload(const syncOperation& operation) {
    machine.records.fetchRecords({databaseRecordID}, [this, operation](const recordFetch& fetched) {
        logFailure("Error fetching the style database from the cloud", fetched.error);
        if (!operation.isWanted() || lostAccount(fetched.error) || !fetched.records)
            return operation.end();
        if (const cloudRecord* record = findRecord(fetched, databaseRecordID)) wasUploaded(*record);
        uncertainUpload = nullptr;
        sendDatabase(operation);
    });
}

/// Whether the record is what this machine uploaded without hearing of it.
bool CloudSync::wasUploaded(const cloudRecord& record) {
    const auto document = std::exchange(uncertainUpload, nullptr);
    if (!document || !record.file || *record.file != *document) return false;
    adopt(record);
    return true;
}

std::shared_ptr<const std::string> CloudSync::readDocument() const {
    auto bytes = machine.merging.files.read(machine.merging.container / documentName);
    return bytes ? std::make_shared<const std::string>(std::move(*bytes)) : nullptr;
}

void CloudSync::databaseWasReset() {
    add([this](const syncOperation& operation) {
        bool isReplaced = false;
        note(operation, [&] {
            isReplaced = isCloudUnreadable.exchange(false);
            if (isReplaced) hasFirstFetch = true;
        });
        if (isReplaced) {
            releaseList();
            // Sends what follows the reset's own save, whose thread this may be.
            machine.merging.store.saveDatabase();
        }
        operation.end();
    });
}

void CloudSync::uploadPreferences() {
    addOnce(isPreferenceUploadWaiting,
            [this](const syncOperation& operation) { cloudPreferences.send(operation); });
}

} // namespace tessaril
