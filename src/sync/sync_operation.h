#pragma once

#include "platform/record_store.h"

#include <functional>
#include <optional>
#include <string_view>

namespace tessaril {

/// One of the sync's operations, which run one after another.
struct syncOperation {
    /// Whether sync is on, and has not been off since the operation was asked for: what an earlier
    /// time of sync has fetched must not be merged in a later one, which may be with another
    /// server.
    std::function<bool()> isWanted;
    std::function<void()> end; ///< lets the next one begin; to be called exactly once
};

/// Of failures that the user is not told of.
void logFailure(std::string_view what, const std::optional<recordError>& error);

/// Whether the server may have done what it could not answer any more.
bool isUncertain(const std::optional<recordError>& error);

/// Nothing where the server has none, or could not be asked.
const cloudRecord* findRecord(const recordFetch& fetched, const recordID& id);

} // namespace tessaril
