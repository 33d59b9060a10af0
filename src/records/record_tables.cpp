#include "records/record_tables.h"

#include "model/text.h"
#include "records/record_fields.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <set>
#include <utility>

namespace tessaril {

namespace {

constexpr std::int64_t ownVersion = 1;

recordError unreadable() {
    return {recordErrorCode::failed, "The record store holds what cannot be read."};
}

std::string placeOf(std::size_t number) {
    return "$" + std::to_string(number);
}

/// Executes one after another until one fails.
std::optional<recordError> executeAll(SqlConnection& connection, const TimeLimit& limit,
                                      std::span<const std::string_view> statements) {
    for (const std::string_view statement : statements)
        if (auto result = connection.execute(limit, std::string(statement)); result.error)
            return std::move(result.error);
    return std::nullopt;
}

/// Ends a transaction whose error is to be told. Where the limit is over, it ends with the
/// connection.
recordError rollBack(SqlConnection& connection, const TimeLimit& limit, recordError error) {
    connection.execute(limit, "ROLLBACK");
    return error;
}

std::variant<bool, recordError> hasTables(SqlConnection& connection, const TimeLimit& limit) {
    const sqlResult found = connection.execute(limit, std::string(connection.dialect().findTables));
    if (found.error) return *found.error;
    if (found.rows.empty()) return false;
    if (found.rows.front().at(0).value_or("").empty())
        return recordError{recordErrorCode::failed,
                           "The record store is a database of another program."};
    return true;
}

std::optional<recordError> makeTablesInTransaction(SqlConnection& connection,
                                                   const TimeLimit& limit) {
    const sqlDialect& dialect = connection.dialect();
    const std::array<std::string, 3> tables{
        "CREATE TABLE schema_version (version integer NOT NULL)",
        "INSERT INTO schema_version (version) VALUES (" + std::to_string(ownVersion) + ")",
        "CREATE TABLE records (owner text NOT NULL, type text NOT NULL, name text NOT NULL,"
        " fields text NOT NULL, file " +
            std::string(dialect.bytesType) +
            ", change_tag text NOT NULL, PRIMARY KEY (owner, type, name))"};
    if (!dialect.lockTables.empty())
        if (auto error = executeAll(connection, limit, std::array{dialect.lockTables}))
            return error;
    // Another client may have been first.
    const auto found = hasTables(connection, limit);
    if (const auto* error = std::get_if<recordError>(&found)) return *error;
    if (!std::get<bool>(found)) {
        if (auto error = executeAll(connection, limit, dialect.beforeTables)) return error;
        for (const std::string& statement : tables)
            if (auto result = connection.execute(limit, statement); result.error)
                return result.error;
        if (auto error = executeAll(connection, limit, dialect.afterTables)) return error;
    }
    return connection.execute(limit, "COMMIT").error;
}

std::optional<recordError> makeTables(SqlConnection& connection, const TimeLimit& limit) {
    auto begun = connection.execute(limit, std::string(connection.dialect().begin));
    if (begun.error) return std::move(begun.error);
    auto error = makeTablesInTransaction(connection, limit);
    if (error) return rollBack(connection, limit, std::move(*error));
    return std::nullopt;
}

std::optional<recordError> checkVersion(SqlConnection& connection, const TimeLimit& limit) {
    const sqlResult version =
        connection.execute(limit, "SELECT CAST(max(version) AS text) FROM schema_version");
    if (version.error) return version.error;
    const auto number = parseInteger(version.rows.at(0).at(0).value_or(""));
    if (!number) return unreadable();
    if (*number > ownVersion)
        return recordError{recordErrorCode::failed, "The record store was set up by a newer version"
                                                    " of Tessaril, which this one cannot use."};
    return std::nullopt;
}

std::optional<cloudRecord> recordFrom(sqlRow& row) {
    std::optional<std::string>& type = row.at(0);
    std::optional<std::string>& name = row.at(1);
    const std::optional<std::string>& fields = row.at(2);
    std::optional<std::string>& file = row.at(3);
    std::optional<std::string>& tag = row.at(4);
    if (!type || !name || !fields || !tag) return std::nullopt;
    auto decoded = decodeRecordFields(*fields);
    if (!decoded) return std::nullopt;
    cloudRecord record{.id = {std::move(*type), std::move(*name)},
                       .fields = std::move(*decoded),
                       .file = nullptr,
                       .changeTag = std::move(*tag)};
    if (file) record.file = std::make_shared<const std::string>(std::move(*file));
    return record;
}

std::optional<recordError> saveOne(SqlConnection& connection, const TimeLimit& limit,
                                   const cloudRecord& record, const std::string& newTag) {
    const auto fields = encodeRecordFields(record.fields);
    if (!fields) return recordError{recordErrorCode::failed, "A record's text is not UTF-8."};
    const sqlParameter file = record.file ? sqlParameter{sqlParameter::kind::bytes, *record.file}
                                          : sqlParameter{sqlParameter::kind::null, {}};
    const std::string owner(connection.dialect().owner);
    std::vector parameters{sqlText(record.id.type), sqlText(record.id.name), sqlText(*fields), file,
                           sqlText(newTag)};
    std::string statement = "INSERT INTO records (owner, type, name, fields, file, change_tag)"
                            " VALUES (" +
                            owner + ", $1, $2, $3, $4, $5) ON CONFLICT DO NOTHING";
    if (!record.changeTag.empty()) {
        // The server's row-level security says the same of the owner, but not to a superuser.
        statement =
            "UPDATE records SET fields = $3, file = $4, change_tag = $5 WHERE owner = " + owner +
            " AND type = $1 AND name = $2 AND change_tag = $6";
        parameters.push_back(sqlText(record.changeTag));
    }
    auto saved = connection.execute(limit, statement, parameters);
    if (!saved.error && saved.affected == 0)
        return recordError{recordErrorCode::changed,
                           "The record " + forLog(record.id.name) + " was changed elsewhere."};
    return std::move(saved.error);
}

std::optional<recordError> announce(SqlConnection& connection, const TimeLimit& limit,
                                    const recordsToSave& save) {
    const std::string statement(connection.dialect().announce);
    if (statement.empty()) return std::nullopt;
    std::set<std::string_view> types;
    for (const cloudRecord& record : save.records)
        types.insert(record.id.type);
    for (const std::string_view type : types) {
        const std::string text = save.sender + ' ' + std::string(type);
        if (auto told = connection.execute(limit, statement, std::array{sqlText(text)}); told.error)
            return std::move(told.error);
    }
    return std::nullopt;
}

std::optional<recordError> saveInTransaction(SqlConnection& connection, const TimeLimit& limit,
                                             const recordsToSave& save) {
    // Another machine may have converted the tables since this connection was made. If it locks the
    // version for that, as it should, it waits for the end of this transaction.
    if (auto error = checkVersion(connection, limit)) return error;
    // In one order for everybody, so that two saves never wait for each other.
    std::vector<std::size_t> order(save.records.size());
    std::iota(order.begin(), order.end(), 0);
    std::ranges::sort(order, {}, [&](std::size_t i) { return save.records[i].id; });
    for (const std::size_t i : order)
        if (auto error = saveOne(connection, limit, save.records[i], save.newTags[i])) return error;
    return announce(connection, limit, save);
}

} // namespace

std::optional<recordError> prepareTables(SqlConnection& connection, const TimeLimit& limit) {
    const auto found = hasTables(connection, limit);
    if (const auto* error = std::get_if<recordError>(&found)) return *error;
    if (!std::get<bool>(found))
        if (auto error = makeTables(connection, limit)) return error;
    return checkVersion(connection, limit);
}

recordFetch fetchRecordsFrom(SqlConnection& connection, const TimeLimit& limit,
                             std::span<const recordID> ids) {
    std::string statement = "SELECT type, name, fields, file, change_tag FROM records"
                            " WHERE owner = " +
                            std::string(connection.dialect().owner) + " AND (1 = 0";
    std::vector<sqlParameter> parameters;
    for (const recordID& id : ids) {
        parameters.push_back(sqlText(id.type));
        statement += " OR (type = " + placeOf(parameters.size());
        parameters.push_back(sqlText(id.name));
        statement += " AND name = " + placeOf(parameters.size()) + ")";
    }
    sqlResult found = connection.execute(limit, statement + ")", parameters);
    if (found.error) return {.records = std::nullopt, .error = std::move(found.error)};
    recordFetch fetch{.records = std::map<recordID, cloudRecord>(), .error = std::nullopt};
    for (sqlRow& row : found.rows) {
        auto record = recordFrom(row);
        if (!record) return {.records = std::nullopt, .error = unreadable()};
        recordID id = record->id;
        fetch.records->emplace(std::move(id), std::move(*record));
    }
    return fetch;
}

recordSave saveRecordsInto(SqlConnection& connection, const TimeLimit& limit,
                           const recordsToSave& save, bool& commitBegan) {
    if (auto begun = connection.execute(limit, std::string(connection.dialect().begin));
        begun.error)
        return {.error = std::move(begun.error), .changeTags = {}};
    if (auto error = saveInTransaction(connection, limit, save))
        return {.error = rollBack(connection, limit, std::move(*error)), .changeTags = {}};
    commitBegan = true;
    if (auto committed = connection.execute(limit, "COMMIT"); committed.error)
        return {.error = rollBack(connection, limit, std::move(*committed.error)),
                .changeTags = {}};
    return {.error = std::nullopt, .changeTags = save.newTags};
}

std::variant<recordTags, recordError> fetchTagsFrom(SqlConnection& connection,
                                                    const TimeLimit& limit) {
    const sqlResult found =
        connection.execute(limit, "SELECT type, name, change_tag FROM records WHERE owner = " +
                                      std::string(connection.dialect().owner));
    if (found.error) return *found.error;
    recordTags tags;
    for (const sqlRow& row : found.rows)
        tags.emplace(recordID{row.at(0).value_or(""), row.at(1).value_or("")},
                     row.at(2).value_or(""));
    return tags;
}

announcement parseAnnouncement(std::string_view text) {
    const std::size_t space = text.find(' ');
    if (space == std::string_view::npos) return {.sender = text, .recordType = {}};
    return {.sender = text.substr(0, space), .recordType = text.substr(space + 1)};
}

} // namespace tessaril
