#pragma once

#include "platform/preference_store.h"

#include <QSettings>

#include <filesystem>
#include <mutex>

namespace tessaril {

/// Preferences in an INI file. The keys stand in the group [General]; booleans are written as
/// `true` and `false`, numbers in decimal, so that other programs can read them. Every change is
/// on disk when `setValue` returns.
class SettingsStore : public PreferenceStore {
public:
    explicit SettingsStore(const std::filesystem::path& file);

    std::optional<preferenceValue> value(std::string_view key,
                                         const preferenceValue& like) const override;

    /// A change that cannot be written is logged and holds for this process only.
    void setValue(std::string_view key, const preferenceValue& value) override;

private:
    mutable std::mutex mutex;
    QSettings settings;
};

/// The file of the application's own preferences, in the user's configuration folder.
std::filesystem::path standardPreferencesFile();

/// The file of the preferences that the browser extension reads.
std::filesystem::path sharedPreferencesFile(const std::filesystem::path& container);

} // namespace tessaril
