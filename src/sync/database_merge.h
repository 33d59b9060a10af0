#pragma once

#include "store/live_database.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace tessaril {

/// What becomes of a machine's database when it meets the cloud's. Styles that stay as they were
/// here keep their objects.
struct databaseMerge {
    liveDatabase merged;               ///< the cloud's database, changed
    liveDatabase::styleList recovered; ///< removed here, for the list of those to be recovered
    liveDatabase::styleList dropped;   ///< removed here for good
    std::vector<std::int64_t> changed; ///< identifiers of styles that are new or gone here
};

/// What a machine knows of earlier syncs.
struct syncHistory {
    std::optional<date> lastSync; ///< none: never
    bool isFirst = false;         ///< sync has just been switched on: nothing here may get lost
};

/// Whether both hold the same styles in the same order.
bool holdSameStyles(const liveDatabase& a, const liveDatabase& b);

/// The merge of a machine that begins to sync. Of a style on both sides the one that was modified
/// later stays. A style that the cloud lacks is new here, or was deleted elsewhere: the history and
/// the dates of the databases tell. Nothing where `holdSameStyles`.
///
/// No identifier of the result occurs twice unless it does so in the cloud: an added style whose
/// identifier is taken by another one gets a fresh one.
std::optional<databaseMerge> mergeFirstFetch(const liveDatabase& cloud, const liveDatabase& local,
                                             const syncHistory& history);

/// The merge after another machine has saved. Styles are told by their identifiers alone.
databaseMerge mergeRemoteChange(const liveDatabase& cloud, const liveDatabase& local);

} // namespace tessaril
