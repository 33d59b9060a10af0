#include "events/notification_names.h"
#include "support/test.h"
#include "support/update_machine.h"
#include "update/update_run.h"

namespace tessaril {
namespace {

struct UpdateRunTest : ::testing::Test, UpdateMachine<> {
    void open(std::vector<styleContainer> styles) {
        putDocument(std::move(styles));
        run = runs.make();
        run->setHandlers([this] { progresses.push_back(run->progress()); },
                         [this] { ++closed, run.reset(); });
        run->begin();
    }
    /// Lets the style that is at hand be checked.
    void step() {
        SteppedDispatcher::step(dispatcher.backgroundTasks);
        SteppedDispatcher::step(dispatcher.mainTasks);
    }
    bool hasFile() { return files.contents.at(document).find("New ") != std::string::npos; }

    UpdateRuns runs{{store, center, dispatcher, checks()}};
    std::unique_ptr<UpdateRun> run;
    std::vector<double> progresses;
    int closed = 0, refreshed = 0;
    std::vector<std::int64_t> closedProperties;
    NotificationCenter::Subscription subscriptions[2] = {
        center.observe(notifications::refreshTable, [this](const auto&) { ++refreshed; }),
        center.observe(notifications::closeProperties,
                       [this](const auto& n) { closedProperties.push_back(*n.id()); })};
};

TEST_F(UpdateRunTest, hasNothingToDoForStylesThatWereWrittenHere) {
    open({namedStyle("A", 1)});
    EXPECT_EQ(run->log(), "Checking for updates...\nNo styles need updates.");
    run->cancelClicked();
    run->doneClicked();
    EXPECT_EQ(closed, 1);
    EXPECT_EQ(refreshed, 1);
}

TEST_F(UpdateRunTest, checksStyleByStyleAndSavesWhenItIsDone) {
    serve(3, userCSS("Three", "1", "a {}", "red"));
    serve(5, userCSS("Five", "1", "a {}", "red"));
    serve(7, userCSS("Seven", "1\n@preprocessor LESS", "a {}"));
    failing = "";
    styleContainer three = userStyle(3), five = userStyle(5), four = userStyle(3);
    for (styleContainer* each : {&three, &five}) {
        each->userVariables->at(0).currentValue = "mine";
        compiled(*each, "");
        each->updateURL = "https://never.example/";
        each->isEnabled = false;
    }
    four.uniqueID = 4;
    four.updateURL = std::exchange(four.downloadedFrom, "");
    serve(3, userCSS("", "2", "a {}", "red"));
    open({siteStyle(1, "One", "m", "n"), namedStyle("Custom", 9), siteStyle(2, "Two", "m", "m"),
          three, four, five, siteStyle(6, "Six", "m", "n"), userStyle(7)});
    loader.responses.erase("https://site.example/styles/chrome/6.json");
    run->doneClicked();
    step();
    EXPECT_EQ(run->log(), "Checking for updates...\n\"One\" was updated to the latest version.\n");
    EXPECT_THAT(dispatcher.backgroundTasks, SizeIs(1)) << "one after another, nothing saved";
    dispatcher.runAll();
    EXPECT_EQ(run->log(), "Checking for updates...\n"
                          "\"One\" was updated to the latest version.\n"
                          "\"Two\" is already up-to-date.\n"
                          "\"Three\" was updated to the latest version.\n"
                          "\"Five\" is already up-to-date.\n"
                          "An error occurred checking for updates for \"Six\".\n"
                          "\"Seven\" is already up-to-date.\n"
                          "Updates completed. 2 styles were updated.");
    EXPECT_THAT(told, IsEmpty()) << "the log is enough";
    EXPECT_NEAR(run->progress(), 600.0 / 7, 1e-9) << "the fourth has no address to be asked";
    EXPECT_TRUE(std::ranges::is_sorted(progresses));
    EXPECT_THAT(closedProperties, ElementsAre(1, 3));
    const auto updated = store.findStyle(3);
    EXPECT_EQ(updated->userVariables->at(0).currentValue, three.userVariables->at(0).defaultValue);
    EXPECT_FALSE(updated->isEnabled);
    EXPECT_EQ(store.findStyle(5)->userVariables, five.userVariables) << "nothing new, nothing lost";

    EXPECT_FALSE(hasFile());
    run->cancelClicked();
    EXPECT_EQ(closed, 0);
    run->doneClicked();
    EXPECT_EQ(closed, 1);
    dispatcher.runAll();
    EXPECT_TRUE(hasFile());
}

TEST_F(UpdateRunTest, bringsInNewImportsWithTheUsersValues) {
    serve(1, userCSS("Less", "1", "a {}", "red"));
    styleContainer style = userStyle(1);
    style.userVariables->at(0).currentValue = "mine";
    style.preprocessor = "less";
    failing = "mine";
    compiled(style, "");
    open({style});
    dispatcher.runAll();
    EXPECT_EQ(run->log(), "Checking for updates...\n\"Less\" is already up-to-date.\n"
                          "Updates completed. 0 styles were updated.");
    failing.reset();
    for (const char* version : {"one", "two"}) {
        library = version;
        run = runs.make();
        run->begin();
        dispatcher.runAll();
        EXPECT_THAT(run->log(), HasSubstr("\"Less\" was updated"));
        EXPECT_EQ(store.findStyle(1)->styleData.compSections->at(0).code, version);
    }
    EXPECT_EQ(store.findStyle(1)->userVariables, style.userVariables);
}

TEST_F(UpdateRunTest, theFifthCancelClosesAtOnceAndNothingIsLost) {
    open({siteStyle(1, "One", "m", "n"), siteStyle(2, "Two", "m", "n")});
    for (int i = 0; i < 4; ++i)
        run->cancelClicked();
    EXPECT_TRUE(run->isRunning() && run->isCanceled() && closed == 0);
    run->cancelClicked();
    EXPECT_EQ(closed, 1);
    EXPECT_EQ(refreshed, 1);
    dispatcher.runAll();
    EXPECT_THAT(names(), ElementsAre("New One", "Two"));
    EXPECT_TRUE(hasFile()) << "what was changed after closing";
    EXPECT_EQ(refreshed, 2);
}

TEST_F(UpdateRunTest, quittingSavesWhatWasChangedAndDropsTheRest) {
    open({siteStyle(1, "One", "m", "n"), siteStyle(2, "Two", "m", "n")});
    step();
    EXPECT_FALSE(hasFile());
    SteppedDispatcher::step(dispatcher.backgroundTasks);
    runs.stop();
    dispatcher.runAll();
    EXPECT_TRUE(hasFile());
    EXPECT_THAT(names(), ElementsAre("New One", "Two"));

    run.reset();
    EXPECT_THAT(dispatcher.backgroundTasks, IsEmpty()) << "nothing more to save";
}

TEST_F(UpdateRunTest, passesOverAStyleThatHasGone) {
    open({siteStyle(1, "One", "m", "n"), siteStyle(2, "Two", "m", "n"),
          siteStyle(3, "Three", "m", "n")});
    store.deleteStyle(1);
    SteppedDispatcher::step(dispatcher.backgroundTasks);
    store.deleteStyle(0);
    dispatcher.runAll();
    EXPECT_EQ(run->log(), "Checking for updates...\n"
                          "\"Three\" was updated to the latest version.\n"
                          "Updates completed. 1 style was updated.");
}

} // namespace
} // namespace tessaril
