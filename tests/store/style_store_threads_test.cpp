#include "support/store_machine.h"
#include "support/test.h"
#include "support/thread_dispatcher.h"

#include <thread>

namespace tessaril {
namespace {

void onFourThreads(StoreMachine<ThreadDispatcher>& machine, const std::function<void()>& work) {
    std::vector<std::thread> threads;
    for (int count = 0; count < 4; ++count)
        threads.emplace_back(work);
    for (std::thread& thread : threads)
        thread.join();
    machine.dispatcher.join();
}

TEST(StyleStoreThreads, commandsImportsAndSavesFromManyThreadsLoseNothing) {
    StoreMachine<ThreadDispatcher> machine;
    StyleStore& store = machine.store;
    machine.compile = [](styleContainer& style) { style.version += "c"; };
    machine.putDocument({namedStyle("first", 1)});
    machine.putDocument({namedStyle("in 1", 1), namedStyle("in 2", 1)}, "/in.sdb");

    constexpr int perThread = 20;
    onFourThreads(machine, [&] {
        for (int i = 0; i < perThread; ++i) {
            store.appendStyle(namedStyle("more", 5)); // everyone draws the same identifier
            store.applyStyleProperties(1, namedStyle("", 0));
            store.saveDatabase();
            store.styleRows();
        }
        store.importDatabase("/in.sdb");
    });
    store.finishSaves();

    const liveDatabase live = store.snapshot();
    EXPECT_EQ(live.styles.size(), 1U + 4 * perThread + 2) << "the import adds its styles once";
    EXPECT_EQ(machine.identifiers().size(), live.styles.size());
    EXPECT_EQ(store.styleWithID(1)->version.size(), 4U * perThread) << "no change is overwritten";

    EXPECT_EQ(machine.written().randomHash, live.randomHash) << "the last state reached the file";
    EXPECT_EQ(machine.written().styles.size(), live.styles.size());
    EXPECT_EQ(machine.written("wormhole/styleDBUpdated"), machine.written());
    EXPECT_TRUE(machine.alerts.alerts.empty());
}

TEST(StyleStoreThreads, backupsOfManyThreadsAreWholeAndNoneIsWrittenTwice) {
    StoreMachine<ThreadDispatcher> machine;
    StyleStore& store = machine.store;
    machine.putDocument({namedStyle("first", 1)});
    onFourThreads(machine, [&] {
        for (int i = 0; i < 10; ++i) {
            store.appendStyle(namedStyle("more", 1));
            store.saveDatabase();
            EXPECT_TRUE(store.keepDocument());
        }
    });

    std::set<std::int64_t> hashes;
    const auto backups = store.databaseBackups().list();
    for (const databaseBackup& each : backups)
        hashes.insert(machine.written(each.file).randomHash);
    EXPECT_EQ(hashes.size(), backups.size());
    EXPECT_EQ(machine.written(backups.front().file), machine.written());
    EXPECT_LE(backups.size(), 11U);
}

} // namespace
} // namespace tessaril
