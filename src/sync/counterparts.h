#pragma once

#include "store/live_database.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace tessaril {

/// For each local style the position of the same style in the cloud's list, or none; in time
/// linear in the number of styles. What makes two styles the same:
/// - both of source "usercss", and downloaded from the same address, or with the same update
///   address (blank addresses aside), or with the same `styleData`;
/// - the same number on the style-sharing site;
/// - for a style that is not found by these, the same `styleData`, or both name and identifier.
///
/// `compSections` are left out of `styleData`. The first match counts. But where several styles
/// match each other, as the copies that "Duplicate" makes do, none may take the place of another:
/// a style that matches under its own identifier goes first, and each style of the cloud is the
/// counterpart of one local style at most.
std::vector<std::optional<std::size_t>> findCloudCounterparts(const liveDatabase::styleList& cloud,
                                                              const liveDatabase::styleList& local);

} // namespace tessaril
