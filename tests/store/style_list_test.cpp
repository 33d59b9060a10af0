#include "support/list_machine.h"
#include "support/test.h"

namespace tessaril {
namespace {

struct StyleListTest : ::testing::Test, ListMachine {};

TEST_F(StyleListTest, rowsFollowTheDatabaseByTheBus) {
    begin("AB");
    EXPECT_EQ(shown(), "AB");
    store.appendStyle(namedStyle("C", 3));
    center.post(notifications::addLatestStyle);
    EXPECT_THAT(tellings(), ElementsAre("insert 2-2", "select 2"));

    store.appendStyle(namedStyle("D", 4));
    store.appendStyle(namedStyle("E", 5));
    center.post(notifications::addLatestStyle);
    EXPECT_THAT(tellings(), ElementsAre("reset", "select 4")) << "more than one is new: read anew";
    EXPECT_EQ(shown(), "ABCDE");

    center.post(notifications::refreshTableAndScroll);
    EXPECT_THAT(tellings(), ElementsAre("reset", "select 4"));
    store.renameStyle(1, "New");
    EXPECT_THAT(tellings(), ElementsAre("draw 1"));
    EXPECT_EQ(shown(), "ANCDE");
    store.resetDatabase();
    center.post(notifications::addLatestStyle);
    EXPECT_THAT(tellings(), IsEmpty()) << "no style, no row";
    center.post(notifications::refreshTable);
    center.post(notifications::refreshTableAndScroll);
    EXPECT_THAT(tellings(), ElementsAre("reset", "reset"));
    EXPECT_EQ(shown(), "");
}

TEST_F(StyleListTest, aNewRowTakesTheFirstIconAndAChangedStyleTheLast) {
    const auto icon = [](std::string png) { return std::make_shared<const siteIcon>(png); };
    icons.inMemory[2] = icon("known");
    begin("AB");
    EXPECT_EQ(list.styles()[1]->faviconImg->png, "known");
    EXPECT_THAT(icons.asked, ElementsAre(Pair(1, iconRequest::newRow)));

    icons.found(1, icon("first"), iconRequest::newRow);
    EXPECT_THAT(tellings(), ElementsAre("draw 0"));
    icons.found(1, icon("second"), iconRequest::newRow);
    icons.found(17, icon("of a style that is gone"), iconRequest::newRow);
    EXPECT_THAT(tellings(), IsEmpty());
    EXPECT_EQ(list.styles()[0]->faviconImg->png, "first");

    icons.asked.clear();
    styleContainer edited = namedStyle("A", 1);
    edited.author = "Émile";
    store.applyEditorChanges(1, edited);
    EXPECT_THAT(icons.asked, ElementsAre(Pair(1, iconRequest::rulesChanged)));
    EXPECT_THAT(tellings(), ElementsAre("draw 0"));
    StyleFilter filter;
    filter.setText("émile");
    EXPECT_TRUE(filter.shows(*list.styles()[0]));
    icons.found(1, icon("third"), iconRequest::rulesChanged);
    icons.found(1, icon("fourth"), iconRequest::rulesChanged);
    EXPECT_EQ(list.styles()[0]->faviconImg->png, "fourth");
    EXPECT_THAT(tellings(), ElementsAre("draw 0", "draw 0"));

    store.appendStyle(namedStyle("C", 3));
    center.post(notifications::addLatestStyle);
    EXPECT_THAT(icons.asked,
                ElementsAre(Pair(1, iconRequest::rulesChanged), Pair(3, iconRequest::newRow)));
}

TEST(StyleFilter, findsNameAuthorAndSiteWhateverTheCase) {
    styleContainer style = namedStyle("Ärger mit Straßen", 1);
    style.author = "Émile";
    style.homepageURL = "https://home.example/x";
    style.styleData.sections[0].domains = {"forum.example"};
    style.styleData.sections.emplace_back().regexps = {R"(https?://(www\.)?news\.example/.*)"};
    style.styleData.sections[1].urlPrefixes = {"https://shop.example/a"};
    const styleObject row(style);
    StyleFilter filter;
    EXPECT_FALSE(filter.isActive());
    EXPECT_TRUE(filter.shows(row));
    for (const auto& [typed, isShown] : std::vector<std::pair<std::string_view, bool>>{
             {"ÄRGER", true},
             {" strassen", false}, // one letter for one: no sharp s for two
             {"  STRAßEN\u00A0émile ", true},
             {"forum.example", true},
             {"https://forum.example", true},
             {"HTTP://shop.example/a", true},
             {"news.example", true},
             {"ärger home.example", true},
             {"ärger nobody", false},
             {"Straßen Émile\n", true},
             {"EXAMPLEforum", false},
         }) {
        filter.setText(typed);
        EXPECT_EQ(filter.shows(row), isShown) << typed;
    }
    EXPECT_TRUE(filter.setText("a"));
    EXPECT_FALSE(filter.setText(" A ")) << "nothing changes";
    EXPECT_TRUE(filter.setText(" \u2003\thttps://"));
    EXPECT_FALSE(filter.isActive());
}

} // namespace
} // namespace tessaril
