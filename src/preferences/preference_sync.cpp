#include "preferences/preference_sync.h"

#include "events/notification_names.h"
#include "model/log.h"

#include <optional>

namespace tessaril {

namespace {

void collect(const Preferences& store, const syncedPreference& synced, preferencesRecord& record) {
    const std::string field(synced.key);
    switch (synced.type) {
    case preferenceType::boolean:
        record.insert_or_assign(field, std::int64_t{store.boolean(synced.key)});
        return;
    case preferenceType::integer:
        record.insert_or_assign(field, store.integer(synced.key));
        return;
    case preferenceType::string:
        if (auto text = store.findString(synced.key))
            record.insert_or_assign(field, std::move(*text));
        else
            record.erase(field);
        return;
    }
}

/// The field as the key's store takes it; nothing for a field of another type.
std::optional<preferenceValue> valueOf(const preferencesRecord::mapped_type& field,
                                       preferenceType type) {
    if (type == preferenceType::string) {
        const auto* text = std::get_if<std::string>(&field);
        return text ? std::optional<preferenceValue>(*text) : std::nullopt;
    }
    const auto* number = std::get_if<std::int64_t>(&field);
    if (!number) return std::nullopt;
    if (type == preferenceType::boolean) return *number != 0;
    return *number;
}

} // namespace

PreferenceSync::PreferenceSync(Preferences& standardStore, Preferences* sharedStore,
                               NotificationCenter& bus, Dispatcher& taskDispatcher)
    : standard(standardStore), shared(sharedStore), center(bus), dispatcher(taskDispatcher) {}

void PreferenceSync::collectPreferences(preferencesRecord& record) const {
    for (const syncedPreference& synced : syncedPreferenceKeys)
        collect(standard, synced, record);
    if (!shared) return;
    for (const syncedPreference& synced : syncedSharedPreferenceKeys)
        collect(*shared, synced, record);
}

void PreferenceSync::applyPreferences(const preferencesRecord& record) {
    for (const syncedPreference& synced : syncedPreferenceKeys)
        apply(standard, synced, record);
    if (shared)
        for (const syncedPreference& synced : syncedSharedPreferenceKeys)
            apply(*shared, synced, record);
    dispatcher.onMain([this] { center.post(notifications::prefsChangedRemotely); });
}

void PreferenceSync::apply(Preferences& store, const syncedPreference& synced,
                           const preferencesRecord& record) {
    const auto field = record.find(synced.key);
    if (field == record.end()) return;
    if (const auto value = valueOf(field->second, synced.type))
        dispatcher.onMain([&store, key = synced.key, value = *value] { store.set(key, value); });
    else
        logLine("Invalid type of a preference in the cloud: " + field->first);
}

void PreferenceSync::uploadPreferences() {
    if (upload && standard.boolean(preferenceKeys::useiCloud)) upload();
}

void PreferenceSync::setUploadHandler(std::function<void()> handler) {
    upload = std::move(handler);
}

} // namespace tessaril
