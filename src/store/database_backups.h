#pragma once

#include "platform/file_system.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

namespace tessaril {

/// A document that was kept.
struct databaseBackup {
    std::filesystem::path file;
    std::chrono::sys_seconds made; ///< UTC, as its name says
    int number = 1;                ///< among those of one second
    std::uintmax_t size = 0;       ///< bytes

    bool operator==(const databaseBackup&) const = default;
};

/// The folder of the backups in the shared container.
std::filesystem::path backupFolderOf(const std::filesystem::path& container);

/// `styledb-<date and time in UTC>.sdb`, with `_<number>` behind the time where it is not 1, so
/// that a folder that is sorted by name shows them as they were made.
std::string backupName(std::chrono::sys_seconds made, int number);

/// Those of `backups` that need not stay: all but the ten newest, and of older ones the newest of
/// each week of ISO 8601 in UTC, for 26 weeks.
///
/// No wrong clock takes good ones away: weeks count that have a backup, however long ago the clock
/// says they were, and what is dated later than `now` stays and does not count.
std::vector<databaseBackup> backupsToRemove(std::vector<databaseBackup> backups,
                                            std::chrono::sys_seconds now);

/// Keeps the document on disk under dated names, so that what a change has lost can be brought
/// back. Safe to use from any thread.
class DatabaseBackups {
public:
    using Clock = std::function<std::chrono::sys_seconds()>;

    /// - folder: for backups alone; made anew where it is missing, but not what it is in
    /// - document: only ever replaced, never written in place
    DatabaseBackups(FileSystem& files, std::filesystem::path folder, std::filesystem::path document,
                    Clock clock);

    /// Keeps the document as it stands, unless there is none or the newest backup holds the same,
    /// and removes what need not stay; no other files of the folder. Gives whether nothing would
    /// be lost if the document were replaced now; a failure is logged.
    bool keep();

    /// The same, unless there is a backup of this day of the local calendar or this was done today
    /// already.
    void keepOnceADay();

    /// The newest first; files with other names are left out.
    std::vector<databaseBackup> list() const;

private:
    bool keepAt(std::chrono::sys_seconds now);

    FileSystem& files;
    std::filesystem::path folder;
    std::filesystem::path document;
    Clock clock;
    std::mutex mutex; ///< one thread keeps at a time
    std::optional<std::chrono::sys_days> lastDay;
};

/// The system's clock.
std::chrono::sys_seconds systemSeconds();

} // namespace tessaril
