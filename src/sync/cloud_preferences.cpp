#include "sync/cloud_preferences.h"

#include <utility>

namespace tessaril {

const recordID preferencesRecordID{"preferences", "preferences"};

CloudPreferences::CloudPreferences(cloudPreferencesSurroundings surroundings)
    : machine(std::move(surroundings)), cachedRecord{.id = preferencesRecordID} {}

void CloudPreferences::fetch(const syncOperation& operation) {
    // Before the fetch, as a change between the two would go unnoticed.
    machine.records.saveSubscription(preferencesRecordID.type, [](const auto& error) {
        logFailure("No subscription to the preferences in the cloud", error);
    });
    machine.records.fetchRecords(
        {preferencesRecordID}, [this, operation](const recordFetch& fetched) {
            logFailure("Error fetching the preferences from the cloud", fetched.error);
            if (!operation.isWanted() || machine.lostAccount(fetched.error) || !fetched.records)
                return operation.end();
            if (const cloudRecord* record = findRecord(fetched, preferencesRecordID))
                return take(*record, operation);
            if (fetched.error) return operation.end();
            cachedRecord = {.id = preferencesRecordID};
            isLastSaveUncertain = false;
            send(operation);
        });
}

bool CloudPreferences::isNews(const cloudRecord& record) const {
    return record.changeTag != cachedRecord.changeTag;
}

void CloudPreferences::take(const cloudRecord& record, const syncOperation& operation) {
    const bool isOwn =
        std::exchange(isLastSaveUncertain, false) && record.fields == cachedRecord.fields;
    cachedRecord = record;
    if (isOwn) return operation.end();
    machine.preferenceSync.applyPreferences(record.fields);
    machine.dispatcher.onMain([this, operation] {
        machine.dispatcher.inBackground(taskPriority::utility, operation.end);
    });
}

void CloudPreferences::send(const syncOperation& operation) {
    if (isLastSaveUncertain) return settle(operation);
    machine.preferenceSync.collectPreferences(cachedRecord.fields);
    machine.records.saveRecord(cachedRecord, [this, operation](const recordSave& saved) {
        logFailure("Error uploading the preferences", saved.error);
        isLastSaveUncertain = isUncertain(saved.error);
        if (!saved.error && !saved.changeTags.empty())
            cachedRecord.changeTag = saved.changeTags.front();
        operation.end();
    });
}

/// Learns what became of a save that nobody answered, then sends what is new. If it arrived, its
/// tag is unknown here, and no other save would get through.
void CloudPreferences::settle(const syncOperation& operation) {
    machine.records.fetchRecords(
        {preferencesRecordID}, [this, operation](const recordFetch& fetched) {
            logFailure("Error fetching the preferences from the cloud", fetched.error);
            if (!operation.isWanted() || machine.lostAccount(fetched.error) || !fetched.records)
                return operation.end();
            const cloudRecord* record = findRecord(fetched, preferencesRecordID);
            if (record && isNews(*record) && record->fields != cachedRecord.fields)
                return take(*record, operation);
            isLastSaveUncertain = false;
            cachedRecord.changeTag = record ? record->changeTag : "";
            send(operation);
        });
}

} // namespace tessaril
