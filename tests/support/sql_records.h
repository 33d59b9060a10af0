#pragma once

#include "records/sql_record_store.h"
#include "support/postgres_server.h"
#include "support/temporary_folder.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

// Both engines as servers of the suite of record stores.
namespace tessaril::testing {

/// Long enough for a busy machine: a test that waits for the end of it sets its own.
inline constexpr std::chrono::milliseconds generousTime = std::chrono::minutes(1);

/// The tests' server knows its users by their names as passwords.
inline passwordAnswer passwordOf(const std::string& account, std::chrono::milliseconds) {
    const std::size_t begin = account.find("//") + 2;
    return {.password = account.substr(begin, account.find('@') - begin)};
}

inline std::unique_ptr<SqlRecordStore>
sqlClient(std::string address, std::chrono::milliseconds operationTime = generousTime,
          PasswordSource passwords = passwordOf) {
    return std::make_unique<SqlRecordStore>(
        sqlRecordStoreParts{.address = [address = std::move(address)] { return address; },
                            .passwords = std::move(passwords),
                            .operationTime = operationTime});
}

struct SqliteRecords {
    SqliteRecords() { std::filesystem::create_directory(folder / "records"); }

    std::string address() const { return (folder / "records/styles.db").string(); }
    std::unique_ptr<RecordStore> client() { return sqlClient(address()); }
    void deliver() {}
    void stop() { std::filesystem::rename(folder / "records", folder / "away"); }
    void start() { std::filesystem::rename(folder / "away", folder / "records"); }

    TemporaryFolder folder;
};

/// A user and a database of its own on the program's server.
struct PostgresRecords {
    std::string address() const { return server.address(user, database); }
    std::unique_ptr<RecordStore> client() { return sqlClient(address()); }
    std::string execute(const std::string& statements) {
        return server.execute(statements, database);
    }
    void deliver() {}
    void stop() { server.kill(); }
    void start() { server.start(); }

    /// Holds up whatever touches the records, until the server ends.
    void holdUpRecords() {
        std::string begun = execute("SELECT pg_postmaster_start_time()");
        begun.pop_back();
        execute("CREATE OR REPLACE FUNCTION tessaril.hold() RETURNS boolean LANGUAGE plpgsql AS $$ "
                "BEGIN IF pg_postmaster_start_time() = '" +
                begun +
                "' THEN "
                "PERFORM pg_sleep(3600); END IF; RETURN true; END $$;"
                "DROP POLICY IF EXISTS hold ON tessaril.records;"
                "CREATE POLICY hold ON tessaril.records AS RESTRICTIVE USING (tessaril.hold())");
    }
    void waitUntilHeldUp() {
        while (execute("SELECT 1 FROM pg_stat_activity WHERE wait_event = 'PgSleep' AND "
                       "datname = current_database()")
                   .empty()) {
        }
    }

    PostgresServer& server = PostgresServer::shared();
    std::string user = server.addUser();
    std::string database = server.addDatabase(user);
};

} // namespace tessaril::testing
