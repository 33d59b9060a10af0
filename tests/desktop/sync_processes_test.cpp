#include "support/event_loop.h"
#include "support/sql_records.h"
#include "support/syncing_process.h"
#include "support/test.h"

#include <semaphore>

namespace tessaril {
namespace {

template <class Records>
struct SyncProcesses : ::testing::Test {
    SyncingProcess& addMachine() {
        std::string password;
        if constexpr (requires { records.user; }) password = records.user;
        machines.push_back(std::make_unique<SyncingProcess>(records.address(), password));
        return *machines.back();
    }
    /// Machines with one style, each of which has heard of the others' saves: nothing that one of
    /// them does next is overtaken.
    void beginWithOneStyle(int count) {
        addMachine().tell("add 1 One");
        machines.front()->tell("on");
        ASSERT_TRUE(allShow("on: One"));
        for (int i = 1; i < count; ++i) {
            addMachine().tell("on");
            ASSERT_TRUE(allShow("on: One"));
            for (int other = 0; other < i; ++other)
                ASSERT_TRUE(machines[static_cast<std::size_t>(other)]->says("news"));
        }
    }
    [[nodiscard]] bool allShow(const std::string& state) {
        return std::ranges::all_of(machines,
                                   [&](const auto& each) { return each->comesToShow(state); });
    }

    Records records;
    std::vector<std::unique_ptr<SyncingProcess>> machines;
};

using Engines = ::testing::Types<SqliteRecords, PostgresRecords>;
struct EngineName {
    template <class Records>
    static std::string GetName(int) {
        return std::is_same_v<Records, SqliteRecords> ? "Sqlite" : "Postgres";
    }
};
TYPED_TEST_SUITE(SyncProcesses, Engines, EngineName);

TYPED_TEST(SyncProcesses, ThreeMachinesHoldTheSame) {
    this->beginWithOneStyle(2);
    SyncingProcess &a = *this->machines[0], &b = *this->machines[1], &c = this->addMachine();
    c.tell("add 3 Three");
    c.tell("on");
    ASSERT_TRUE(this->allShow("on: One Three"));

    b.tell("edit 3 b{}");
    ASSERT_TRUE(this->allShow("on: One Three=b{}"));
    c.tell("add 4 Four");
    ASSERT_TRUE(this->allShow("on: One Three=b{} Four"));
    a.tell("delete 1");
    ASSERT_TRUE(a.comesToShow("on: Three=b{} Four"));
    for (SyncingProcess* each : {&b, &c})
        ASSERT_TRUE(each->comesToShow("on: Three=b{} Four -One")) << "recoverable there";

    // One that was away learns of it.
    c.kill();
    b.tell("edit 4 late{}");
    ASSERT_TRUE(a.comesToShow("on: Three=b{} Four=late{}"));
    c.start();
    ASSERT_TRUE(c.comesToShow("on: Three=b{} Four=late{}"));
}

TYPED_TEST(SyncProcesses, ThePushClosesTheEditorAndTheLaterEditStays) {
    this->beginWithOneStyle(2);
    SyncingProcess &a = *this->machines[0], &b = *this->machines[1];
    b.tell("open 1");
    a.tell("edit 1 a{}");
    EXPECT_TRUE(b.says("alert Open Styles Changed in iCloud"));
    EXPECT_TRUE(b.says("closed 1"));
    ASSERT_TRUE(this->allShow("on: One=a{}"));

    a.tell("edit 1 early{}");
    ASSERT_TRUE(a.comesToShow("on: One=early{}"));
    b.tell("edit 1 late{}");
    // Whoever was overtaken sends what it holds with its next save.
    ASSERT_TRUE(eventually([&] {
        b.tell("save");
        return a.shows("on: One=late{}");
    }));
    ASSERT_TRUE(b.shows("on: One=late{}"));
}

TYPED_TEST(SyncProcesses, ALostServerLosesNothing) {
    this->beginWithOneStyle(3);
    SyncingProcess &a = *this->machines[0], &b = *this->machines[1];
    a.tell("addLarge 2 Large"); // under way when the server goes
    ASSERT_TRUE(a.comesToShow("on: One Large"));
    this->records.stop();
    a.tell("edit 1 away{}");
    ASSERT_TRUE(a.comesToShow("on: One=away{} Large"));
    b.kill();
    b.start();
    EXPECT_TRUE(b.says("error"));
    b.tell("offline");
    b.tell("add 3 Three");
    EXPECT_TRUE(b.says("added 3"));
    this->records.start();
    b.tell("edit 3 back{}");
    ASSERT_TRUE(eventually([&] { return a.shown().find("Three=back{}") != std::string::npos; }));
    // Where its upload did not arrive, the style counts as one that the others have deleted.
    a.tell("recover");
    a.tell("edit 2 back{}");
    ASSERT_TRUE(this->allShow("on: One=away{} Large=back{} Three=back{}"));
}

TYPED_TEST(SyncProcesses, ADamagedRecordReplacesNothing) {
    this->beginWithOneStyle(3);
    SyncingProcess &a = *this->machines[0], &b = *this->machines[1], &c = *this->machines[2];
    b.tell("edit 1 b{}");
    ASSERT_TRUE(this->allShow("on: One=b{}"));
    const recordID id{"styleDatabase", "styleDatabase"};
    const auto vandal = this->records.client();
    std::binary_semaphore isDone(0);
    vandal->fetchRecords({id}, [&](const recordFetch& fetched) {
        cloudRecord record = fetched.records->at(id);
        record.file = std::make_shared<const std::string>("{\"styles\": [");
        vandal->saveRecord(record, [&](const recordSave& saved) {
            EXPECT_FALSE(saved.error);
            isDone.release();
        });
    });
    isDone.acquire();
    for (const auto& each : this->machines)
        EXPECT_TRUE(each->says("alert Error reading iCloud style database"));
    a.tell("add 2 Two");
    ASSERT_TRUE(a.comesToShow("on: One=b{} Two"));
    ASSERT_TRUE(b.comesToShow("on: One=b{}") && c.comesToShow("on: One=b{}"));
    b.quit();
    b.start();
    EXPECT_TRUE(b.says("error"));
    ASSERT_TRUE(b.comesToShow("on locked: One=b{}"));
    a.tell("reset");
    ASSERT_TRUE(a.comesToShow("on:") && b.comesToShow("on:") && c.comesToShow("on: -One"));
}

using OnPostgres = SyncProcesses<PostgresRecords>;

TEST_F(OnPostgres, AServerKilledInTheMiddleLosesNothing) {
    beginWithOneStyle(3);
    SyncingProcess &a = *machines[0], &b = *machines[1], &c = *machines[2];
    const auto killWhile = [&](auto begin) {
        records.holdUpRecords();
        begin();
        records.waitUntilHeldUp();
        records.stop();
    };

    // Of an upload: it is made up for by the next.
    killWhile([&] { a.tell("edit 1 a{}"); });
    ASSERT_TRUE(b.shows("on: One") && c.shows("on: One"));
    records.start();
    a.tell("add 2 Two");
    ASSERT_TRUE(allShow("on: One=a{} Two"));

    // Of the fetch after a push: told of again when the server is back.
    c.pause();
    b.tell("edit 2 b{}");
    ASSERT_TRUE(a.comesToShow("on: One=a{} Two=b{}"));
    killWhile([&] { c.goOn(); });
    ASSERT_TRUE(c.shows("on: One=a{} Two"));
    records.start();
    ASSERT_TRUE(allShow("on: One=a{} Two=b{}"));

    // Of the first fetch.
    b.kill();
    ASSERT_TRUE(eventually([&] {
        // Again where it was overtaken by what c sends on coming back.
        if (a.shown().find("One") != std::string::npos) a.tell("delete 1");
        return c.shows("on: Two=b{} -One");
    }));
    killWhile([&] { b.start(); });
    EXPECT_TRUE(b.says("error"));
    ASSERT_TRUE(b.shows("on locked: One=a{} Two=b{}"));
    records.start();
    b.tell("retry");
    ASSERT_TRUE(b.comesToShow("on: Two=b{}")); // dropped by date, as deleted before
    ASSERT_TRUE(a.comesToShow("on: Two=b{}") && c.comesToShow("on: Two=b{} -One"));
}

TEST(SyncProcess, AWrongPasswordSwitchesSyncOff) {
    PostgresRecords records;
    SyncingProcess machine(records.address(), "wrong");
    machine.tell("add 1 One");
    machine.tell("on");
    EXPECT_TRUE(machine.says("turned on"));
    ASSERT_TRUE(machine.comesToShow("off: One"));
}

} // namespace
} // namespace tessaril
