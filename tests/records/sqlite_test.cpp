#include "support/record_store_suite.h"
#include "support/sql_records.h"

#include <sqlite3.h>
#include <sys/stat.h>

namespace tessaril::testing {
namespace {

class SqliteFile : public RecordStoreSuite<SqliteRecords> {
protected:
    struct Database {
        explicit Database(const std::string& path) { sqlite3_open(path.c_str(), &handle); }
        ~Database() { sqlite3_close(handle); }
        void execute(const char* statement) {
            EXPECT_EQ(sqlite3_exec(handle, statement, nullptr, nullptr, nullptr), SQLITE_OK)
                << sqlite3_errmsg(handle);
        }
        sqlite3* handle = nullptr;
    };
};

TEST_F(SqliteFile, FirstMachinesThatBeginAtOnceShareOneStore) {
    int saved = 0;
    std::string errors;
    for (int i = 0; i < 6; ++i)
        machine().store->saveRecord({.id = {"preferences", std::to_string(i)}},
                                    [&](const recordSave& save) {
                                        arrivals.note([&] {
                                            ++saved;
                                            if (save.error) errors += save.error->text + "\n";
                                        });
                                    });
    EXPECT_TRUE(arrivals.until(server, [&] { return saved == 6; }));
    EXPECT_EQ(errors, "");
}

TEST_F(SqliteFile, IsForItsOwnerAlone) {
    cloudRecord document{.id = database};
    EXPECT_FALSE(save(machine(), document));
    struct stat status {};
    ASSERT_EQ(::stat(server.address().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
}

TEST_F(SqliteFile, LeavesFilesOfOthersAsTheyAre) {
    writeFile(server.address(), "a text of mine, which is no database at all, and rather long");
    const std::string before = fileContent(server.address());
    EXPECT_EQ(codeOf(fetch(machine(), {database}).error), recordErrorCode::failed);
    EXPECT_EQ(fileContent(server.address()), before);
    std::filesystem::remove(server.address());
    Database(server.address()).execute("CREATE TABLE songs (title text)");
    const std::string songs = fileContent(server.address());
    cloudRecord document{.id = database};
    EXPECT_EQ(codeOf(save(machine(), document)), recordErrorCode::failed);
    EXPECT_EQ(fileContent(server.address()), songs);
}

TEST_F(SqliteFile, RefusesWhatANewerVersionMadeAndWhatCannotBeRead) {
    cloudRecord settings{.id = preferences};
    EXPECT_FALSE(save(machine(), settings));
    Database(server.address()).execute("UPDATE records SET fields = '{\"a\": 1.5}'");
    EXPECT_EQ(codeOf(fetch(machine(), {preferences}).error), recordErrorCode::failed);
    Database(server.address()).execute("UPDATE schema_version SET version = 2");
    const recordFetch refused = fetch(machine(), {database});
    EXPECT_EQ(codeOf(refused.error), recordErrorCode::failed);
    EXPECT_THAT(refused.error->text, HasSubstr("newer version"));
}

TEST_F(SqliteFile, WaitsForWhoeverIsWritingButNotForEver) {
    cloudRecord document{.id = database};
    EXPECT_FALSE(save(machine(), document));
    Database other(server.address());
    other.execute("BEGIN IMMEDIATE");
    const auto impatient = sqlClient(server.address(), std::chrono::milliseconds(200));
    const auto refused =
        answerOf<recordSave>([&](auto answer) { impatient->saveRecord(document, answer); });
    EXPECT_EQ(codeOf(refused.error), recordErrorCode::timedOut);
    std::optional<recordSave> saved;
    machine().store->saveRecord(
        document, [&](const recordSave& save) { arrivals.note([&] { saved = save; }); });
    other.execute("COMMIT");
    EXPECT_TRUE(arrivals.until(server, [&] { return saved.has_value(); }));
    EXPECT_FALSE(saved->error);
}

TEST_F(SqliteFile, ALinkLeadsToTheFileWhereverThatLies) {
    const TemporaryFolder elsewhere;
    std::filesystem::create_directory(elsewhere / "links");
    std::filesystem::create_symlink(server.address(), elsewhere / "links/styles.db");
    std::filesystem::create_symlink("links/styles.db", elsewhere / "again.db");
    Machine linked;
    linked.store = sqlClient((elsewhere / "again.db").string());
    linked.store->setChangeHandler([&] { arrivals.note([&] { ++linked.changes; }); });
    EXPECT_FALSE(subscribe(linked, database.type));
    cloudRecord document{.id = database};
    EXPECT_FALSE(save(linked, document)) << "the file was not there yet";
    auto& direct = machine();
    EXPECT_FALSE(subscribe(direct, database.type));
    EXPECT_FALSE(save(direct, document));
    EXPECT_TRUE(hears(linked, 1));
    EXPECT_FALSE(save(linked, document));
    EXPECT_TRUE(hears(direct, 1));

    SqliteRecords other;
    std::filesystem::create_symlink(other.address(), elsewhere / "new.db");
    std::filesystem::rename(elsewhere / "new.db", elsewhere / "again.db");
    EXPECT_TRUE(hears(linked, 2)) << "what the other file holds is news";
    const auto there = other.client();
    EXPECT_FALSE(answerOf<recordSave>([&](auto answer) {
                     there->saveRecord({.id = database}, answer);
                 }).error);
    EXPECT_TRUE(hears(linked, 3));
    there->finish();
    linked.store->finish();
}

TEST_F(SqliteFile, KnowsItsOwnLastSavesAndForgetsTheOlderOnes) {
    ChangeListening listening(
        "me", [] {}, [] {});
    for (int i = 0; i < 1000; ++i)
        listening.addOwnTags(std::array{std::to_string(i)});
    EXPECT_TRUE(listening.isOwnTag("999") && listening.isOwnTag("990"));
    EXPECT_FALSE(listening.isOwnTag("0"));
}

TEST_F(SqliteFile, WhatMayHaveBeenMissedIsToldOnceChangesAreListenedFor) {
    int news = 0;
    ChangeListening listening(
        "me", [&] { ++news; }, [] {});
    listening.addMissed();
    EXPECT_EQ(news, 0);
    listening.tellBegun();
    EXPECT_EQ(news, 1);
    listening.addMissed();
    EXPECT_EQ(news, 2) << "it had begun meanwhile";
}

TEST_F(SqliteFile, AFileThatReplacedAnotherIsTheOneThatCounts) {
    auto& first = machine();
    auto& second = machine();
    cloudRecord document{.id = database, .fields = {{"n", std::int64_t{1}}}};
    EXPECT_FALSE(save(first, document));
    EXPECT_FALSE(subscribe(second, database.type));
    SqliteRecords elsewhere;
    cloudRecord newer{.id = database, .fields = {{"n", std::int64_t{2}}}};
    const auto copy = elsewhere.client();
    EXPECT_FALSE(answerOf<recordSave>([&](auto answer) { copy->saveRecord(newer, answer); }).error);
    copy->finish();
    std::filesystem::rename(elsewhere.address(), server.address());
    EXPECT_TRUE(hears(second, 1));
    EXPECT_EQ(fetch(first, {database}).records.value().at(database).fields, newer.fields);
}

} // namespace
} // namespace tessaril::testing
