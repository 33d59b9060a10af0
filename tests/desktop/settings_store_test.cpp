#include "desktop/settings_store.h"
#include "support/captured_log.h"
#include "support/temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <thread>

namespace tessaril {
namespace {

using namespace testing;
using ::testing::HasSubstr;

TEST(SettingsStore, GivesBackWhatAnEarlierProcessStored) {
    const TemporaryFolder folder;
    const std::filesystem::path file = folder / "new" / "settings.ini";
    const std::pair<std::string_view, preferenceValue> values[] = {
        {"yes", true},
        {"no", false},
        {"large", std::numeric_limits<std::int64_t>::min()},
        {"past", std::numeric_limits<double>::lowest()},
        {"fraction", 0.1},
        {"text", std::string("@Invalid(), \"ünïcode\" \\ ; # = %1\n\t漢字 ")},
        {"empty", std::string()},
        {"listLike", std::string("a, b, c")},
    };
    {
        SettingsStore store(file);
        for (const auto& [key, value] : values)
            store.setValue(key, value);
    }
    const SettingsStore store(file);
    for (const auto& [key, value] : values)
        EXPECT_EQ(store.value(key, value), value) << key;
    EXPECT_FALSE(store.value("missing", true));
    EXPECT_FALSE(store.value("text", true));
    EXPECT_FALSE(store.value("fraction", std::int64_t{0}));
}

TEST(SettingsStore, IsWrittenAndReadAsOtherProgramsDo) {
    const TemporaryFolder folder;
    const std::filesystem::path file = folder / "settings.ini";
    SettingsStore store(file);
    store.setValue("InjectIframes", false);
    store.setValue("size", std::int64_t{12});
    EXPECT_THAT(fileContent(file), HasSubstr("[General]\n"));
    EXPECT_THAT(fileContent(file), HasSubstr("InjectIframes=false\n"));
    EXPECT_THAT(fileContent(file), HasSubstr("size=12\n"));

    writeFile(folder / "typed.ini", "[General]\nauthor=Doe, Jane\nflag=1\n");
    const SettingsStore typed(folder / "typed.ini");
    EXPECT_EQ(typed.value("author", std::string()), preferenceValue("Doe, Jane"));
    EXPECT_EQ(typed.value("flag", false), preferenceValue(true));
}

TEST(SettingsStore, SaysWhenAChangeCannotBeWritten) {
    CapturedLog log;
    SettingsStore store("/proc/tessaril/settings.ini");
    store.setValue("flag", true);
    EXPECT_EQ(log.take(), "Error writing preferences.\n");
    EXPECT_EQ(store.value("flag", false), preferenceValue(true));
}

TEST(SettingsStoreThreads, TakesChangesFromAllSides) {
    const TemporaryFolder folder;
    const std::filesystem::path file = folder / "settings.ini";
    {
        SettingsStore store(file);
        std::vector<std::jthread> threads;
        for (int thread = 0; thread < 4; ++thread)
            threads.emplace_back([&, thread] {
                for (std::int64_t step = 0; step < 20; ++step) {
                    store.setValue("key" + std::to_string(thread), step);
                    store.value("key0", std::int64_t{});
                }
            });
    }
    const SettingsStore store(file);
    for (int thread = 0; thread < 4; ++thread)
        EXPECT_EQ(store.value("key" + std::to_string(thread), std::int64_t{}),
                  preferenceValue(std::int64_t{19}));
}

} // namespace
} // namespace tessaril
