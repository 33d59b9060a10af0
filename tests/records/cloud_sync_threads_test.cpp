#include "support/sql_records.h"
#include "support/sync_machine.h"
#include "support/test.h"
#include "support/thread_dispatcher.h"

#include <atomic>
#include <thread>

namespace tessaril {
namespace {

/// A machine with threads of its own, for its tasks and for its record store.
struct ThreadedMachine : SyncMachine<ThreadDispatcher> {
    using SyncMachine::SyncMachine;
    ~ThreadedMachine() { quit(); }

    void quit() {
        store.finishSaves();
        std::atomic<bool> isDone = false;
        std::jthread quitting([&] {
            sync.finish();
            isDone = true;
        });
        while (!isDone)
            letRun();
        dispatcher.join();
        store.finishSaves();
        dispatcher.join();
    }

    void joinCloud() {
        switchOn();
        while (sync.syncInProgress())
            letRun();
    }
    void letRun() {
        dispatcher.runMain();
        std::this_thread::yield();
    }
    std::map<std::int64_t, std::string> codes() {
        std::map<std::int64_t, std::string> found;
        for (const auto& style : store.snapshot().styles)
            found[style->uniqueID] = style->styleData.sections.at(0).code;
        return found;
    }
};

template <typename Server>
struct CloudSyncThreads : ::testing::Test {
    Server server;
};
using BothEngines = ::testing::Types<SqliteRecords, PostgresRecords>;
TYPED_TEST_SUITE(CloudSyncThreads, BothEngines);

TYPED_TEST(CloudSyncThreads, machinesThatChangeAtOnceComeToHoldTheSame) {
    ThreadedMachine first(this->server.client()), second(this->server.client());
    std::map<std::int64_t, std::string> wanted;
    for (std::int64_t id = 1; id <= 8; ++id) {
        first.add(namedStyle("style", id));
        wanted[id] = "last";
    }
    first.joinCloud();
    second.joinCloud();

    const auto editFrom = [](ThreadedMachine& machine, std::int64_t firstID) {
        return std::jthread([&machine, firstID] {
            for (int i = 0; i < 40; ++i)
                machine.edit(firstID + i % 2, i < 38 ? std::to_string(i) : "last");
        });
    };
    {
        const std::array editors{editFrom(first, 1), editFrom(first, 3), editFrom(second, 5),
                                 editFrom(second, 7)};
        // Nothing of this may hold up or upset the others.
        for (int i = 0; i < 20; ++i) {
            first.sync.begin();
            first.sync.workOffline();
            second.sync.uploadPreferences();
            second.recoveryList.recover({0});
            first.sync.retry();
            first.letRun();
            second.letRun();
        }
    }
    // Whoever was overtaken sends what it holds with its next save.
    const auto areSame = [&] { return first.codes() == wanted && second.codes() == wanted; };
    for (ThreadedMachine* saver = &first; !areSame(); saver = saver == &first ? &second : &first) {
        saver->store.saveDatabase();
        for (int patience = 10'000; patience > 0 && !areSame(); --patience) {
            first.letRun();
            second.letRun();
        }
    }
    EXPECT_TRUE(first.recoveryList.isEmpty() && second.recoveryList.isEmpty());
    EXPECT_TRUE(first.alerts.alerts.empty() && second.alerts.alerts.empty());
}

TYPED_TEST(CloudSyncThreads, whatIsSavedLastBeforeQuittingIsSent) {
    ThreadedMachine quitting(this->server.client());
    quitting.add(namedStyle("style", 1));
    quitting.joinCloud();
    for (int i = 0; i < 10; ++i)
        quitting.edit(1, std::to_string(i)); // most of them wait behind an upload
    quitting.quit();
    ThreadedMachine later(this->server.client());
    later.joinCloud();
    EXPECT_EQ(later.codes().at(1), "9");
}

} // namespace
} // namespace tessaril
