#pragma once

#include "store/installed_styles.h"
#include "store/live_database.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace tessaril {

/// What has become of a style of a backup.
enum class backupStyleState {
    missing, ///< is gone, and an import of the backup brings it back
    changed, ///< its identifier stands for something else today
    present, ///< is there, be it under another identifier
};

struct backupStyle {
    std::string name;
    backupStyleState state = backupStyleState::present;

    bool operator==(const backupStyle&) const = default;
};

struct backupContents {
    std::vector<backupStyle> styles; ///< in the document's order
    std::size_t missing = 0;         ///< how many of them are
    std::size_t changedAdded = 0;    ///< changed ones that an import adds beside today's
    std::size_t changedKept = 0;     ///< changed ones that an import leaves out
};

/// The styles of backups beside those of today. What an import would do with a style is asked of
/// the import's own rule, so that nothing is announced that does not come.
class BackupComparison {
public:
    explicit BackupComparison(liveDatabase::styleList today);
    BackupComparison(const BackupComparison&) = delete;
    BackupComparison& operator=(const BackupComparison&) = delete;

    backupContents compare(const liveDatabase::styleList& backup) const;

private:
    liveDatabase::styleList today;
    InstalledStyles installed;
    std::unordered_map<std::int64_t, const styleContainer*> byID;
};

/// Whether an import of the backup adds anything.
bool addsStyles(const backupContents& contents);

/// What an import of the backup does, for the user.
std::string restoreSummary(const backupContents& contents);

} // namespace tessaril
