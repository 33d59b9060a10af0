#include "icons/icon_cache.h"
#include "icons/icon_links.h"
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

const webAddress page = *parseWebAddress("https://site.example/dir/page?q");

std::vector<std::string> addresses(const std::vector<iconLink>& icons) {
    std::vector<std::string> result;
    for (const iconLink& icon : icons)
        result.push_back(icon.address);
    return result;
}

TEST(IconLinks, ReadsTheHeadOfAPageAsBrowsersDo) {
    const pageIcons found = iconsOfPage(
        "<!DOCTYPE html><!-- <link rel=icon href=/comment.png> --><HTML><head>\n"
        "<script>'<link rel=icon href=/script.png>'</script><title><link></title>"
        "<LINK REL='Shortcut ICON' href = plain.ico?a=1&amp;b=&#x32; >"
        "<link rel=\"apple-touch-icon\" sizes=\"\" href=\"//cdn.example/touch.png\"/>"
        "<link rel=icon sizes='16x16 32x32 any' href='/drawn'><link rel=icon href=/a.svg>"
        "<link rel=mask-icon href=/mask.svg><link rel=stylesheet href=/x.css><link rel=icon>"
        "<link rel=icon href='http://site.example/insecure.png'><link rel=icon "
        "href='https://192.168.0.1/router.png'><link rel=manifest href=../m.json>"
        "<body><link rel=icon href=/body.png>",
        page);
    EXPECT_THAT(found.icons,
                ElementsAre(iconLink{"https://site.example/dir/plain.ico?a=1&b=2", 32, false},
                            iconLink{"https://cdn.example/touch.png", 180, false},
                            iconLink{"https://site.example/drawn", 32, true},
                            iconLink{"https://site.example/a.svg", 32, true}));
    EXPECT_EQ(found.manifest, "https://site.example/m.json");

    const auto based = iconsOfPage("<base target=x><base href='https://cdn.example/b/'>"
                                   "<link rel=icon href=i.png>",
                                   page);
    EXPECT_THAT(addresses(based.icons), ElementsAre("https://cdn.example/b/i.png"));
}

TEST(IconLinks, TakesWhateverBytesComeInOnePass) {
    for (const std::string part : {"<", "<a ", "<link rel=icon href='", "<!--", "<script>", "</",
                                   "<link rel=icon href=/i ", "&#x;", "<link =\"", "<a b=\""}) {
        std::string text;
        while (text.size() < (1 << 20))
            text += part;
        EXPECT_LE(iconsOfPage(text, page).icons.size(), 200U) << part;
    }
    using namespace std::string_literals;
    const std::string zeros = "\0\xFF<link\0rel=icon href=\xFF\0>"s;
    EXPECT_THAT(iconsOfPage(zeros, page).icons, IsEmpty());
}

TEST(IconLinks, RefusesOverlongAddressesAlsoThoseThatGrowWhenResolved) {
    const std::string most(longestWebAddress - 100, 'a');
    std::string html = "<base href=/" + std::string(1'000'000, 'a') +
                       "/><link rel=manifest href=/" + most + most + "><link rel=icon href=/" +
                       most + "><link rel=icon href='" + std::string(longestWebAddress / 2, '"') +
                       "'>";
    for (int i = 0; i < 200; ++i)
        html += "<link rel=icon href=i>";
    const pageIcons found = iconsOfPage(html, page);
    EXPECT_EQ(addresses(found.icons).at(0), "https://site.example/" + most);
    EXPECT_EQ(addresses(found.icons).at(1), "https://site.example/dir/i") << "on the page itself";
    EXPECT_EQ(found.manifest, std::nullopt);

    const std::string based = "<base href=/" + most + "/><link rel=icon href=" + most + ">";
    EXPECT_THAT(iconsOfPage(based, page).icons, IsEmpty());
    EXPECT_THAT(iconsOfManifest(R"({"icons":[{"src":")" + most + most + R"("}]})", page),
                IsEmpty());
}

TEST(IconLinks, ReadsAManifestsIcons) {
    const auto icons = iconsOfManifest(
        R"({"name":"x","icons":[{"src":"a.png","sizes":"512x512 72x72"},{"src":"/b.svg"},
            {"src":"m.png","purpose":"monochrome"},{"sizes":"1x1"},7,{"src":{}},
            {"src":"https://cdn.example/c","type":"image/svg+xml","purpose":"any monochrome"}]})",
        page);
    EXPECT_THAT(icons, ElementsAre(iconLink{"https://site.example/dir/a.png", 72, false},
                                   iconLink{"https://site.example/b.svg", 32, true},
                                   iconLink{"https://cdn.example/c", 32, true}));
    for (const std::string none : {"", "[]", "{}", R"({"icons":{}})", R"({"icons":[{"src":"a")"})
        EXPECT_THAT(iconsOfManifest(none, page), IsEmpty()) << none;
    EXPECT_THAT(iconsOfManifest(std::string(100'000, '['), page), IsEmpty());
}

TEST(IconLinks, PrefersTheSmallestThatIsLargeEnough) {
    const auto order = addresses(preferredFirst({{"16", 16},
                                                 {"512", 512},
                                                 {"drawn", 0, true},
                                                 {"47", 47},
                                                 {"48", 48},
                                                 {"180", 180},
                                                 {"48", 48}}));
    EXPECT_THAT(order, ElementsAre("48", "180", "512", "drawn", "47", "16"));
}

} // namespace
} // namespace tessaril
