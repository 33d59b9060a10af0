#include "app/link.h"
#include "events/notification_names.h"
#include "model/database_json.h"
#include "preferences/preference_keys.h"
#include "support/sample_styles.h"
#include "support/stand_in_machine.h"
#include "support/test.h"

namespace tessaril {
namespace {

struct ApplicationTest : ::testing::Test, StandInMachine {
    /// Shows the list and lets the launch checks run.
    void launch(Application& launched) {
        launched.styleListShown();
        dispatcher.passDelays();
        dispatcher.runAll();
    }

    Application application{surroundings()};
};

TEST_F(ApplicationTest, warnsOncePerProcessButNotOnTheFirstLaunchNorOnceTurnedOff) {
    application.styleListShown();
    ASSERT_EQ(dispatcher.delayedTasks.size(), 1U);
    EXPECT_EQ(dispatcher.delayedTasks[0].delay, std::chrono::milliseconds(500));
    dispatcher.passDelays();
    dispatcher.runAll();
    EXPECT_THAT(alerts.questions, IsEmpty());
    EXPECT_EQ(standard.values.at("isFirstLaunch"), preferenceValue(false));

    EXPECT_CALL(extension, isEnabled()).WillOnce(Return(true)).WillRepeatedly(Return(false));
    EXPECT_CALL(extension, showPreferences()).Times(1);
    alerts.answers = {{.button = 0}, {.button = 1, .suppressed = true}};
    for (const std::size_t asked : {0, 1, 1}) { // enabled; not enabled; once is enough
        launch(application);
        EXPECT_EQ(alerts.questions.size(), asked);
    }
    EXPECT_THAT(alerts.questions[0].buttons, ElementsAre("Open Safari Preferences", "Later"));
    EXPECT_FALSE(standard.values.contains("WarnIfDisabled"));
    for (int start = 0; start < 2; ++start) {
        Application next(surroundings());
        launch(next);
        EXPECT_EQ(alerts.questions.size(), 2U);
    }
    EXPECT_TRUE(alerts.questions[1].offersSuppression);
    EXPECT_EQ(standard.values.at("WarnIfDisabled"), preferenceValue(false));
}

TEST_F(ApplicationTest, opensFilesByTheirExactExtension) {
    std::vector<std::filesystem::path> paths = {"/a.less", "/b.styl",    "/c.css", "/d.txt",
                                                "/e.CSS",  "/f.sdb.txt", "/g",     "/in.sdb"};
    for (const auto& path : paths)
        files.contents[path] = "@-moz-document domain(\"a\") { b {} }";
    files.contents["/in.sdb"] = *encodeDatabase({.styles = {namedStyle("From file", 1)}});
    application.openFiles(paths);
    ASSERT_THAT(alerts.questions, SizeIs(1));
    EXPECT_THAT(alerts.questions[0].title, EndsWith("the Style Database file at /in.sdb?"));
    EXPECT_THAT(alerts.questions[0].buttons, ElementsAre("Yes", "No"));
    dispatcher.runAll();
    EXPECT_EQ(application.store().snapshot().styles.size(), 3U) << "answered No";

    int refreshed = 0;
    const auto subscription = application.notificationCenter().observe(
        notifications::refreshTable, [&](const notification&) {
            ++refreshed;
            EXPECT_EQ(application.store().snapshot().styles.size(), 4U) << "after the merge";
        });
    alerts.answers.push_back({.button = 0});
    application.openFiles({"/in.sdb"});
    EXPECT_EQ(refreshed, 0);
    dispatcher.runAll();
    EXPECT_EQ(refreshed, 1);
}

TEST_F(ApplicationTest, aLinkOpensEveryStyleThatItNames) {
    std::vector<std::int64_t> opened;
    const auto subscription = application.notificationCenter().observe(
        notifications::openStyleNotif, [&](const notification& n) { opened.push_back(*n.id()); });
    const auto idsFor = [&](std::string_view address) {
        opened.clear();
        application.openLink(address);
        return opened;
    };
    EXPECT_THAT(idsFor("tessaril://openstyle/%31%32/x/99999999999999999999/34"),
                ElementsAre(12, 34));
    EXPECT_THAT(idsFor("tessaril://OpenStyle/0?5#6"), ElementsAre(0));
    EXPECT_THAT(idsFor("other://me@openstyle:80/-4294967295"), ElementsAre(4294967295));
    for (const char* address : {"tessaril://openstyle", "tessaril://openstyle/x", "openstyle/12",
                                "tessaril:openstyle/12", "tessaril://openstyle/1 2",
                                "tessaril://openstyle/%3", "://openstyle/1", "", "tessaril://"})
        EXPECT_THAT(idsFor(address), IsEmpty()) << address;

    CapturedLog log;
    EXPECT_THAT(idsFor("tessaril://elsewhere/12"), IsEmpty());
    EXPECT_EQ(log.take(), "Unsupported link: tessaril://elsewhere/12\n");
}

TEST_F(ApplicationTest, OpensNothingBeforeItHasAskedWhatWasUnsaved) {
    files.contents["/drafts/7.draft"] = *encodeDatabase({.styles = {namedStyle("Unsaved", 7)}});
    std::vector<std::string> order;
    const auto open = [&](const char* what) {
        application.onceLaunched([&order, what] { order.emplace_back(what); });
    };
    open("argument");
    alerts.whileAsking = [&] {
        order.emplace_back("question");
        open("later start");
        dispatcher.runAll(); // as a question does
    };
    launch(application);
    open("last");
    dispatcher.runAll();
    EXPECT_THAT(order, ElementsAre("question", "argument", "later start", "last"));
}

TEST_F(ApplicationTest, theHelpMenuReachesTheMakers) {
    EXPECT_CALL(externals, openAddress("https://tessaril.example/"));
    application.openWebsite();
    standard.setValue(preferenceKeys::supportAddress, "help@other.example");
    EXPECT_CALL(externals, composeEmail("help@other.example", "I need some Tessaril help!"))
        .WillOnce(Return(true))
        .WillOnce(Return(false));
    application.emailSupport();
    EXPECT_THAT(alerts.alerts, IsEmpty());
    application.emailSupport();
    EXPECT_THAT(alerts.alerts.at(0).text, HasSubstr(" help@other.example "));
}

TEST_F(ApplicationTest, updatesAndLooksForIconsUntilItQuits) {
    styleContainer style = namedStyle("style", 1);
    style.source = sourceUserCSS;
    style.downloadedFrom = "https://a.example/1.css";
    style.styleData.sections.front().domains = {"a.example"};
    application.store().appendStyle(style);
    application.styleList().refreshTable();
    urls.responses["https://a.example/favicon.ico"].body = "picture 1";
    standard.setValue(preferenceKeys::updateOnLaunch, true);
    launch(application);
    EXPECT_THAT(urls.taken(),
                UnorderedElementsAre("https://a.example/favicon.ico", "https://a.example/1.css"));
    application.styleUpdates().updateAllClicked();
    const auto run = application.updateRuns().make();
    run->begin();
    style.uniqueID = 2;
    style.styleData.sections.front().domains = {"b.example"};
    application.store().appendStyle(style);
    application.notificationCenter().post(notifications::addLatestStyle);
    application.stopLoading();
    dispatcher.runAll();
    EXPECT_THAT(urls.taken(), IsEmpty());
    EXPECT_TRUE(urls.cancelled && pictures.cancelled);
}

TEST(NotificationCenter, survivesHandlersThatComeAndGoWhileItDelivers) {
    NotificationCenter center;
    std::vector<std::string> heard;
    NotificationCenter::Subscription second, late;
    const auto first = center.observe("x", [&](const notification&) {
        heard.emplace_back("first");
        second = {};
        late = center.observe("x", [&](const notification&) { heard.emplace_back("late"); });
    });
    second = center.observe("x", [&](const notification&) { heard.emplace_back("second"); });
    center.post("x");
    EXPECT_THAT(heard, ElementsAre("first")) << "the second left, the late one came too late";
    center.post("y");
    center.post("x");
    EXPECT_THAT(heard, ElementsAre("first", "first"));
}

} // namespace
} // namespace tessaril
