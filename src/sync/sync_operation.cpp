#include "sync/sync_operation.h"

#include "model/log.h"

#include <string>

namespace tessaril {

void logFailure(std::string_view what, const std::optional<recordError>& error) {
    if (error) logLine(std::string(what) + ": " + error->text);
}

bool isUncertain(const std::optional<recordError>& error) {
    return error && (error->code == recordErrorCode::unreachable ||
                     error->code == recordErrorCode::timedOut);
}

const cloudRecord* findRecord(const recordFetch& fetched, const recordID& id) {
    if (!fetched.records) return nullptr;
    const auto found = fetched.records->find(id);
    return found == fetched.records->end() ? nullptr : &found->second;
}

} // namespace tessaril
