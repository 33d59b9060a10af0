#include "store/new_style.h"
#include "support/list_machine.h"
#include "support/test.h"

namespace tessaril {
namespace {

struct StyleListTest : ::testing::Test, ListMachine {
    void append(const std::vector<std::string>& added) {
        for (const std::string& name : added)
            store.appendStyle(namedStyle(name, static_cast<std::int64_t>(store.countStyles()) + 1));
        center.post(notifications::addLatestStyle);
    }
};

TEST_F(StyleListTest, rowsFollowTheDatabaseByTheBus) {
    begin("AB");
    EXPECT_EQ(shown(), "AB");
    append({"C"});
    EXPECT_THAT(tellings(), ElementsAre("insert 2-2", "select 2"));
    append({"D", "E"});
    EXPECT_THAT(tellings(), ElementsAre("reset", "select 4")) << "more than one is new: read anew";
    EXPECT_EQ(shown(), "ABCDE");

    store.renameStyle(1, "New");
    EXPECT_THAT(tellings(), ElementsAre("draw 1"));
    EXPECT_EQ(shown(), "ANCDE");
    store.resetDatabase();
    center.post(notifications::addLatestStyle);
    EXPECT_THAT(tellings(), IsEmpty()) << "no style, no row";
    center.post(notifications::refreshTable);
    center.post(notifications::refreshTableAndScroll);
    EXPECT_THAT(tellings(), ElementsAre("reset")) << "once for all that wait";
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

    append({"C"});
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
             {"HTTP://shop.example/a", true},
             {"news.example", true},
             {"ärger home.example", true},
             {"ärger nobody", false},
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

struct StyleListCommandsTest : StyleListTest {
    StyleListCommandsTest() {
        for (const std::string_view name :
             {notifications::addLatestStyle, notifications::addToOpenStyles,
              notifications::closeProperties, notifications::removeFromOpenStyles,
              notifications::checkIfWindowFocus, notifications::focusProperties,
              notifications::refreshTable, notifications::styleNameChanged})
            subscriptions.push_back(center.observe(name, [this](const notification& n) {
                posted.push_back(std::string(n.name) +
                                 (n.id() ? " " + std::to_string(*n.id()) : ""));
            }));
    }

    void answer(int button) { alerts.answers.push_back({button}); }
    void open(std::int64_t id) { center.post(notifications::addToOpenStyles, id); }
    std::vector<std::string> postings() { return std::exchange(posted, {}); }

    std::string after(std::string_view letters, const std::vector<std::size_t>& dragged,
                      std::size_t row) {
        ListMachine other;
        other.begin(letters);
        other.commands.dropRows(dragged, row);
        EXPECT_EQ(other.shown(), other.stored());
        return other.stored();
    }

    std::vector<std::string> posted;
    std::vector<NotificationCenter::Subscription> subscriptions;
};

TEST_F(StyleListCommandsTest, stylesAreEnabledAndDisabledOneByOneAndAllAtOnce) {
    begin("ABCD");
    commands.onToggle(1);
    EXPECT_THAT(tellings(), ElementsAre("draw 1"));
    EXPECT_FALSE(written().styles[1].isEnabled);
    commands.disableSelected({0, 1, 17});
    commands.enableSelected({1});
    EXPECT_EQ(checked(), "BCD");
    commands.disableAll();
    EXPECT_EQ(checked(), "");
    EXPECT_THAT(postings(), IsEmpty());
    commands.enableSelected({1});
    const std::pair<std::function<void()>, const char*> acts[] = {
        {[&] { commands.toggleOverflow(); }, "ABCD"}, // one of four is not most
        {[&] {
             commands.disableSelected({2, 3}), commands.toggleOverflow();
         },
         ""}, // two are
        {[&] { commands.toggleAllClicked(0); }, "ABCD"},
        {[&] { commands.toggleAllClicked(1); }, ""}};
    for (const auto& [act, enabled] : acts) {
        act();
        dispatcher.runAll();
        EXPECT_EQ(checked(), enabled);
        EXPECT_THAT(postings(), ElementsAre("refreshTable")) << "the list is read anew";
    }
    commands.enableAll();
    EXPECT_EQ(checked(), "ABCD");
}

TEST_F(StyleListCommandsTest, duplicatesAreCustomStylesAtTheEnd) {
    begin("AB");
    styleContainer site = fullStyle(9);
    site.dateModified = 5;
    store.appendStyle(site);
    append({});
    updatingStyles.add(2);
    tellings();
    postings();
    commands.duplicateSelected({1, 2, 7});
    EXPECT_EQ(alerts.beeps, 1);
    EXPECT_THAT(postings(), ElementsAre("addLatestStyle"));
    EXPECT_THAT(tellings(), ElementsAre("insert 3-3", "select 3"));
    const styleContainer made = written().styles.at(3);
    site.styleData.name = "Copy of name";
    site.source = "custom";
    site.userstyleID = -1;
    EXPECT_NE(std::exchange(site.uniqueID, made.uniqueID), made.uniqueID);
    EXPECT_EQ(made, site);
}

TEST_F(StyleListCommandsTest, deletesOneAfterAQuestion) {
    begin("ABC");
    commands.deleteContextAction(1);
    EXPECT_EQ(alerts.questions.at(0).title, "Are you sure you want to delete the style \"B\"?");
    EXPECT_EQ(stored(), "ABC") << "No is the answer of a closed question";
    EXPECT_FALSE(undoManager.canUndo());
    answer(0);
    commands.deleteContextAction(1);
    EXPECT_EQ(stored(), "AC");
    EXPECT_THAT(tellings(), ElementsAre("remove 1-1"));
    EXPECT_THAT(postings(), ElementsAre("closeProperties 2"));

    updatingStyles.add(3);
    commands.deleteContextAction(1);
    commands.deleteContextAction(2);
    EXPECT_EQ(alerts.beeps, 1);
    alerts.answers = {{0}, {0}};
    alerts.whileAsking = [this] { open(1); };
    for (int round = 0; round < 2; ++round) // opened while the question is shown, then before it
        commands.deleteContextAction(0);
    EXPECT_EQ(alerts.questions.size(), 3U);
    EXPECT_THAT(alerts.alerts.at(0).text, StartsWith("This style is currently open"));
    EXPECT_EQ(stored(), "AC");
}

TEST_F(StyleListCommandsTest, deletesTheSelectedOnesButThoseInUse) {
    begin("ABCDEFG");
    open(1);
    commands.deleteSelected({0});
    EXPECT_THAT(std::exchange(alerts.alerts, {}).at(0).text, StartsWith("\"A\" is currently open"));
    EXPECT_THAT(alerts.questions, IsEmpty());
    commands.deleteSelected({0, 1});
    EXPECT_THAT(alerts.alerts, IsEmpty()) << "nothing is said after a No";

    updatingStyles.add(2);
    answer(0);
    alerts.whileAsking = [this] { open(4); };
    commands.deleteSelected({0, 1, 2, 3, 4, 6, 99});
    EXPECT_EQ(alerts.questions.back().title, "Are you sure you want to delete 7 styles?");
    EXPECT_EQ(alerts.beeps, 1);
    EXPECT_EQ(stored(), "ABDF") << "also that one which was opened while the question was shown";
    EXPECT_THAT(postings(),
                ElementsAre("addToOpenStyles 1", "addToOpenStyles 4", "closeProperties 7",
                            "closeProperties 5", "closeProperties 3"));
    EXPECT_THAT(alerts.taken(), ElementsAre("Cannot Delete Styles", "Cannot Delete Styles"));
}

TEST_F(StyleListCommandsTest, undoBringsDeletedStylesBackWhereTheyStood) {
    begin("ABCDEFGH");
    const auto before = store.snapshot().styles;
    answer(0);
    commands.deleteSelected({1, 4, 5, 6});
    EXPECT_EQ(stored(), "ACDH");
    EXPECT_THAT(tellings(), ElementsAre("remove 4-6", "remove 1-1"));
    commands.undo();
    EXPECT_EQ(store.snapshot().styles, before) << "the very same values, identifiers and all";
    EXPECT_THAT(tellings(), ElementsAre("insert 1-1", "insert 4-6", "select 1", "select 4",
                                        "select 5", "select 6"));
    EXPECT_EQ(undoManager.redoName(), "Delete Style");

    // Meanwhile styles were moved, and one was opened.
    commands.dropRows({1}, 8);
    open(5);
    commands.redo();
    EXPECT_EQ(stored(), "ACDEH") << "known by their identifiers";
    EXPECT_EQ(alerts.alerts.size(), 1U);

    // The list has become shorter, and a file brought one of them back.
    const std::int64_t idOfG = 7;
    store.resetDatabase();
    store.appendStyle(namedStyle("X", idOfG));
    commands.undo();
    EXPECT_EQ(shown(), stored());
    EXPECT_EQ(store.styleWithID(idOfG)->styleData.name, "X");
    commands.redo();
    EXPECT_EQ(stored(), "X") << "not the one that had the identifier first";
}

TEST_F(StyleListCommandsTest, renamesToTheTrimmedTextAndRefusesABlankOne) {
    begin("AB");
    const auto modified = store.styleWithID(2)->dateModified;
    commands.endEditingName(1, " \u00A0New\n");
    EXPECT_EQ(store.styleWithID(2)->styleData.name, "New");
    EXPECT_EQ(store.styleWithID(2)->dateModified, modified);
    EXPECT_THAT(postings(), ElementsAre("styleNameChanged 2"));
    tellings();
    commands.endEditingName(1, " \u2003\n");
    EXPECT_THAT(alerts.alerts, SizeIs(1));
    EXPECT_THAT(tellings(), ElementsAre("draw 1"));
    EXPECT_EQ(written().styles[1].styleData.name, "New");
}

TEST_F(StyleListCommandsTest, draggedRowsLandBetweenTheOthersInTheirOrder) {
    EXPECT_EQ(after("ABCD", {2, 3}, 0), "CDAB");
    EXPECT_EQ(after("ABCDEF", {0, 2, 5}, 4), "BDACFE");
    EXPECT_EQ(after("ABC", {0, 1, 2}, 1), "ABC");
    EXPECT_EQ(after("ABC", {0}, 3), "BCA");
    EXPECT_EQ(after("ABC", {1, 9}, 0), "BAC");
    EXPECT_EQ(after("AB", {0}, 5), "AB") << "a place outside the list";
}

TEST_F(StyleListCommandsTest, whileLockedEveryCommandOnlyBeeps) {
    begin("AB");
    answer(0);
    commands.deleteContextAction(0);
    commands.setRoutes({[](auto, bool) { return true; }, [](auto) { return true; },
                        [](const auto&) {}, [](auto) {}});
    const auto before = store.snapshot().styles;
    list.setLockedForSync(true);
    list.setLockedForSync(true);
    EXPECT_THAT(tellings(), ElementsAre("remove 0-0", "lock"));
    alerts.questions.clear();
    postings();
    commands.onToggle(0);
    commands.enableSelected({0});
    commands.disableSelected({0});
    commands.enableAll();
    commands.disableAll();
    commands.toggleAllClicked(1);
    commands.toggleOverflow();
    commands.duplicateClicked(0);
    commands.deleteContextAction(0);
    commands.deleteSelected({0});
    EXPECT_FALSE(commands.renameMenu(0));
    commands.endEditingName(0, "X");
    commands.dropRows({0}, 1);
    commands.openSelected({0});
    commands.openProperties(0);
    commands.exportStyle(0);
    commands.updateIndividualClicked(0);
    commands.undo();
    commands.redo();
    EXPECT_EQ(alerts.beeps, 19);
    EXPECT_EQ(store.snapshot().styles, before);
    EXPECT_THAT(alerts.questions, IsEmpty());
    EXPECT_THAT(postings(), IsEmpty());
    EXPECT_TRUE(undoManager.canUndo());
    list.setLockedForSync(false);
    EXPECT_TRUE(commands.renameMenu(0));
}

TEST_F(StyleListCommandsTest, opensEachStyleOnceAndForgetsAWindowThatDidNotOpen) {
    begin("ABC");
    styleContainer site = namedStyle("S", 4);
    site.source = sourceSite;
    store.appendStyle(site);
    append({});
    postings();
    commands.openSelected({0});
    commands.openProperties(0);
    center.post(notifications::openStyleNotif, 2);
    tellings();
    EXPECT_THAT(postings(), IsEmpty()) << "nothing to open them with";

    std::vector<std::pair<std::int64_t, bool>> opened;
    bool opens = true;
    const auto openStyle = [&](std::int64_t id, bool isImported) {
        opened.emplace_back(id, isImported);
        return opens;
    };
    commands.setRoutes({openStyle, [&](std::int64_t) { return opens; }});
    updatingStyles.add(2);
    commands.openSelected({0, 1, 3, 9});
    commands.openProperties(1);
    commands.onToggle(1);
    commands.disableSelected({1});
    EXPECT_EQ(alerts.beeps, 4);
    EXPECT_TRUE(store.styleWithID(2)->isEnabled);
    EXPECT_THAT(tellings(), ElementsAre("draw 1")) << "the box shows what is";
    commands.openSelected({0});
    center.post(notifications::openStyleNotif, 4);
    center.post(notifications::openStyleNotif, 77);
    EXPECT_THAT(tellings(), ElementsAre("select 3"));
    EXPECT_THAT(opened, ElementsAre(std::pair(1, false), std::pair(4, true)));
    EXPECT_THAT(postings(), ElementsAre("addToOpenStyles 1", "addToOpenStyles 4",
                                        "checkIfWindowFocus 1", "checkIfWindowFocus 4"));
    commands.openProperties(2);
    commands.openProperties(2);
    EXPECT_THAT(postings(), ElementsAre("focusProperties 3"));
    opens = false;
    commands.openSelected({2});
    commands.openProperties(0);
    EXPECT_FALSE(openStyles.contains(3) || openProperties.contains(1));
}

TEST_F(StyleListCommandsTest, newStylesHoldWhatTheSheetSays) {
    begin("");
    registerPreferenceDefaults(preferences, preferences, 77, false);
    NewStyle newStyle(store, list, preferences, center, alerts);
    int opened = 0;
    newStyle.create({.name = " \n\u3000"});
    EXPECT_EQ(stored(), "");
    newStyle.create({.name = " First\n", .ruleType = 2, .rule = " https://a.example/ "});
    const auto first = store.styleAt(0);
    EXPECT_FALSE(openStyles.contains(first->uniqueID)) << "no editor has opened";
    newStyle.setOpenNewStyleInEditor([&](std::int64_t id) {
        EXPECT_TRUE(openStyles.contains(id));
        return ++opened > 0;
    });
    EXPECT_EQ(first->styleData.name + first->author + first->namespace_ + first->version,
              "FirstTessaril Usertessaril771.0.0");
    const styleSection& section = first->styleData.sections.at(0);
    EXPECT_THAT(section.urlPrefixes, ElementsAre("https://a.example/"));
    EXPECT_TRUE(section.code.starts_with("/* Hey there! Thanks for buying Tessaril.\nSince"));

    postings();
    const std::tuple<styleSection, std::string> wanted[] = {{{.domains = {"r"}}, "default"},
                                                            {{.urls = {"r"}}, "stylus"},
                                                            {{.urlPrefixes = {"r"}}, "less"},
                                                            {{.regexps = {"r"}}, "default"},
                                                            {{.domains = {"r"}}, "default"}};
    for (int position = 0; const auto& [only, preprocessor] : wanted) {
        newStyle.create({"N", position, "r", position});
        const auto made = store.styleAt(++position);
        EXPECT_THAT(made->styleData.sections, ElementsAre(only)) << "the advice comes once";
        EXPECT_EQ(made->preprocessor, preprocessor);
        const std::string id = std::to_string(made->uniqueID);
        EXPECT_THAT(postings(), ElementsAre("addToOpenStyles " + id, "addLatestStyle"));
    }
    EXPECT_EQ(opened, 5);
    list.setLockedForSync(true);
    EXPECT_FALSE(newStyle.mayBegin() || newStyle.create({.name = "Locked"}));
    EXPECT_EQ(alerts.beeps, 2);
    list.setLockedForSync(false);
    newStyle.create({.name = "Everywhere", .rule = " \n"});
    EXPECT_TRUE(store.styleAt(6)->styleData.sections.at(0).appliesEverywhere());
}

} // namespace
} // namespace tessaril
