#include "store/backup_restore.h"

#include "model/database_json.h"

#include <algorithm>
#include <atomic>
#include <optional>
#include <string_view>
#include <utility>

namespace tessaril {

namespace {

constexpr std::string_view goneTitle = "The backup is not there any more";
constexpr std::string_view goneText = "Nothing was changed. Please choose another one.";

std::optional<backupContents> readBackup(const FileSystem& files, const databaseBackup& backup,
                                         const BackupComparison& comparison) {
    auto bytes = files.read(backup.file);
    auto decoded = bytes ? decodeDatabase(std::move(*bytes)) : std::nullopt;
    if (!decoded) return std::nullopt;
    return comparison.compare(liveDatabaseFrom(std::move(*decoded)).styles);
}

} // namespace

/// What the tasks share; may outlive the object that shows it.
struct BackupRestore::Reading : std::enable_shared_from_this<Reading> {
    explicit Reading(const backupRestoreSurroundings& surroundings) : machine(surroundings) {}

    bool isOver() const { return isAbandoned || machine.stop.stop_requested(); }

    void list() {
        machine.dispatcher.inBackground(taskPriority::utility, [self = shared_from_this()] {
            if (self->isOver()) return;
            auto found = self->machine.store.databaseBackups().list();
            auto today = std::make_shared<BackupComparison>(self->machine.store.snapshot().styles);
            self->machine.dispatcher.onMain([self, found = std::move(found), today] {
                if (self->isOver()) return;
                for (const databaseBackup& file : found)
                    self->backups.push_back({.file = file});
                self->comparison = today;
                self->isListed = true;
                if (self->listed) self->listed();
                self->readNext();
            });
        });
    }

    /// On the main thread, like all that changes what is shown.
    void readNext() {
        if (isOver() || next == backups.size()) return;
        machine.dispatcher.inBackground(
            taskPriority::utility, [self = shared_from_this(), file = backups[next].file] {
                if (self->isOver()) return;
                auto contents = readBackup(self->machine.files, file, *self->comparison);
                self->machine.dispatcher.onMain([self, contents = std::move(contents)]() mutable {
                    self->take(std::move(contents));
                });
            });
    }

    void take(std::optional<backupContents> contents) {
        if (isOver()) return;
        listedBackup& row = backups[next];
        row.reading = contents ? listedBackup::stage::known : listedBackup::stage::unreadable;
        if (contents) row.contents = std::move(*contents);
        const std::size_t index = next++;
        if (read) read(index);
        readNext();
    }

    const backupRestoreSurroundings machine;
    std::atomic<bool> isAbandoned = false;
    std::shared_ptr<const BackupComparison> comparison;
    std::function<void()> listed;
    std::function<void(std::size_t)> read;
    std::vector<listedBackup> backups;
    std::size_t next = 0; ///< the first unread one
    bool isListed = false;
};

BackupRestore::BackupRestore(backupRestoreSurroundings surroundings)
    : machine(std::move(surroundings)), reading(std::make_shared<Reading>(machine)) {}

BackupRestore::~BackupRestore() {
    reading->isAbandoned = true;
}

bool BackupRestore::isFree() const {
    return !machine.list.isLockedForSync() && machine.database.areAvailable();
}

bool BackupRestore::mayBegin() const {
    if (isFree()) return true;
    machine.alerts.beep();
    return false;
}

void BackupRestore::begin(std::function<void()> listed, std::function<void(std::size_t)> read) {
    reading->listed = std::move(listed);
    reading->read = std::move(read);
    reading->list();
}

bool BackupRestore::isListed() const {
    return reading->isListed;
}

const std::vector<listedBackup>& BackupRestore::backups() const {
    return reading->backups;
}

bool BackupRestore::canRestore(std::size_t index) const {
    return index < backups().size() && backups()[index].reading == listedBackup::stage::known &&
           addsStyles(backups()[index].contents) && isFree();
}

bool BackupRestore::restore(std::size_t index) {
    if (!canRestore(index)) {
        machine.alerts.beep();
        return false;
    }
    // Newer ones may have taken its place meanwhile.
    if (!machine.files.exists(backups()[index].file.file)) {
        machine.alerts.showAlert(goneTitle, goneText);
        return false;
    }
    machine.database.restoreFrom(backups()[index].file.file);
    return true;
}

} // namespace tessaril
