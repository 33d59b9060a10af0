#pragma once

#include "platform/password_source.h"
#include "records/sql_connection.h"
#include "web/record_address.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <variant>

struct pg_conn;

namespace tessaril {

/// A connection to a PostgreSQL server by libpq, none of whose calls blocks but the look-up of the
/// host's name. Its time limits and the user's rights are set up; the tables need not be there.
class PostgresConnection : public SqlConnection {
public:
    /// - source: asked only when the server wants a password and libpq's password file has none
    ///   that is right, for the account of the address (see `accountOf`); may be null. Threads that
    ///   were left behind call it too: what it needs it must own
    /// - statementTime: after which the server gives a statement up by itself
    static std::variant<std::unique_ptr<PostgresConnection>, recordError>
    open(const recordAddress& address, const PasswordSource& source, const TimeLimit& limit,
         std::chrono::milliseconds statementTime);

    /// Lets threads that were left behind still use their connections while the program ends. To be
    /// called before anything else uses OpenSSL.
    static void outliveProgram();

    const sqlDialect& dialect() const override;
    sqlResult execute(const TimeLimit& limit, const std::string& statement,
                      std::span<const sqlParameter> parameters = {}) override;
    bool isToBeKept() const override;

    /// Begins to receive what the connections of the same user announce.
    std::optional<recordError> listen(const TimeLimit& limit);
    /// The next announcement; an error when the connection is lost or the limit over.
    std::variant<std::string, recordError> nextAnnouncement(const TimeLimit& limit);

private:
    using Handle = std::unique_ptr<pg_conn, void (*)(pg_conn*)>;
    struct opening;

    explicit PostgresConnection(Handle connected) : connection(std::move(connected)) {}

    static opening connect(const recordAddress& address, const std::string& password,
                           const TimeLimit& limit);
    std::optional<recordError> send(const TimeLimit& limit);
    std::optional<recordError> receive(const TimeLimit& limit);
    recordError lost() const;

    Handle connection;
};

} // namespace tessaril
