#pragma once

#include "desktop/posix_file_system.h"
#include "platform/preference_store.h"
#include "preferences/ini_text.h"

#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace tessaril {

/// Preferences in an INI file, which other programs can read and change. The keys stand in the
/// group [General]; booleans are written as `true` and `false`, numbers in decimal. Every change
/// is on disk when `setValue` returns; a kill at any instant leaves the old file or the new one.
///
/// QSettings reads the same files, but is not used to write them: killed at the wrong instant it
/// leaves a lock that holds up the next start's first write for half a minute and temporary files
/// that nobody removes, and it takes a file that somebody deleted for the user's wish to forget.
class SettingsStore : public PreferenceStore {
public:
    /// A damaged file, or a folder in its place, is moved beside itself as
    /// `<name>-unreadable-<date>.<ext>`, which is logged; the store is then empty, or has the whole
    /// lines of a file whose last one has no end. A file that may not be read stays as it is.
    explicit SettingsStore(std::filesystem::path file);

    std::optional<preferenceValue> value(std::string_view key,
                                         const preferenceValue& like) const override;

    /// Takes over first what another program wrote meanwhile; over a file that was damaged or
    /// deleted meanwhile everything that is known is written. A change that cannot be written is
    /// logged, holds for this process and is tried again with the next one. What another program
    /// writes between the reading and the writing, a moment, is lost.
    void setValue(std::string_view key, const preferenceValue& value) override;

    void removeValue(std::string_view key) override;

private:
    void change(std::string_view key, std::optional<std::string> text);
    bool takeOver();
    bool moveAside();
    bool write();

    mutable std::mutex mutex;
    PosixFileSystem files;
    const std::filesystem::path file;
    IniText known;
    /// What was set here, or removed, and is not on disk.
    std::map<std::string, std::optional<std::string>> unwritten;
};

/// The file of the application's own preferences, in the user's configuration folder.
std::filesystem::path standardPreferencesFile();

/// The file of the preferences that the browser extension reads.
std::filesystem::path sharedPreferencesFile(const std::filesystem::path& container);

} // namespace tessaril
