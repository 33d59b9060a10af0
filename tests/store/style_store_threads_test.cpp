#include "model/database_json.h"
#include "store/style_store.h"
#include "support/memory_files.h"
#include "support/recording_alerts.h"
#include "support/sample_styles.h"
#include "support/thread_dispatcher.h"

#include <gtest/gtest.h>

#include <set>
#include <thread>

namespace tessaril {

using namespace testing;

TEST(StyleStoreThreads, commandsImportsAndSavesFromManyThreadsLoseNothing) {
    MemoryFiles files;
    MemoryChannel channel(files);
    RecordingAlerts alerts;
    ThreadDispatcher dispatcher;
    NotificationCenter center;
    MemoryPreferences stored;
    Preferences preferences(stored);
    files.contents["/c/styledb.sdb"] = *encodeDatabase({.styles = {namedStyle("first", 1)}});
    files.contents["/in.sdb"] =
        *encodeDatabase({.styles = {namedStyle("in 1", 1), namedStyle("in 2", 1)}});

    StyleStore store({.files = files,
                      .channel = channel,
                      .alerts = alerts,
                      .dispatcher = dispatcher,
                      .center = center,
                      .preferences = preferences,
                      .compileStyle = [](styleContainer& style) { style.version += "c"; }},
                     "/c");

    constexpr int perThread = 20;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < perThread; ++i) {
                const std::string name = std::to_string(t) + "/" + std::to_string(i);
                store.appendStyle(namedStyle(name, 5)); // everyone draws the same identifier
                store.applyStyleProperties(1, namedStyle("", 0));
                store.saveDatabase();
                store.styleRows();
            }
            store.importDatabase("/in.sdb");
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    dispatcher.join();
    store.finishSaves();

    const liveDatabase live = store.snapshot();
    std::set<std::int64_t> ids;
    for (const auto& style : live.styles)
        ids.insert(style->uniqueID);
    EXPECT_EQ(live.styles.size(), 1U + 4 * perThread + 2) << "the import adds its styles once";
    EXPECT_EQ(ids.size(), live.styles.size());
    EXPECT_EQ(store.styleWithID(1)->version.size(), 4U * perThread) << "no change is overwritten";

    const auto written = decodeDatabase(files.contents.at("/c/styledb.sdb"));
    ASSERT_TRUE(written);
    EXPECT_EQ(written->randomHash, live.randomHash) << "the last state reached the file";
    EXPECT_EQ(files.contents.at("wormhole/styleDBUpdated"), files.contents.at("/c/styledb.sdb"));
    EXPECT_EQ(written->styles.size(), live.styles.size());
    EXPECT_TRUE(alerts.alerts.empty());
}

} // namespace tessaril
