#include "sync/cloud_sync.h"

#include "events/notification_names.h"
#include "model/log.h"
#include "preferences/preference_keys.h"
#include "store/style_store.h"

#include <string>
#include <string_view>
#include <utility>

namespace tessaril {

namespace {

const recordID databaseRecordID{"styleDatabase", "styleDatabase"};
const recordID preferencesRecordID{"preferences", "preferences"};

/// Failures that the user is not told of.
void logFailure(std::string_view what, const std::optional<recordError>& error) {
    if (error) logLine(std::string(what) + ": " + error->text);
}

const cloudRecord* find(const recordFetch& fetched, const recordID& id) {
    const auto found = fetched.records->find(id);
    return found == fetched.records->end() ? nullptr : &found->second;
}

/// Whether the server may have saved what it could not answer any more.
bool isUncertain(const std::optional<recordError>& error) {
    return error && (error->code == recordErrorCode::unreachable ||
                     error->code == recordErrorCode::timedOut);
}

/// Takes over the tag of the state that the server has from now on.
void landSave(cloudRecord& record, const recordSave& saved) {
    record.file = nullptr; // of no use any more
    if (!saved.error && !saved.changeTags.empty()) record.changeTag = saved.changeTags.front();
}

} // namespace

CloudSync::CloudSync(cloudSyncSurroundings surroundings)
    : machine(std::move(surroundings))
    , merging(machine.merging)
    , cachedDatabaseRecord{.id = databaseRecordID}
    , cachedPreferencesRecord{.id = preferencesRecordID} {
    machine.records.setChangeHandler([this] { fetchOnRemoteNotification(); });
}

bool CloudSync::isOn() const {
    return machine.merging.preferences.boolean(preferenceKeys::useiCloud);
}

void CloudSync::setPendingOpenStyleID(std::int64_t id) {
    const std::lock_guard lock(mutex);
    pendingOpenStyleID = id;
}

// The first fetch of the database

void CloudSync::begin() {
    fetchDatabaseRecord();
    fetchPreferencesRecord();
}

void CloudSync::fetchDatabaseRecord() {
    beginFirstFetch(false);
}

void CloudSync::beginFirstFetch(bool quiet) {
    if (!isOn()) return;
    hasStarted = true;
    if (!quiet) {
        hasFirstFetch = false;
        isInProgress = true;
    }
    operations.add([this, quiet](const Ended& ended) {
        // Before the fetch, as a change between the two would go unnoticed.
        machine.records.saveSubscription(databaseRecordID.type, [](const auto& error) {
            logFailure("No subscription to the style database of the cloud", error);
        });
        machine.records.fetchRecords({databaseRecordID},
                                     [this, quiet, ended](const recordFetch& fetched) {
                                         firstFetchEnded(fetched, quiet, ended);
                                     });
    });
}

void CloudSync::firstFetchEnded(const recordFetch& fetched, bool quiet, const Ended& ended) {
    logFailure("Error fetching the style database from the cloud", fetched.error);
    if (!isOn() || lostAccount(fetched.error)) {
        releaseList();
        return ended();
    }
    if (fetched.error) firstFetchFailed(quiet);
    // A fetch that failed tells nothing of what the cloud lacks.
    if (!fetched.records || (fetched.error && fetched.records->empty())) return ended();
    if (fetched.records->empty())
        return uploadFirst([this, ended] {
            releaseList();
            ended();
        });
    if (const cloudRecord* record = find(fetched, databaseRecordID)) mergeFirst(*record, quiet);
    ended();
}

/// The cloud has no database yet: this one becomes it.
void CloudSync::uploadFirst(const Ended& completed) {
    isCloudUnreadable = false;
    cachedDatabaseRecord = {.id = databaseRecordID, .file = readDocument()};
    if (!cachedDatabaseRecord.file) {
        logLine("Error reading the style database for its first upload.");
        return completed();
    }
    machine.records.saveRecord(cachedDatabaseRecord, [this, completed](const recordSave& saved) {
        logFailure("Error saving the first style database in the cloud", saved.error);
        landDatabase(saved);
        hasFirstFetch = !saved.error;
        completed();
    });
}

void CloudSync::mergeFirst(const cloudRecord& record, bool quiet) {
    const auto cloud = decode(record);
    const auto outcome = cloud ? merging.mergeFirstFetch(*cloud, firstSyncPending, quiet)
                               : cloudMergeOutcome::failed;
    if (outcome == cloudMergeOutcome::failed) {
        if (isOn()) return firstFetchFailed(quiet);
        return releaseList();
    }
    if (outcome != cloudMergeOutcome::unchanged) firstSyncPending = false;
    hasFirstFetch = outcome != cloudMergeOutcome::unwritten;
    if (hasFirstFetch) adopt(record);
    releaseList();
    if (isUpdatePending && isUpdatePending())
        machine.merging.center.post(notifications::performFirstUpdate);
    openPendingStyle();
}

void CloudSync::firstFetchFailed(bool quiet) {
    if (!quiet) machine.merging.center.post(notifications::iCloudError);
}

void CloudSync::releaseList() {
    isInProgress = false;
    machine.merging.center.post(notifications::refreshTable);
    machine.dispatcher.onMain([this] {
        if (released) released();
    });
}

void CloudSync::openPendingStyle() {
    const std::lock_guard lock(mutex);
    if (const auto id = std::exchange(pendingOpenStyleID, std::nullopt))
        machine.dispatcher.onMain(
            [this, id] { machine.merging.center.post(notifications::openStyleNotif, *id); });
}

void CloudSync::retry() {
    begin();
    if (!isOn()) releaseList();
}

void CloudSync::workOffline() {
    releaseList();
    openPendingStyle();
}

void CloudSync::switchedOff() {
    releaseList();
}

void CloudSync::allowReplacing() {
    if (!isCloudUnreadable.exchange(false)) return;
    hasFirstFetch = true;
    releaseList();
}

bool CloudSync::lostAccount(const std::optional<recordError>& error) {
    if (!error || error->code != recordErrorCode::notAuthenticated) return false;
    machine.merging.preferences.set(preferenceKeys::useiCloud, false);
    return true;
}

// What another machine has saved

void CloudSync::fetchOnRemoteNotification() {
    if (!isOn() || isFetchWaiting.exchange(true)) return;
    operations.add([this](const Ended& ended) {
        isFetchWaiting = false;
        if (!isOn()) return ended();
        if (!hasFirstFetch) {
            beginFirstFetch(true);
            fetchPreferencesRecord();
            return ended();
        }
        machine.records.fetchRecords(
            {databaseRecordID, preferencesRecordID},
            [this, ended](const recordFetch& fetched) { remoteChangeFetched(fetched, ended); });
    });
}

void CloudSync::remoteChangeFetched(const recordFetch& fetched, const Ended& ended) {
    logFailure("Error fetching a change from the cloud", fetched.error);
    if (lostAccount(fetched.error)) releaseList();
    if (!isOn() || !fetched.records || (fetched.error && fetched.records->empty())) return ended();
    if (fetched.records->empty())
        return uploadFirst([this, ended] {
            machine.merging.center.post(notifications::refreshTable);
            ended();
        });
    // Two records of one state are equal, whatever they hold.
    const cloudRecord* database = find(fetched, databaseRecordID);
    if (database && database->changeTag != cachedDatabaseRecord.changeTag &&
        !wasUploaded(*database)) {
        const auto cloud = decode(*database);
        if (cloud && merging.mergeRemoteChange(*cloud) == cloudMergeOutcome::changed)
            adopt(*database);
    }
    const cloudRecord* preferences = find(fetched, preferencesRecordID);
    if (preferences && preferences->changeTag != cachedPreferencesRecord.changeTag)
        takePreferences(*preferences);
    ended();
}

/// The cloud's database. One that cannot be read must not be replaced by what somebody saves next:
/// this program may only be too old for it. The user's word for that is a reset.
std::optional<liveDatabase> CloudSync::decode(const cloudRecord& record) {
    auto cloud = merging.decodeCloudDatabase(record);
    isCloudUnreadable = !cloud;
    if (!cloud && merging.keepUnreadable(record)) adopt(record);
    return cloud;
}

/// To be called when what the record held is in the document on disk: what is uploaded from now on
/// carries its tag.
void CloudSync::adopt(const cloudRecord& record) {
    cachedDatabaseRecord = record;
    cachedDatabaseRecord.file = nullptr;
}

// Preferences

void CloudSync::fetchPreferencesRecord() {
    if (!isOn()) return;
    operations.add([this](const Ended& ended) {
        machine.records.saveSubscription(preferencesRecordID.type, [](const auto& error) {
            logFailure("No subscription to the preferences in the cloud", error);
        });
        machine.records.fetchRecords(
            {preferencesRecordID},
            [this, ended](const recordFetch& fetched) { preferencesFetched(fetched, ended); });
    });
}

void CloudSync::preferencesFetched(const recordFetch& fetched, const Ended& ended) {
    logFailure("Error fetching the preferences from the cloud", fetched.error);
    if (lostAccount(fetched.error)) releaseList();
    if (!isOn() || !fetched.records) return ended();
    if (const cloudRecord* record = find(fetched, preferencesRecordID))
        takePreferences(*record);
    else if (!fetched.error) {
        cachedPreferencesRecord = {.id = preferencesRecordID};
        return sendPreferences(ended);
    }
    ended();
}

void CloudSync::takePreferences(const cloudRecord& record) {
    cachedPreferencesRecord = record;
    machine.preferenceSync.applyPreferences(record.fields);
}

// Uploads

void CloudSync::uploadDatabase() {
    if (!isOn() || isUploadWaiting.exchange(true)) return;
    operations.add([this](const Ended& ended) {
        isUploadWaiting = false;
        sendDatabase(ended);
    });
}

void CloudSync::sendDatabase(const Ended& ended) {
    if (!isOn() || isInProgress) return ended();
    if (isCloudUnreadable) {
        logLine("Not uploaded, as the style database of the cloud could not be read.");
        return ended();
    }
    if (hasStarted && !hasFirstFetch) {
        beginFirstFetch(true);
        return ended();
    }
    if (uncertainUpload) return settleUpload(ended);
    cachedDatabaseRecord.file = readDocument();
    if (!cachedDatabaseRecord.file) return ended();
    machine.records.modifyRecords({cachedDatabaseRecord}, [this, ended](const recordSave& saved) {
        logFailure("Error uploading the style database", saved.error);
        if (isUncertain(saved.error)) uncertainUpload = cachedDatabaseRecord.file;
        landDatabase(saved);
        ended();
    });
}

void CloudSync::landDatabase(const recordSave& saved) {
    landSave(cachedDatabaseRecord, saved);
    if (!saved.error) machine.merging.preferences.set(preferenceKeys::lastSuccessfulSync, now());
}

/// Learns what became of an upload that nobody answered, then sends what is new. If it arrived, its
/// tag is unknown here, and no other upload would get through.
void CloudSync::settleUpload(const Ended& ended) {
    machine.records.fetchRecords({databaseRecordID}, [this, ended](const recordFetch& fetched) {
        logFailure("Error fetching the style database from the cloud", fetched.error);
        if (lostAccount(fetched.error)) releaseList();
        if (!fetched.records) return ended();
        if (const cloudRecord* record = find(fetched, databaseRecordID)) wasUploaded(*record);
        uncertainUpload = nullptr;
        sendDatabase(ended);
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

void CloudSync::uploadPreferences() {
    if (!isOn() || isPreferenceUploadWaiting.exchange(true)) return;
    operations.add([this](const Ended& ended) {
        isPreferenceUploadWaiting = false;
        if (!isOn()) return ended();
        sendPreferences(ended);
    });
}

void CloudSync::sendPreferences(const Ended& ended) {
    machine.preferenceSync.collectPreferences(cachedPreferencesRecord.fields);
    machine.records.saveRecord(cachedPreferencesRecord, [this, ended](const recordSave& saved) {
        logFailure("Error uploading the preferences", saved.error);
        landSave(cachedPreferencesRecord, saved);
        ended();
    });
}

} // namespace tessaril
