#include "icons/icon_cache.h"
#include "support/memory_files.h"
#include "support/test.h"

namespace tessaril {
namespace {

using namespace std::chrono_literals;

struct IconCacheTest : ::testing::Test {
    IconCache cache(iconCacheLimits limits = {}) {
        return {files, "/cache", [this] { return files.now; }, limits};
    }
    void pass(std::chrono::hours time) { files.now += time; }

    MemoryFiles files;
    const siteIcon icon{std::string("\x89PNG\r\n\0x", 8)};
};

TEST_F(IconCacheTest, RemembersIconsAndTheirAbsenceForATime) {
    auto first = cache();
    first.store("https://a.example/", &icon);
    first.store("https://b.example/", nullptr);
    for (int start = 0; start < 2; ++start) {
        auto next = cache();
        EXPECT_EQ(next.find("https://a.example/")->icon->png, icon.png);
        EXPECT_TRUE(next.find("https://a.example/")->isFresh);
        EXPECT_EQ(next.find("https://b.example/")->icon, nullptr);
        EXPECT_EQ(next.find("https://b.example/")->isFresh, start == 0);
        EXPECT_FALSE(next.find("https://c.example/"));
        pass(24h);
    }
    pass(29 * 24h);
    EXPECT_FALSE(cache().find("https://a.example/")->isFresh);
    EXPECT_TRUE(cache().find("https://a.example/")->icon) << "kept until there is a better one";
    files.now = MemoryFiles::moment(-1h);
    EXPECT_FALSE(cache().find("https://a.example/")->isFresh) << "from the future";
}

TEST_F(IconCacheTest, TakesNothingFromADamagedOrForeignFileAndReplacesIt) {
    cache().store("site", &icon);
    const auto [path, whole] = *files.contents.begin();
    std::string other = whole;
    other.replace(other.find("site"), 4, "etis");
    for (std::size_t size = 0; size < whole.size(); ++size) {
        files.contents[path] = whole.substr(0, size);
        EXPECT_FALSE(cache().find("site")) << size;
    }
    for (const std::string& content : {whole + "x", other, std::string(5000, '\n')}) {
        files.contents[path] = content;
        EXPECT_FALSE(cache().find("site"));
    }
    cache().store("site", &icon);
    EXPECT_TRUE(cache().find("site"));
    files.unreadable.insert(path);
    EXPECT_FALSE(cache().find("site"));

    files.full = true;
    cache().store("late", &icon);
    EXPECT_FALSE(cache().find("late"));
}

TEST_F(IconCacheTest, LetsTheOldestGoAtItsLimitsAndNothingThatIsNotItsOwn) {
    files.contents["/cache/note.txt"] = std::string(1000, 'x');
    auto full = cache({.count = 20});
    for (int i = 0; i < 30; ++i) {
        full.store(std::to_string(i), &icon);
        pass(1h);
    }
    EXPECT_LE(files.contents.size(), 21U);
    EXPECT_FALSE(full.find("0"));
    EXPECT_TRUE(full.find("29"));

    const std::uintmax_t each = files.contents.begin()->second.size();
    auto small = cache({.size = 10 * each});
    EXPECT_TRUE(small.find("29"));
    EXPECT_LE(files.contents.size(), 11U) << "also what an earlier start has left";
    EXPECT_TRUE(files.contents.contains("/cache/note.txt"));
}

} // namespace
} // namespace tessaril
