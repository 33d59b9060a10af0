#pragma once

#include "platform/alerts.h"
#include "platform/dispatcher.h"
#include "platform/file_system.h"
#include "store/backup_contents.h"
#include "store/database_backups.h"
#include "store/database_commands.h"
#include "store/style_list.h"
#include "store/style_store.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <stop_token>
#include <vector>

namespace tessaril {

/// What restoring works with. All outlive it and its tasks.
struct backupRestoreSurroundings {
    FileSystem& files;
    Dispatcher& dispatcher;
    Alerts& alerts;
    StyleStore& store;
    const StyleList& list;
    DatabaseCommands& database;
    std::stop_token stop; ///< for quitting: no further backup is read
};

/// A backup as far as it is known.
struct listedBackup {
    enum class stage { unread, unreadable, known };

    databaseBackup file;
    stage reading = stage::unread;
    backupContents contents = {}; ///< beside the styles of the moment when the list was made
};

/// The backups with what is in them, and the command that merges one in. They are read in the
/// background, the newest first and never two at once, until all are known or this is gone. Main
/// thread only.
class BackupRestore {
public:
    explicit BackupRestore(backupRestoreSurroundings surroundings);
    ~BackupRestore();
    BackupRestore(const BackupRestore&) = delete;
    BackupRestore& operator=(const BackupRestore&) = delete;

    /// Whether the user may restore now; beeps when not.
    bool mayBegin() const;

    /// To be called once.
    /// - listed: called when `backups` has all there are, most of them unread
    /// - read: called when one of them has been read
    void begin(std::function<void()> listed, std::function<void(std::size_t)> read);

    /// Whether it is known which there are.
    bool isListed() const;
    /// The newest first.
    const std::vector<listedBackup>& backups() const;

    /// Whether the backup adds anything and the user may restore now.
    bool canRestore(std::size_t index) const;

    /// Merges the backup in, in the background; beeps when it cannot be restored. Gives whether it
    /// was begun.
    bool restore(std::size_t index);

private:
    struct Reading;

    bool isFree() const;

    backupRestoreSurroundings machine;
    std::shared_ptr<Reading> reading;
};

} // namespace tessaril
