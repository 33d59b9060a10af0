#include "records/postgres_connection.h"

#include "model/ascii.h"
#include "model/text.h"

#include <libpq-fe.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/crypto.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string_view>
#include <utility>
#include <vector>

namespace tessaril {

namespace {

// A channel for each user, so that nobody is woken by the saves of others.
constexpr std::string_view channel = "'tessaril_' || md5(current_user::text)";

// An administrator may have made the schema for a user who may make none.
constexpr std::array<std::string_view, 1> beforeTablesOfPostgres{
    "DO $$ BEGIN IF NOT EXISTS (SELECT FROM pg_namespace WHERE nspname = 'tessaril') THEN"
    " CREATE SCHEMA tessaril; END IF; END $$"};

constexpr std::array<std::string_view, 6> afterTablesOfPostgres{
    "ALTER TABLE records ENABLE ROW LEVEL SECURITY",
    "ALTER TABLE records FORCE ROW LEVEL SECURITY",
    "CREATE POLICY own_records ON records USING (owner = current_user::text)"
    " WITH CHECK (owner = current_user::text)",
    "GRANT SELECT, INSERT, UPDATE, DELETE ON records TO PUBLIC",
    "GRANT SELECT ON schema_version TO PUBLIC",
    "GRANT USAGE ON SCHEMA tessaril TO PUBLIC"};

const std::string announceOfPostgres = "SELECT pg_notify(" + std::string(channel) + ", $1)::text";

const sqlDialect dialectOfPostgres{
    .begin = "BEGIN",
    .bytesType = "bytea",
    .owner = "current_user::text",
    // The number is any that nobody else uses.
    .lockTables = "SELECT CAST(pg_advisory_xact_lock(7228465910334187) AS text)",
    // Not by to_regclass(), which within a transaction may not see yet what another just made.
    .findTables = "SELECT 'found' FROM pg_tables WHERE schemaname = 'tessaril'"
                  " AND tablename = 'schema_version'",
    .beforeTables = beforeTablesOfPostgres,
    .afterTables = afterTablesOfPostgres,
    .announce = announceOfPostgres};

using Result = std::unique_ptr<PGresult, decltype(&PQclear)>;

/// By the error codes of PostgreSQL's documentation, appendix A.
recordErrorCode codeOf(std::string_view sqlState) {
    if (sqlState.starts_with("28")) return recordErrorCode::notAuthenticated;
    if (sqlState == "57014" || sqlState == "55P03") return recordErrorCode::timedOut;
    // Lost, shutting down, starting, crashed, too many connections, idle for too long.
    if (sqlState.starts_with("08") || sqlState.starts_with("57P") || sqlState == "53300" ||
        sqlState == "25P03")
        return recordErrorCode::unreachable;
    return recordErrorCode::failed;
}

recordErrorCode codeOfRefusedLogin(std::string_view sqlState) {
    constexpr std::string_view mayNotConnect = "42501"; // to this database
    if (sqlState.empty()) return recordErrorCode::unreachable;
    return sqlState == mayNotConnect ? recordErrorCode::notAuthenticated : codeOf(sqlState);
}

recordError timedOut() {
    return {recordErrorCode::timedOut, "The record store did not answer in time."};
}

/// The last code in a message that libpq wrote verbosely: "FATAL:  28P01: ...", where the first
/// word depends on the server's language. There is no other way to learn why a login was refused.
std::string_view sqlStateIn(std::string_view message) {
    constexpr std::string_view before = ":  ";
    constexpr std::size_t length = 5;
    std::string_view state;
    for (std::size_t at = message.find(before); at != std::string_view::npos;
         at = message.find(before, at + 1)) {
        const std::string_view code = message.substr(at + before.size(), length);
        const std::string_view behind = message.substr(at + before.size() + code.size());
        if (code.size() == length && behind.starts_with(": ") &&
            std::ranges::all_of(code,
                                [](char c) { return isASCIIDigit(c) || (c >= 'A' && c <= 'Z'); }))
            state = code;
    }
    return state;
}

/// The bundle of the system's certificate authorities, where distributions have it; empty where
/// there is none.
std::string systemRoots() {
    for (const char* path : {"/etc/ssl/certs/ca-certificates.crt",
                             "/etc/pki/tls/certs/ca-bundle.crt", "/etc/ssl/ca-bundle.pem"}) {
        std::error_code error;
        if (std::filesystem::exists(path, error)) return path;
    }
    return {};
}

bool hasRootsOfItsOwn() {
    const char* home = std::getenv("HOME");
    std::error_code error;
    return home &&
           std::filesystem::exists(std::filesystem::path(home) / ".postgresql/root.crt", error);
}

using ConnectionParameters = std::map<std::string, std::string, std::less<>>;

ConnectionParameters connectionParameters(const recordAddress& address) {
    ConnectionParameters parameters = address.server;
    parameters.try_emplace("application_name", "Tessaril");
    // All styles go that way: over a network nobody else may read them or pretend to be the server.
    if (!isOnThisMachine(address)) parameters.try_emplace("sslmode", "verify-full");
    // libpq knows no roots but the user's own; like a browser, trust the system's besides.
    if (const auto mode = parameters.find("sslmode");
        mode != parameters.end() && mode->second.starts_with("verify") && !hasRootsOfItsOwn())
        if (const std::string roots = systemRoots(); !roots.empty())
            parameters.try_emplace("sslrootcert", roots);
    parameters["client_encoding"] = "UTF8";
    parameters["gssencmode"] = "disable"; // asks servers of its own, without a time limit
    // A peer that is gone is noticed by a connection that only listens, too.
    parameters["keepalives"] = "1";
    parameters["keepalives_idle"] = "30";
    parameters["keepalives_interval"] = "10";
    parameters["keepalives_count"] = "3";
    // Of a host's several addresses the first may swallow what is sent to it.
    parameters["tcp_user_timeout"] = "3000"; // milliseconds
    return parameters;
}

/// A connection that has been made may need longer than one that is being made: what it has sent
/// may be held up on the way for a while.
void bearHoldUps(PGconn* connection) {
    const unsigned milliseconds = 10'000;
    // It fails on a socket of this machine, which needs none.
    ::setsockopt(PQsocket(connection), IPPROTO_TCP, TCP_USER_TIMEOUT, &milliseconds,
                 sizeof milliseconds);
}

} // namespace

/// A connection, or why there is none.
struct PostgresConnection::opening {
    Handle connection;
    std::optional<recordError> error;
    bool wantsPassword = false;
};

PostgresConnection::opening PostgresConnection::connect(const recordAddress& address,
                                                        const std::string& password,
                                                        const TimeLimit& limit) {
    const ConnectionParameters parameters = connectionParameters(address);
    std::vector<const char*> names;
    std::vector<const char*> values;
    for (const auto& [name, value] : parameters) {
        names.push_back(name.c_str());
        values.push_back(value.c_str());
    }
    if (!password.empty()) {
        names.push_back("password");
        values.push_back(password.c_str());
    }
    names.push_back(nullptr);
    values.push_back(nullptr);

    opening result{.connection =
                       Handle(PQconnectStartParams(names.data(), values.data(), 0), &PQfinish),
                   .error = {}};
    PGconn* connection = result.connection.get();
    PQsetErrorVerbosity(connection, PQERRORS_VERBOSE);
    PQsetNoticeProcessor(
        connection, [](void*, const char*) {}, nullptr);
    PostgresPollingStatusType state =
        PQstatus(connection) == CONNECTION_BAD ? PGRES_POLLING_FAILED : PGRES_POLLING_WRITING;
    while (state != PGRES_POLLING_OK && state != PGRES_POLLING_FAILED) {
        const short events = state == PGRES_POLLING_READING ? POLLIN : POLLOUT;
        if (limit.waitFor(PQsocket(connection), events) == 0) {
            result.error = timedOut();
            return result;
        }
        state = PQconnectPoll(connection);
    }
    if (state == PGRES_POLLING_OK) {
        PQsetErrorVerbosity(connection, PQERRORS_DEFAULT);
        PQsetnonblocking(connection, 1);
        bearHoldUps(connection);
        return result;
    }

    const std::string_view message = PQerrorMessage(connection);
    const std::string_view sqlState = sqlStateIn(message);
    const bool lacksPassword = PQconnectionNeedsPassword(connection) != 0;
    result.wantsPassword = lacksPassword || sqlState == "28P01";
    result.error = recordError{
        lacksPassword ? recordErrorCode::notAuthenticated : codeOfRefusedLogin(sqlState),
        "PostgreSQL: " + forLog(trimmed(message.substr(0, message.find("\nLOCATION:"))))};
    return result;
}

void PostgresConnection::outliveProgram() {
    // Else exit() takes from under them what they free at the same time.
    OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr);
}

std::variant<std::unique_ptr<PostgresConnection>, recordError>
PostgresConnection::open(const recordAddress& address, const PasswordSource& source,
                         const TimeLimit& limit, std::chrono::milliseconds statementTime) {
    opening opened = connect(address, "", limit);
    if (opened.wantsPassword && source) {
        // Half of what is left, so that the answer can still be used.
        const auto [password, isUnknown] = source(accountOf(address), limit.left() / 2);
        // Nobody was refused: the user may be about to unlock the keychain.
        if (isUnknown)
            return recordError{recordErrorCode::timedOut,
                               "The keychain did not give the password in time."};
        if (password && !password->empty()) opened = connect(address, *password, limit);
    }
    if (opened.error) return *opened.error;

    std::unique_ptr<PostgresConnection> connection(
        new PostgresConnection(std::move(opened.connection)));
    const std::string time = std::to_string(statementTime.count());
    const std::array parameters{sqlText(time)};
    // What an administrator may have set otherwise for the user must hold here.
    const sqlResult set =
        connection->execute(limit,
                            "SELECT set_config('search_path', 'tessaril', false),"
                            " set_config('statement_timeout', $1, false),"
                            " set_config('idle_in_transaction_session_timeout', $1, false),"
                            " set_config('default_transaction_isolation', 'read committed', false)",
                            parameters);
    if (set.error) return *set.error;
    return connection;
}

const sqlDialect& PostgresConnection::dialect() const {
    return dialectOfPostgres;
}

recordError PostgresConnection::lost() const {
    return {recordErrorCode::unreachable,
            "PostgreSQL: " + forLog(trimmed(PQerrorMessage(connection.get())))};
}

/// A long statement is sent while what the server says meanwhile is read, or both could wait for
/// each other.
std::optional<recordError> PostgresConnection::send(const TimeLimit& limit) {
    PGconn* handle = connection.get();
    for (;;) {
        const int flushed = PQflush(handle);
        if (flushed == 0) return std::nullopt;
        if (flushed < 0) return lost();
        const short ready = limit.waitFor(PQsocket(handle), POLLIN | POLLOUT);
        if (ready == 0) return timedOut();
        if ((ready & POLLIN) != 0 && PQconsumeInput(handle) == 0) return lost();
    }
}

std::optional<recordError> PostgresConnection::receive(const TimeLimit& limit) {
    PGconn* handle = connection.get();
    while (PQisBusy(handle) != 0) {
        if (limit.waitFor(PQsocket(handle), POLLIN) == 0) return timedOut();
        if (PQconsumeInput(handle) == 0) return lost();
    }
    return std::nullopt;
}

sqlResult PostgresConnection::execute(const TimeLimit& limit, const std::string& statement,
                                      std::span<const sqlParameter> parameters) {
    if (limit.isOver()) return {.error = timedOut()};
    std::vector<const char*> values;
    std::vector<int> lengths;
    const std::vector<int> formats(parameters.size(), 1); // as the bytes that they are
    for (const sqlParameter& parameter : parameters) {
        const bool isNull = parameter.is == sqlParameter::kind::null;
        values.push_back(isNull ? nullptr
                                : (parameter.value.empty() ? "" : parameter.value.data()));
        lengths.push_back(static_cast<int>(parameter.value.size()));
    }
    PGconn* handle = connection.get();
    if (PQsendQueryParams(handle, statement.c_str(), static_cast<int>(parameters.size()), nullptr,
                          values.data(), lengths.data(), formats.data(), 1) == 0)
        return {.error = lost()};
    if (auto error = send(limit)) return {.error = std::move(error)};

    sqlResult result;
    for (;;) {
        if (auto error = receive(limit)) return {.error = std::move(error)};
        const Result part(PQgetResult(handle), &PQclear);
        if (!part) break;
        const ExecStatusType status = PQresultStatus(part.get());
        if (status != PGRES_COMMAND_OK && status != PGRES_TUPLES_OK) {
            const char* sqlState = PQresultErrorField(part.get(), PG_DIAG_SQLSTATE);
            // Without a code it is libpq's own: the connection is lost.
            result.error =
                recordError{sqlState ? codeOf(sqlState) : recordErrorCode::unreachable,
                            "PostgreSQL: " + forLog(trimmed(PQresultErrorMessage(part.get())))};
            continue;
        }
        for (int row = 0; row < PQntuples(part.get()); ++row) {
            sqlRow& columns = result.rows.emplace_back();
            for (int column = 0; column < PQnfields(part.get()); ++column) {
                if (PQgetisnull(part.get(), row, column) != 0)
                    columns.emplace_back();
                else
                    columns.emplace_back(
                        std::in_place, PQgetvalue(part.get(), row, column),
                        static_cast<std::size_t>(PQgetlength(part.get(), row, column)));
            }
        }
        result.affected = parseInteger(PQcmdTuples(part.get())).value_or(0);
    }
    return result;
}

bool PostgresConnection::isToBeKept() const {
    return PQstatus(connection.get()) == CONNECTION_OK &&
           PQtransactionStatus(connection.get()) == PQTRANS_IDLE;
}

std::optional<recordError> PostgresConnection::listen(const TimeLimit& limit) {
    const sqlResult named = execute(limit, "SELECT " + std::string(channel));
    if (named.error) return named.error;
    return execute(limit, "LISTEN " + named.rows.at(0).at(0).value()).error;
}

std::variant<std::string, recordError>
PostgresConnection::nextAnnouncement(const TimeLimit& limit) {
    PGconn* handle = connection.get();
    for (;;) {
        using Notification = std::unique_ptr<PGnotify, decltype(&PQfreemem)>;
        if (const Notification received(PQnotifies(handle), &PQfreemem); received)
            return std::string(received->extra);
        if (limit.waitFor(PQsocket(handle), POLLIN) == 0) return timedOut();
        if (PQconsumeInput(handle) == 0) return lost();
    }
}

} // namespace tessaril
