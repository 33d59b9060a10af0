#include "icons/icon_links.h"
#include "support/test.h"

namespace tessaril {
namespace {

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
