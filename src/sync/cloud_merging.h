#pragma once

#include "events/notification_center.h"
#include "platform/alerts.h"
#include "platform/file_system.h"
#include "platform/record_store.h"
#include "preferences/preferences.h"
#include "store/open_styles.h"
#include "store/style_store.h"
#include "sync/database_merge.h"
#include "sync/recovery_list.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tessaril {

/// All outlive it.
struct cloudMergingSurroundings {
    StyleStore& store;
    FileSystem& files;
    Preferences& preferences;
    NotificationCenter& center;
    Alerts& alerts;
    const OpenStyles& openStyles;
    RecoveryList& recoveryList;
    std::filesystem::path container; ///< for what cannot be read
};

enum class cloudMergeOutcome {
    changed,   ///< the live database is another one now, and written
    unwritten, ///< the same, but its file could not be written
    unchanged, ///< both held the same, and so does the file
    failed     ///< nothing was done; the log says why
};

/// Reads the database that came from the cloud and lets it become the live one, with all that has
/// to be told of it. On any thread but the main one; one call at a time.
class CloudMerging {
public:
    explicit CloudMerging(cloudMergingSurroundings surroundings);

    /// The database in the record's file. Where that cannot be read, which holds for a record
    /// without one too: nothing, a log line and an alert.
    /// - isQuiet: no second alert for the same record
    std::optional<liveDatabase> decodeCloudDatabase(const cloudRecord& record, bool isQuiet);

    /// Keeps a file that could not be read as `styledb-cloud-unreadable-<date>.sdb` in the
    /// container, as a later upload replaces it in the cloud. Gives whether nothing can get lost.
    bool keepUnreadable(const cloudRecord& record);

    /// The merge of a first fetch; saves with upload.
    /// - isFirst: sync has just been switched on
    cloudMergeOutcome mergeFirstFetch(const liveDatabase& cloud, bool isFirst);

    /// The merge after another machine has saved; saves without upload.
    cloudMergeOutcome mergeRemoteChange(const liveDatabase& cloud);

private:
    bool isKeptAlready(const std::string& bytes) const;
    bool keepsDocument();
    void tellOfChanges(const std::vector<std::int64_t>& changed, bool tellsOfRemoved);

    cloudMergingSurroundings machine;
    std::string keptTag;    ///< of the record that `keepUnreadable` kept last
    std::string alertedTag; ///< of the record that the user was told of last
};

} // namespace tessaril
