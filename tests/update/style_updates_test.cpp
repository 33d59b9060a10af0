#include "app/launch_update.h"
#include "events/notification_names.h"
#include "store/style_list.h"
#include "support/recording_icons.h"
#include "support/test.h"
#include "support/thread_dispatcher.h"
#include "support/update_machine.h"
#include "update/style_updates.h"

namespace tessaril {
namespace {

using text = std::optional<std::string>;

template <typename Tasks>
struct Updates : UpdateMachine<Tasks> {
    std::string status(std::size_t row) { return list.styles().at(row)->updateStatus; }

    RecordingIcons icons;
    StyleList list{this->store, this->center, this->dispatcher, icons};
    StyleIDs updating;
    StyleUpdates updates{{this->store, list, this->center, this->dispatcher, this->alerts, updating,
                          this->checks()}};
};

struct StyleUpdatesTest : ::testing::Test, Updates<SteppedDispatcher> {
    void begin(std::vector<styleContainer> styles) {
        putDocument(std::move(styles));
        list.refreshTable();
    }
    std::string check(std::int64_t id) {
        updates.checkStyleForUpdate(id);
        dispatcher.runAll();
        return status(*list.rowOf(id));
    }
    const styleContainer& stored(std::int64_t id) { return *(kept = store.findStyle(id)); }

    std::shared_ptr<const styleContainer> kept;
};

TEST_F(StyleUpdatesTest, aSiteStyleIsComparedByItsChecksum) {
    styleContainer old = siteStyle(1, "Site", "m1", "m2");
    old.isEnabled = false;
    old.exclDomain = std::vector<std::string>{"x.example"};
    old.userVariables = std::vector{userVariable{.type = "text", .name = "v"}};
    begin({old, siteStyle(2, "Same", "m", "m")});
    EXPECT_EQ(check(1), "updated");
    old.styleData = stored(1).styleData;
    old.dateModified = stored(1).dateModified;
    EXPECT_EQ(stored(1), old) << "all but the data is the user's";
    EXPECT_EQ(written().styles.at(0).styleData.originalMd5, "m2");
    EXPECT_EQ(check(1), "error") << "its new update address is no page of the site";
    EXPECT_EQ(check(2), "noupdates");
    EXPECT_THAT(compilations, IsEmpty());
}

TEST_F(StyleUpdatesTest, aUserCSSStyleIsReplacedButKeepsWhatTheUserSet) {
    serve(1, userCSS("Style", "1", "a {}", "red"));
    styleContainer old = userStyle(1);
    old.userVariables->at(0).currentValue = "mine";
    old.isEnabled = false;
    old.systemTheme = "dark";
    begin({old});
    compilations.clear();
    icons.asked.clear();
    serve(1, userCSS("Renamed", "1", "b {}", "blue"));
    EXPECT_EQ(check(1), "updated") << "the version is the same, the code is not";
    const styleContainer& now = stored(1);
    EXPECT_EQ(now.styleData.sections.at(0).compiledcode, "b {}mine");
    EXPECT_TRUE(!now.isEnabled && now.systemTheme == "dark");
    EXPECT_EQ(now.downloadedFrom, addressOf(1));
    EXPECT_THAT(icons.asked, ElementsAre(std::pair(1, iconRequest::rulesChanged)));
    EXPECT_EQ(written().styles.at(0).styleData, now.styleData);
    EXPECT_THAT(compilations, ElementsAre("compile Renamed", "compile Renamed"));

    EXPECT_EQ(check(1), "noupdates") << "that the user's value was compiled in is no news";
    std::string changed = userCSS("Renamed", "2", "b {}", "blue");
    serve(1, changed);
    EXPECT_EQ(check(1), "updated") << "the code is the same, the version is not";
    serve(1, changed.replace(changed.find("\"V\""), 3, "\"W\""));
    EXPECT_EQ(check(1), "updated") << "a variable is news, whatever the compiler makes of it";
    EXPECT_EQ(stored(1).userVariables->at(0).currentValue, "mine");
}

TEST_F(StyleUpdatesTest, choosesTheAddressAndNamesByIt) {
    serve(1, userCSS("A", "1", "a {}"));
    styleContainer style = userStyle(1);
    begin({style});
    loader.responses["https://u.example/styles/dark-mode.user.css"].body = userCSS("", "2", "b {}");
    const auto checkWith = [&](text updateURL, std::string downloadedFrom) {
        style.updateURL = std::move(updateURL);
        style.downloadedFrom = std::move(downloadedFrom);
        store.replaceStyleKeepingSettings(1, style);
        loader.taken();
        return check(1);
    };
    EXPECT_EQ(checkWith(" \n", addressOf(1)), "noupdates");
    EXPECT_EQ(checkWith("https://u.example/none.css", addressOf(1)), "error") << "not the other";
    EXPECT_THAT(loader.taken(), ElementsAre("https://u.example/none.css"));
    EXPECT_EQ(checkWith(" ", ""), "none");
    EXPECT_EQ(checkWith("https://u.example/styles/dark-mode.user.css", ""), "updated");
    EXPECT_EQ(stored(1).styleData.name, "dark-mode.user");
}

TEST_F(StyleUpdatesTest, nothingChangesOnFailure) {
    CapturedLog quiet;
    serve(1, userCSS("A", "1", "a {}"));
    serve(4, userCSS("Less", "1\n@preprocessor less", "a {}"));
    const styleContainer less = userStyle(4);
    failing = ""; // without values
    begin({userStyle(1), siteStyle(2, "B", "m", "n"), namedStyle("Custom", 3), less});
    EXPECT_EQ(check(4), "noupdates") << "its code is the same, but could not be compiled";
    const auto before = store.snapshot().styles;
    loader.responses["https://site.example/styles/chrome/2.json"].body = "{}";
    EXPECT_EQ(check(2), "error");
    for (const char* body : {"a {}", "@-moz-document", "\xFF"}) {
        serve(1, body);
        EXPECT_EQ(check(1), "error") << body;
    }
    loader.responses.clear();
    EXPECT_EQ(check(1), "error");
    EXPECT_EQ(check(3), "none");
    updates.checkStyleForUpdate(99);
    EXPECT_EQ(store.snapshot().styles, before);
    EXPECT_THAT(told, IsEmpty());
    EXPECT_THAT(alerts.alerts, IsEmpty());
}

TEST_F(StyleUpdatesTest, allAreCheckedInOrderAFewAtATime) {
    std::vector<styleContainer> styles;
    std::vector<std::string> addresses;
    for (std::int64_t id = 1; id <= 10; ++id) {
        serve(id, userCSS("A", "1", "a {}"));
        styles.insert(styles.end(), {userStyle(id), namedStyle("Custom", 100 + id)});
        addresses.push_back(addressOf(id));
    }
    begin(styles);
    int closed = 0;
    const auto subscription =
        center.observe(notifications::closeProperties, [&](const notification&) { ++closed; });
    std::vector<bool> running;
    updates.setObserver([&] { running.push_back(updates.isRunning()); });
    updates.updateAllClicked();
    EXPECT_THAT(running, ElementsAre(true));
    EXPECT_EQ(closed, 10);
    EXPECT_EQ(status(18), "checking") << "also one that waits";
    EXPECT_EQ(status(19), "none");
    EXPECT_THAT(dispatcher.backgroundTasks, SizeIs(8));
    EXPECT_THAT(dispatcher.priorities, Each(taskPriority::background));

    updates.updateAllClicked();
    EXPECT_EQ(alerts.beeps, 1) << "one runs";
    updates.checkStyleForUpdate(1);
    store.deleteStyle(*store.indexOfStyle(10));
    list.refreshTable();
    EXPECT_EQ(status(16), "checking") << "the others go on";
    dispatcher.runAll();
    addresses.pop_back();
    EXPECT_EQ(loader.taken(), addresses);
    EXPECT_THAT(running, ElementsAre(true, false));
    EXPECT_EQ(status(0), "noupdates");

    list.setLockedForSync(true);
    updates.updateAllClicked();
    updates.updateAllStyles();
    EXPECT_EQ(alerts.beeps, 3);
    list.setLockedForSync(false);
    store.resetDatabase();
    list.refreshTable();
    updates.updateAllClicked();
    EXPECT_EQ(alerts.beeps, 4) << "the list is empty";
}

TEST_F(StyleUpdatesTest, theResultLandsOnlyOnTheStyleThatWasChecked) {
    for (const std::int64_t id : {1, 2})
        serve(id, userCSS("A", "1", "a {}"));
    begin({userStyle(1), userStyle(2), siteStyle(3, "B", "m", "n")});
    failing = "";
    for (const std::int64_t id : {1, 2})
        serve(id, userCSS("A", "2\n@preprocessor less", "b {}"));
    for (const std::int64_t id : {1, 2, 3})
        updates.checkStyleForUpdate(id);
    while (SteppedDispatcher::step(dispatcher.backgroundTasks)) {
    }
    store.deleteStyle(0);
    for (const std::int64_t id : {2, 3}) { // as a cloud merge may
        styleContainer other = namedStyle("Other", id);
        store.replaceStyleKeepingSettings(id, other);
    }
    dispatcher.runAll();
    EXPECT_THAT(names(), ElementsAre("Other", "Other"));
    EXPECT_EQ(status(1), "none") << "as if nothing was checked";
    EXPECT_THAT(told, IsEmpty());
}

TEST_F(StyleUpdatesTest, aStyleThatIsChangedMeanwhileIsCheckedAgain) {
    serve(1, userCSS("A", "1", "a {}", "red"));
    begin({userStyle(1)});
    serve(1, userCSS("A", "2", "b {}", "blue"));
    updates.checkStyleForUpdate(1);
    SteppedDispatcher::step(dispatcher.backgroundTasks);
    styleContainer chosen = stored(1);
    chosen.userVariables->at(0).currentValue = "mine";
    store.applyStyleProperties(1, chosen);
    store.setEnabled({1}, false);
    dispatcher.runAll();
    EXPECT_EQ(status(0), "updated");
    EXPECT_EQ(stored(1).version, "2");
    EXPECT_EQ(stored(1).userVariables->at(0).currentValue, "mine");
    EXPECT_FALSE(stored(1).isEnabled);
}

TEST_F(StyleUpdatesTest, whatCannotBeCompiledKeepsWhatWasCompiledBefore) {
    const auto serveVersion = [this](const std::string& version, const std::string& value) {
        serve(1, userCSS("A", version.substr(0, 1) + "\n@preprocessor " + version.substr(1), "a {}",
                         value));
    };
    serveVersion("1Less", "red");
    styleContainer style = userStyle(1);
    style.userVariables->at(0).currentValue = "mine";
    begin({style});
    const struct {
        const char* why;
        text failsWith;
        std::string imported, version, value, outcome, css;
        std::size_t tellings;
    } steps[] = {{"the same code", "mine", "two", "1Less", "red", "noupdates", "one", 0},
                 {"by the author's values", "mine", "two", "2Less", "red", "updated", "two", 1},
                 {"by none", "mine", "three", "3Less", "mine", "updated", "two", 2},
                 {"not at every check", "mine", "three", "3Less", "mine", "noupdates", "two", 2},
                 {"by the user's values", "red", "four", "4Less", "red", "updated", "four", 2},
                 {"by the user's values", "red", "five", "4Less", "red", "updated", "five", 2},
                 {"it is the same language", "mine", "five", "5less", "mine", "updated", "five", 3},
                 {"the author has emptied it", {}, "", "6Less", "red", "updated", "nothing", 3}};
    for (const auto& [why, failsWith, imported, version, value, outcome, css, tellings] : steps) {
        SCOPED_TRACE(why);
        failing = failsWith;
        library = imported;
        serveVersion(version, value);
        EXPECT_EQ(check(1), outcome);
        const auto& sections = stored(1).styleData.compSections;
        EXPECT_EQ(sections ? sections->at(0).code : "nothing", css);
        EXPECT_EQ(stored(1).version, version.substr(0, 1));
        EXPECT_THAT(told, SizeIs(tellings));
    }
}

TEST_F(StyleUpdatesTest, whatCanNeverBeCompiledIsNoNews) {
    const std::string variables = "\n@var text a \"V\" one\n@var text b \"V\" two";
    serve(1, userCSS("A", "1\n@preprocessor sass" + variables, "a {}"));
    styleContainer style = userStyle(1);
    style.userVariables->at(0).currentValue = "mine";
    begin({style});
    EXPECT_EQ(check(1), "noupdates");
    EXPECT_EQ(stored(1), style) << "though one label of two would take the other's value";
    EXPECT_THAT(told, IsEmpty());
    serve(1, userCSS("A", "2\n@preprocessor sass", "a {}"));
    const checkResult result = checkStyle(style, sheetCheck, checks(), {});
    EXPECT_EQ(result.outcome, checkOutcome::updated);
    EXPECT_FALSE(result.tellErrors);
}

TEST_F(StyleUpdatesTest, whatNeverWorkedTellsWhyAndMayWorkLater) {
    serve(1, userCSS("A", "1\n@preprocessor less", "a {}", "red"));
    serve(2, userCSS("B", "1\n@preprocessor STYLUS", "b {}"));
    styleContainer style = userStyle(1);
    style.userVariables->at(0).currentValue = "mine";
    style.styleData.compSections.reset();
    begin({style, userStyle(2)});
    failing = "mine";
    EXPECT_EQ(check(1), "noupdates");
    EXPECT_THAT(told, SizeIs(1)) << "though the author's values work";
    failing.reset();
    serve(2, userCSS("B", "1", "b {}"));
    EXPECT_EQ(check(2), "noupdates") << "its author has dropped the language";
    serve(2, userCSS("B", "1\n@preprocessor STYLUS", "b {}"));
    EXPECT_EQ(check(2), "updated");
    EXPECT_TRUE(stored(2).styleData.compSections);

    failing = "mine";
    updates.updateAllClicked();
    dispatcher.runAll();
    EXPECT_THAT(told, SizeIs(1)) << "nobody has asked for it";
    updates.checkStyleForUpdate(1);
    SteppedDispatcher::step(dispatcher.backgroundTasks);
    style.styleData.sections[0].code = "mended {}";
    store.applyEditorChanges(1, style);
    dispatcher.runAll();
    EXPECT_THAT(told, SizeIs(1)) << "an error of code that is gone";
}

TEST_F(StyleUpdatesTest, theSheetCompilesWhatTheReaderLeavesOut) {
    const auto sheet = [&](const char* version, const styleContainer& style) {
        serve(1, userCSS("A", std::string(version) + "\n@preprocessor LESS", "a {}"));
        auto result = checkStyle(style, sheetCheck, checks(), {});
        return std::get<styleContainer>(result.newer);
    };
    serve(1, userCSS("A", "1\n@preprocessor less", "a {}"));
    styleContainer style = sheet("2", userStyle(1));
    EXPECT_EQ(style.styleData.compSections->at(0).code, "one");
    failing = "";
    style = sheet("3", style);
    EXPECT_EQ(style.styleData.compSections->at(0).code, "one") << "pages keep what they have";
}

TEST_F(StyleUpdatesTest, aTextFromElsewhereDoesNotMakeTheStyleOneOfTheOwnNetwork) {
    const std::string own = "http://localhost/a.user.css";
    for (const std::int64_t id : {1, 2, 3})
        serve(id, userCSS("A", "1\n@updateURL " + addressOf(id), "a {}"));
    std::vector<styleContainer> styles{userStyle(1), userStyle(2), userStyle(3)};
    for (styleContainer& style : styles)
        style.downloadedFrom = own;
    styles[2].updateURL.reset();
    begin(styles);
    serve(1, userCSS("A", "2", "b {}"));
    serve(2, userCSS("A", "2\n@updateURL http://localhost/x", "b {}"));
    for (const std::int64_t id : {1, 2}) {
        EXPECT_EQ(check(id), "updated");
        EXPECT_EQ(stored(id).updateURL, addressOf(id));
    }
    reachedOwnNetwork = false;
    loader.responses[own] = {.body = userCSS("A", "2\n@preprocessor less", "b {}"),
                             .finalAddress = addressOf(3)};
    EXPECT_EQ(check(3), "updated");
    EXPECT_EQ(stored(3).updateURL, addressOf(3)) << "where it was redirected to";
    EXPECT_FALSE(reachedOwnNetwork);
}

TEST_F(StyleUpdatesTest, whatIsQueuedEndsSilentlyWhenTheApplicationQuits) {
    begin({siteStyle(1, "A", "m", "n"), siteStyle(2, "B", "m", "n"), siteStyle(3, "C", "m", "n")});
    updates.updateAllClicked();
    SteppedDispatcher::step(dispatcher.backgroundTasks);
    updates.stop();
    dispatcher.runAll();
    EXPECT_THAT(loader.taken(), SizeIs(1));
    EXPECT_THAT(names(), ElementsAre("A", "B", "C"));
    for (std::size_t row = 0; row < 3; ++row)
        EXPECT_EQ(status(row), "checking");
}

TEST_F(StyleUpdatesTest, allAreUpdatedOncePerLaunch) {
    begin({siteStyle(1, "A", "m", "n")});
    preferences.registerDefault(preferenceKeys::updateOnLaunch, false);
    const auto loads = [&](LaunchUpdate& launch) {
        launch.listShown();
        dispatcher.runAll();
        return loader.taken().size();
    };
    const auto firstFetch = [&] {
        center.post(notifications::performFirstUpdate);
        dispatcher.runAll();
        return loader.taken().size();
    };
    LaunchUpdate first(updates, preferences, center, dispatcher);
    EXPECT_EQ(loads(first), 0U) << "not wanted";
    preferences.set(preferenceKeys::updateOnLaunch, true);
    EXPECT_EQ(loads(first), 1U);
    EXPECT_EQ(loads(first), 0U);
    EXPECT_EQ(firstFetch(), 0U);

    preferences.set(preferenceKeys::useiCloud, true);
    LaunchUpdate second(updates, preferences, center, dispatcher);
    EXPECT_EQ(loads(second), 0U);
    store.setStyleData(1, siteStyle(1, "A", "m", "n").styleData);
    EXPECT_EQ(firstFetch(), 1U);
    EXPECT_EQ(firstFetch(), 0U);
}

/// Checks run at once while the user deletes, renames and switches styles.
TEST(StyleUpdatesThreads, landWhileTheStylesChange) {
    CapturedLog quiet;
    Updates<ThreadDispatcher> machine;
    constexpr std::int64_t count = 40;
    std::vector<styleContainer> styles;
    for (std::int64_t id = 1; id <= count; ++id) {
        machine.serve(id, UpdateMachine<>::userCSS("A", "1", "a {}", "x"));
        styles.push_back(machine.userStyle(id));
        machine.serve(id, UpdateMachine<>::userCSS("B", "2", "b {}", "y"));
    }
    machine.putDocument(styles);
    machine.list.refreshTable();
    machine.updates.updateAllClicked();
    for (std::int64_t step = 0; machine.updates.isRunning(); ++step) {
        machine.store.renameStyle(static_cast<std::size_t>(step) % 7, "renamed");
        machine.store.setEnabled({step % count + 1}, false);
        if (step % 5 == 0 && machine.store.countStyles() > 30)
            machine.store.deleteStyle(static_cast<std::size_t>(step) % 20);
        machine.dispatcher.runMain();
    }
    machine.dispatcher.join();
    machine.dispatcher.runMain();
    machine.store.finishSaves();
    const auto all = machine.store.snapshot().styles;
    EXPECT_GE(all.size(), 30U);
    EXPECT_LT(all.size(), static_cast<std::size_t>(count));
    for (const auto& style : all)
        EXPECT_EQ(style->version, "2");
    EXPECT_EQ(machine.written().styles.size(), all.size());
}

} // namespace
} // namespace tessaril
