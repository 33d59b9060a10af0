#include "records/record_session.h"

#include "records/sqlite_connection.h"

#include <utility>

namespace tessaril {

RecordSession::RecordSession(recordAddress recordAddress, PasswordSource passwordSource,
                             std::chrono::milliseconds time)
    : address(std::move(recordAddress))
    , passwords(std::move(passwordSource))
    , statementTime(time) {}

std::optional<recordError> RecordSession::connect(const TimeLimit& limit) {
    std::unique_ptr<SqlConnection> made;
    if (address.isFile()) {
        auto opened = openSqlite(address.file);
        if (const auto* error = std::get_if<recordError>(&opened)) return *error;
        made = std::move(std::get<0>(opened));
    } else {
        auto opened = PostgresConnection::open(address, passwords, limit, statementTime);
        if (const auto* error = std::get_if<recordError>(&opened)) return *error;
        made = std::move(std::get<0>(opened));
    }
    if (auto error = prepareTables(*made, limit)) return error;
    connection = std::move(made);
    return std::nullopt;
}

/// A connection of an earlier operation may have been lost since; then the operation is carried out
/// once more on a fresh one, unless it may have been done.
/// - operation: takes the connection and a flag to set once it may have been done; gives its error
template <typename Operation>
std::optional<recordError> RecordSession::carryOut(const TimeLimit& limit, Operation operation) {
    for (;;) {
        const bool isReused = connection != nullptr;
        if (!isReused)
            if (auto error = connect(limit)) return error;
        bool mayBeDone = false;
        const std::optional<recordError> error = operation(*connection, mayBeDone);
        if (!connection->isToBeKept()) connection.reset();
        const bool isLost = error && error->code == recordErrorCode::unreachable;
        if (!isLost || !isReused || mayBeDone) return error;
        connection.reset();
    }
}

recordFetch RecordSession::fetch(std::span<const recordID> ids, const TimeLimit& limit) {
    recordFetch fetched;
    auto error = carryOut(limit, [&](SqlConnection& open, bool&) {
        fetched = fetchRecordsFrom(open, limit, ids);
        return fetched.error;
    });
    fetched.error = std::move(error);
    return fetched;
}

recordSave RecordSession::save(const recordsToSave& save, const TimeLimit& limit) {
    recordSave saved;
    auto error = carryOut(limit, [&](SqlConnection& open, bool& mayBeDone) {
        saved = saveRecordsInto(open, limit, save, mayBeDone);
        return saved.error;
    });
    saved.error = std::move(error);
    return saved;
}

std::variant<recordTags, recordError> RecordSession::fetchTags(const TimeLimit& limit) {
    std::variant<recordTags, recordError> tags;
    auto error = carryOut(limit, [&](SqlConnection& open, bool&) -> std::optional<recordError> {
        tags = fetchTagsFrom(open, limit);
        const auto* failure = std::get_if<recordError>(&tags);
        return failure ? std::optional(*failure) : std::nullopt;
    });
    if (error) tags = std::move(*error);
    return tags;
}

} // namespace tessaril
