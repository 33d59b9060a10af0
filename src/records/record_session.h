#pragma once

#include "records/postgres_connection.h"
#include "records/record_tables.h"
#include "web/record_address.h"

#include <chrono>
#include <memory>
#include <span>
#include <variant>

namespace tessaril {

/// Carries out operations at one address, over a connection that is made when it is needed and
/// again when it was lost. To be used by one thread at a time.
class RecordSession {
public:
    /// - statementTime: after which a server gives a statement up by itself
    RecordSession(recordAddress address, PasswordSource passwords,
                  std::chrono::milliseconds statementTime);

    recordFetch fetch(std::span<const recordID> ids, const TimeLimit& limit);
    recordSave save(const recordsToSave& save, const TimeLimit& limit);
    std::variant<recordTags, recordError> fetchTags(const TimeLimit& limit);

private:
    std::optional<recordError> connect(const TimeLimit& limit);
    template <typename Operation>
    std::optional<recordError> carryOut(const TimeLimit& limit, Operation operation);

    recordAddress address;
    PasswordSource passwords;
    std::chrono::milliseconds statementTime;
    std::unique_ptr<SqlConnection> connection; ///< with its tables; null while there is none
};

} // namespace tessaril
