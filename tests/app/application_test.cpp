#include "app/link.h"
#include "events/notification_names.h"
#include "model/database_json.h"
#include "preferences/preference_keys.h"
#include "support/captured_log.h"
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

TEST_F(ApplicationTest, warnsOncePerProcessButNotOnTheFirstLaunch) {
    application.styleListShown();
    ASSERT_EQ(dispatcher.delayedTasks.size(), 1U);
    EXPECT_EQ(dispatcher.delayedTasks[0].delay, std::chrono::milliseconds(500));
    dispatcher.passDelays();
    dispatcher.runAll();
    EXPECT_THAT(alerts.questions, IsEmpty());
    EXPECT_EQ(standard.values.at("isFirstLaunch"), preferenceValue(false));

    EXPECT_CALL(extension, showPreferences());
    alerts.answers.push_back({.button = 0});
    launch(application);
    launch(application);
    EXPECT_THAT(
        alerts.questions,
        ElementsAre(alertQuestion{
            .title = "Extension Not Enabled",
            .text = "To use your custom styles, you'll need to enable the Tessaril extension in "
                    "Safari's Preferences.",
            .buttons = {"Open Safari Preferences", "Later"},
            .offersSuppression = true}));
    EXPECT_FALSE(standard.values.contains("WarnIfDisabled"));
}

TEST_F(ApplicationTest, theWarningCanBeTurnedOff) {
    standard.setValue("isFirstLaunch", false);
    EXPECT_CALL(extension, isEnabled()).WillOnce(Return(true)).WillRepeatedly(Return(false));
    EXPECT_CALL(extension, showPreferences()).Times(0);
    launch(application);
    EXPECT_THAT(alerts.questions, IsEmpty()) << "enabled";

    alerts.answers.push_back({.button = 1, .suppressed = true});
    launch(application);
    EXPECT_EQ(standard.values.at("WarnIfDisabled"), preferenceValue(false));
    Application next(surroundings());
    launch(next);
    EXPECT_EQ(alerts.questions.size(), 1U);
}

TEST_F(ApplicationTest, opensFilesByTheirExactExtension) {
    const std::string block = "@-moz-document domain(\"a\") { b {} }";
    std::vector<std::filesystem::path> paths = {"/a.less", "/b.styl",    "/c.css", "/d.txt",
                                                "/e.CSS",  "/f.sdb.txt", "/g"};
    for (const auto& path : paths)
        files.contents[path] = block;
    files.contents["/in.sdb"] = *encodeDatabase({.styles = {namedStyle("From file", 1)}});
    paths.push_back("/in.sdb");
    application.openFiles(paths);
    EXPECT_THAT(alerts.questions,
                ElementsAre(alertQuestion{
                    .title = "Do you want to import the styles from the Style Database file at "
                             "/in.sdb?",
                    .text = "This will add the styles from this file to your current style "
                            "database.",
                    .buttons = {"Yes", "No"}}));
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
    EXPECT_THAT(idsFor("tessaril://openstyle/12/x/34"), ElementsAre(12, 34));
    EXPECT_THAT(idsFor("tessaril://OpenStyle/0?5#6"), ElementsAre(0));
    EXPECT_THAT(idsFor("other://me@openstyle:80/-4294967295"), ElementsAre(4294967295));
    EXPECT_THAT(idsFor("tessaril://openstyle/%31%32/99999999999999999999"), ElementsAre(12));
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
    EXPECT_CALL(externals, composeEmail("support@tessaril.example", "I need some Tessaril help!"))
        .WillOnce(Return(true));
    EXPECT_CALL(externals, openAddress("https://tessaril.example/"));
    application.emailSupport();
    application.openWebsite();
    EXPECT_THAT(alerts.alerts, IsEmpty());

    standard.setValue(preferenceKeys::supportAddress, "help@other.example");
    EXPECT_CALL(externals, composeEmail("help@other.example", ::testing::_));
    application.emailSupport();
    EXPECT_THAT(alerts.alerts,
                ElementsAre(RecordingAlerts::shown{
                    "No Email Client Set Up",
                    "However, you can still email me at help@other.example if you need to!"}));
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

TEST(Preferences, giveDefaultsThatAreNeverWritten) {
    MemoryPreferences standardStore, sharedStore;
    Preferences standard(standardStore);
    Preferences shared(sharedStore);
    registerPreferenceDefaults(standard, shared, 4294967295, true);
    EXPECT_EQ(standard.string("DefaultNamespace"), "tessaril4294967295");
    EXPECT_EQ(standard.string("ACETheme"), "dark");
    EXPECT_LT(standard.real("lastSuccessfulSync"), -1e9);
    EXPECT_FALSE(shared.boolean("InjectIframes"));
    EXPECT_TRUE(shared.boolean("toggleShortcut"));
    EXPECT_TRUE(standardStore.values.empty() && sharedStore.values.empty());

    standard.set("DefaultAuthor", "");
    EXPECT_EQ(standard.string("DefaultAuthor"), "") << "an emptied text is a value";
    standardStore.setValue("ACEFontSize", "large");
    EXPECT_EQ(standard.integer("ACEFontSize"), 12) << "a value of another type is none";
    EXPECT_EQ(standard.string("unknown"), "");
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
