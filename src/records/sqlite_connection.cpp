#include "records/sqlite_connection.h"

#include "model/text.h"

#include <sqlite3.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <utility>

namespace tessaril {

namespace {

using Database = std::unique_ptr<sqlite3, decltype(&sqlite3_close)>;
using Statement = std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)>;

const sqlDialect dialectOfSqlite{
    // It is known at once whether another process is writing.
    .begin = "BEGIN IMMEDIATE",
    .bytesType = "blob",
    .owner = "'local'",
    .lockTables = {},
    // Another program's file is left alone.
    .findTables = "SELECT CASE WHEN EXISTS (SELECT * FROM sqlite_master WHERE name = "
                  "'schema_version') THEN 'found' ELSE '' END FROM sqlite_master LIMIT 1",
    .beforeTables = {},
    .afterTables = {},
    .announce = {}};

recordErrorCode codeOf(int code) {
    switch (code & 0xFF) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return recordErrorCode::timedOut;
    case SQLITE_IOERR:
        return recordErrorCode::unreachable;
    default:
        return recordErrorCode::failed;
    }
}

class SqliteConnection : public SqlConnection {
public:
    explicit SqliteConnection(Database opened) : database(std::move(opened)) {}

    const sqlDialect& dialect() const override { return dialectOfSqlite; }

    sqlResult execute(const TimeLimit& limit, const std::string& text,
                      std::span<const sqlParameter> parameters) override {
        if (limit.isOver())
            return {.error = recordError{recordErrorCode::timedOut, "no time was left"}};
        sqlite3_busy_timeout(database.get(), static_cast<int>(limit.left().count()));
        sqlite3_stmt* prepared = nullptr;
        if (sqlite3_prepare_v2(database.get(), text.c_str(), -1, &prepared, nullptr) != SQLITE_OK)
            return {.error = lastError()};
        const Statement statement(prepared, &sqlite3_finalize);
        for (std::size_t i = 0; i < parameters.size(); ++i)
            if (!bind(prepared, "$" + std::to_string(i + 1), parameters[i]))
                return {.error = lastError()};

        sqlResult result;
        int step = sqlite3_step(prepared);
        for (; step == SQLITE_ROW; step = sqlite3_step(prepared))
            result.rows.push_back(rowOf(prepared));
        if (step != SQLITE_DONE) return {.error = lastError()};
        result.affected = sqlite3_changes64(database.get());
        return result;
    }

    bool isToBeKept() const override { return false; }

private:
    static bool bind(sqlite3_stmt* statement, const std::string& name,
                     const sqlParameter& parameter) {
        const int index = sqlite3_bind_parameter_index(statement, name.c_str());
        const auto& [kind, value] = parameter;
        switch (kind) {
        case sqlParameter::kind::text:
            return sqlite3_bind_text64(statement, index, value.data(), value.size(), SQLITE_STATIC,
                                       SQLITE_UTF8) == SQLITE_OK;
        case sqlParameter::kind::bytes:
            // No bytes at all are bytes too, though their address may be null.
            return sqlite3_bind_blob64(statement, index, value.empty() ? "" : value.data(),
                                       value.size(), SQLITE_STATIC) == SQLITE_OK;
        case sqlParameter::kind::null:
            break;
        }
        return sqlite3_bind_null(statement, index) == SQLITE_OK;
    }

    static sqlRow rowOf(sqlite3_stmt* statement) {
        sqlRow row;
        for (int column = 0; column < sqlite3_column_count(statement); ++column) {
            if (sqlite3_column_type(statement, column) == SQLITE_NULL) {
                row.emplace_back();
                continue;
            }
            const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement, column));
            const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
            row.emplace_back(bytes ? std::string(bytes, size) : std::string());
        }
        return row;
    }

    recordError lastError() const {
        return {codeOf(sqlite3_extended_errcode(database.get())),
                "SQLite: " + forLog(sqlite3_errmsg(database.get()))};
    }

    Database database;
};

} // namespace

std::string resolvedPath(const std::string& path) {
    std::error_code error;
    std::filesystem::path resolved(path);
    // A link to a file that is yet to be made counts as none for weakly_canonical().
    for (int links = 0; links < 40 && std::filesystem::is_symlink(resolved, error); ++links)
        resolved = resolved.parent_path() / std::filesystem::read_symlink(resolved, error);
    resolved = std::filesystem::weakly_canonical(resolved, error);
    return error ? path : resolved.string();
}

std::variant<std::unique_ptr<SqlConnection>, recordError> openSqlite(const std::string& wanted) {
    const std::string path = resolvedPath(wanted);
    // Not by open(): closing a second descriptor of a file would drop the locks that SQLite holds
    // on it for other threads.
    if (::mknod(path.c_str(), S_IFREG | S_IRUSR | S_IWUSR, 0) != 0 && errno != EEXIST) {
        const bool hasNoFolder = errno == ENOENT || errno == ENOTDIR;
        return recordError{hasNoFolder ? recordErrorCode::unreachable : recordErrorCode::failed,
                           std::string("The file of the record store cannot be made: ") +
                               std::strerror(errno)};
    }
    sqlite3* opened = nullptr;
    const int code = sqlite3_open_v2(path.c_str(), &opened,
                                     SQLITE_OPEN_READWRITE | SQLITE_OPEN_FULLMUTEX, nullptr);
    Database database(opened, &sqlite3_close);
    if (code != SQLITE_OK)
        return recordError{codeOf(code), std::string("SQLite: ") + sqlite3_errstr(code)};
    sqlite3_extended_result_codes(opened, 1);
    return std::make_unique<SqliteConnection>(std::move(database));
}

} // namespace tessaril
