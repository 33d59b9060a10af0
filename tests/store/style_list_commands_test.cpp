#include "store/new_style.h"
#include "support/list_machine.h"
#include "support/test.h"

namespace tessaril {
namespace {

using shownAlert = RecordingAlerts::shown;

struct StyleListCommandsTest : ::testing::Test, ListMachine {
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

TEST_F(StyleListCommandsTest, theCheckBoxFlipsTheStyleAndSaves) {
    begin("AB");
    commands.onToggle(1);
    EXPECT_THAT(tellings(), ElementsAre("draw 1"));
    EXPECT_EQ(checked(), "A");
    EXPECT_FALSE(written().styles[1].isEnabled);
    commands.onToggle(1);
    EXPECT_TRUE(store.styleWithID(2)->isEnabled);
    commands.disableSelected({0, 1, 17});
    EXPECT_EQ(checked(), "");
    commands.enableSelected({1});
    commands.enableSelected({});
    EXPECT_EQ(checked(), "B");
    dispatcher.runAll();
}

TEST_F(StyleListCommandsTest, allAreEnabledOrDisabledAndTheListReadAnew) {
    begin("ABCD");
    commands.disableAll();
    EXPECT_EQ(checked(), "");
    EXPECT_THAT(postings(), IsEmpty());
    commands.enableSelected({1});
    commands.toggleOverflow();
    EXPECT_EQ((dispatcher.runAll(), checked()), "ABCD") << "one of four is not most";
    commands.disableSelected({2, 3});
    commands.toggleOverflow();
    EXPECT_EQ((dispatcher.runAll(), checked()), "") << "two of four are";
    commands.toggleAllClicked(0);
    EXPECT_EQ((dispatcher.runAll(), checked()), "ABCD");
    commands.toggleAllClicked(1);
    EXPECT_EQ((dispatcher.runAll(), checked()), "");
    EXPECT_EQ(postings(), std::vector<std::string>(4, "refreshTable"));
    commands.enableAll();
    EXPECT_EQ(checked(), "ABCD");
}

TEST_F(StyleListCommandsTest, duplicatesAreCustomStylesAtTheEnd) {
    begin("AB");
    styleContainer site = fullStyle(9);
    site.dateModified = 5;
    store.appendStyle(site);
    center.post(notifications::addLatestStyle);
    updatingStyles.add(2);
    tellings();
    postings();
    commands.duplicateSelected({1, 2, 7});
    EXPECT_EQ(alerts.beeps, 1);
    EXPECT_THAT(postings(), ElementsAre("addLatestStyle"));
    EXPECT_THAT(tellings(), ElementsAre("insert 3-3", "select 3"));
    const styleContainer made = written().styles.at(3);
    styleContainer wanted = site;
    wanted.styleData.name = "Copy of name";
    wanted.source = "custom";
    wanted.userstyleID = -1;
    wanted.uniqueID = made.uniqueID;
    EXPECT_EQ(made, wanted);
    EXPECT_NE(made.uniqueID, 9);
    EXPECT_EQ(list.styles()[3]->source, "Custom Style");
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
    EXPECT_EQ(undoManager.undoName(), "Delete Style");

    open(1);
    updatingStyles.add(3);
    commands.deleteContextAction(0);
    commands.deleteContextAction(1);
    commands.deleteContextAction(2);
    EXPECT_EQ(alerts.questions.size(), 2U);
    EXPECT_EQ(alerts.beeps, 1);
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
    commands.deleteSelected({0, 1, 2, 4, 6, 99});
    EXPECT_EQ(alerts.questions.back().title, "Are you sure you want to delete 6 styles?");
    EXPECT_EQ(alerts.beeps, 1);
    EXPECT_EQ(stored(), "ABDF");
    EXPECT_THAT(postings(), ElementsAre("addToOpenStyles 1", "closeProperties 7",
                                        "closeProperties 5", "closeProperties 3"));
    EXPECT_THAT(alerts.taken(), ElementsAre("Cannot Delete Styles"));
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
    commands.redo();
    EXPECT_EQ(stored(), "ACDH");
    commands.undo();
    EXPECT_EQ(stored(), "ABCDEFGH");

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
    EXPECT_EQ(stored().size(), 4U);
    EXPECT_EQ(shown(), stored());
    EXPECT_EQ(store.styleWithID(idOfG)->styleData.name, "X");
    commands.redo();
    EXPECT_EQ(stored(), "X") << "not the one that had the identifier first";
}

TEST_F(StyleListCommandsTest, aStyleOpenedWhileItsQuestionIsShownStays) {
    begin("ABC");
    alerts.answers = {{0}, {0}};
    alerts.whileAsking = [this] { open(2); };
    commands.deleteContextAction(1);
    EXPECT_EQ(stored(), "ABC");
    commands.deleteSelected({0, 1});
    EXPECT_EQ(stored(), "BC");
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
    EXPECT_EQ(after("ABCD", {0, 1}, 3), "CABD");
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
    center.post(notifications::addLatestStyle);
    postings();
    commands.openSelected({0});
    commands.openProperties(0);
    center.post(notifications::openStyleNotif, 2);
    tellings();
    EXPECT_THAT(postings(), IsEmpty()) << "nothing to open them with";

    std::vector<std::pair<std::int64_t, bool>> opened;
    bool opens = true;
    commands.setRoutes({.openStyleForEditing =
                            [&](std::int64_t id, bool isImported) {
                                opened.emplace_back(id, isImported);
                                return opens;
                            },
                        .openStyleProps = [&](std::int64_t) { return opens; }});
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
    std::vector<std::int64_t> opened;
    EXPECT_FALSE(NewStyle::canCreate(" \n\u3000"));
    newStyle.create({.name = " "});
    EXPECT_EQ(stored(), "");

    newStyle.create({.name = " First\n", .ruleType = 2, .rule = " https://a.example/ "});
    const auto first = store.styleAt(0);
    EXPECT_FALSE(openStyles.contains(first->uniqueID)) << "no editor has opened";
    newStyle.setOpenNewStyleInEditor([&](std::int64_t id) {
        EXPECT_TRUE(openStyles.contains(id));
        opened.push_back(id);
        return true;
    });
    EXPECT_EQ(first->styleData.name, "First");
    EXPECT_EQ(first->author, "Tessaril User");
    EXPECT_EQ(first->namespace_, "tessaril77");
    EXPECT_EQ(first->version, "1.0.0");
    EXPECT_EQ(first->preprocessor, "default");
    EXPECT_EQ(first->source, "custom");
    const styleSection& section = first->styleData.sections.at(0);
    EXPECT_THAT(section.urlPrefixes, ElementsAre("https://a.example/"));
    EXPECT_TRUE(section.code.starts_with("/* Hey there! Thanks for buying Tessaril.\nSince"));
    EXPECT_FALSE(section.compiledcode || section.sectionName);

    postings();
    const std::vector<std::string> styleSection::*lists[] = {
        &styleSection::domains, &styleSection::urls, &styleSection::urlPrefixes,
        &styleSection::regexps, &styleSection::domains};
    const std::string_view preprocessors[] = {"default", "stylus", "less", "default", "default"};
    for (int position = 0; position < 5; ++position) {
        newStyle.create({"N", position, "r", position});
        const auto made = store.styleAt(store.countStyles() - 1);
        const styleSection& only = made->styleData.sections.at(0);
        EXPECT_THAT(only.*lists[position], ElementsAre("r"));
        EXPECT_EQ(made->preprocessor, preprocessors[position]);
        EXPECT_EQ(only.code, "") << "the advice comes once";
        const std::string id = std::to_string(made->uniqueID);
        EXPECT_THAT(postings(), ElementsAre("addToOpenStyles " + id, "addLatestStyle"));
    }
    EXPECT_EQ(opened.size(), 5U);
    list.setLockedForSync(true);
    EXPECT_FALSE(newStyle.mayBegin() || newStyle.create({.name = "Locked"}));
    EXPECT_EQ(alerts.beeps, 2);
    list.setLockedForSync(false);
    newStyle.create({.name = "Everywhere", .rule = " \n"});
    EXPECT_TRUE(store.styleAt(6)->styleData.sections.at(0).appliesEverywhere());
}

} // namespace
} // namespace tessaril
