#include "app/application.h"
#include "app/link.h"
#include "events/notification_names.h"
#include "model/database_json.h"
#include "preferences/preference_keys.h"
#include "support/captured_log.h"
#include "support/sample_styles.h"
#include "support/stand_in_machine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tessaril {

namespace {

using namespace testing;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ApplicationTest : public ::testing::Test {
protected:
    /// Shows the list and lets the launch checks run.
    void launch() {
        application.styleListShown();
        machine.dispatcher.passDelays();
        machine.dispatcher.runAll();
    }

    StandInMachine machine;
    Application application{machine.surroundings()};
};

TEST_F(ApplicationTest, launchChecksRunHalfASecondAfterTheListIsShown) {
    application.styleListShown();
    ASSERT_EQ(machine.dispatcher.delayedTasks.size(), 1U);
    EXPECT_EQ(machine.dispatcher.delayedTasks[0].delay, std::chrono::milliseconds(500));
}

TEST_F(ApplicationTest, warnsOncePerProcessButNotOnTheFirstLaunch) {
    launch();
    EXPECT_THAT(machine.alerts.questions, IsEmpty());
    EXPECT_EQ(machine.standard.values.at("isFirstLaunch"), preferenceValue(false));

    machine.alerts.answers.push_back({.button = 0});
    launch();
    launch();
    EXPECT_THAT(
        machine.alerts.questions,
        ElementsAre(alertQuestion{
            .title = "Extension Not Enabled",
            .text = "To use your custom styles, you'll need to enable the Tessaril extension in "
                    "Safari's Preferences.",
            .buttons = {"Open Safari Preferences", "Later"},
            .offersSuppression = true}));
    EXPECT_EQ(machine.extension.preferencesShown, 1);
    EXPECT_FALSE(machine.standard.values.contains("WarnIfDisabled"));
}

TEST_F(ApplicationTest, theWarningCanBeTurnedOff) {
    machine.standard.setValue("isFirstLaunch", false);
    machine.extension.enabled = true;
    launch();
    EXPECT_THAT(machine.alerts.questions, IsEmpty()) << "enabled";

    machine.extension.enabled = false;
    machine.alerts.answers.push_back({.button = 1, .suppressed = true});
    launch();
    EXPECT_EQ(machine.extension.preferencesShown, 0);
    EXPECT_EQ(machine.standard.values.at("WarnIfDisabled"), preferenceValue(false));

    Application next(machine.surroundings());
    next.styleListShown();
    machine.dispatcher.passDelays();
    machine.dispatcher.runAll();
    EXPECT_EQ(machine.alerts.questions.size(), 1U);
}

TEST_F(ApplicationTest, opensFilesByTheirExactExtension) {
    const std::string block = "@-moz-document domain(\"a\") { b {} }";
    for (const char* name :
         {"/a.less", "/b.styl", "/c.css", "/d.txt", "/e.CSS", "/f.sdb.txt", "/g"})
        machine.files.contents[name] = block;
    machine.files.contents["/in.sdb"] = *encodeDatabase({.styles = {namedStyle("From file", 1)}});

    application.openFiles(
        {"/in.sdb", "/a.less", "/d.txt", "/e.CSS", "/b.styl", "/f.sdb.txt", "/g", "/c.css"});
    EXPECT_THAT(machine.alerts.questions,
                ElementsAre(alertQuestion{
                    .title = "Do you want to import the styles from the Style Database file at "
                             "/in.sdb?",
                    .text = "This will add the styles from this file to your current style "
                            "database.",
                    .buttons = {"Yes", "No"}}));
    machine.dispatcher.runAll();
    EXPECT_EQ(application.store().snapshot().styles.size(), 3U) << "answered No";

    int refreshed = 0;
    const auto subscription = application.notificationCenter().observe(
        notifications::refreshTable, [&](const notification&) {
            ++refreshed;
            EXPECT_EQ(application.store().snapshot().styles.size(), 4U) << "after the merge";
        });
    machine.alerts.answers.push_back({.button = 0});
    application.openFiles({"/in.sdb"});
    EXPECT_EQ(refreshed, 0);
    machine.dispatcher.runAll();
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

TEST_F(ApplicationTest, theHelpMenuReachesTheMakers) {
    application.emailSupport();
    EXPECT_THAT(machine.externals.emails,
                ElementsAre("support@tessaril.example: I need some Tessaril help!"));
    EXPECT_THAT(machine.alerts.alerts, IsEmpty());

    machine.externals.hasEmail = false;
    machine.standard.setValue(preferenceKeys::supportAddress, "help@other.example");
    application.emailSupport();
    EXPECT_THAT(machine.alerts.alerts,
                ElementsAre(RecordingAlerts::shown{
                    "No Email Client Set Up",
                    "However, you can still email me at help@other.example if you need to!"}));
    application.openWebsite();
    EXPECT_EQ(machine.externals.addresses.size(), 1U);
}

TEST(Preferences, giveDefaultsThatAreNeverWritten) {
    MemoryPreferences standardStore;
    MemoryPreferences sharedStore;
    Preferences standard(standardStore);
    Preferences shared(sharedStore);
    registerPreferenceDefaults(standard, shared, 4294967295, true);
    EXPECT_EQ(standard.string("DefaultNamespace"), "tessaril4294967295");
    EXPECT_EQ(standard.string("ACETheme"), "dark");
    EXPECT_EQ(standard.integer("ACEFontSize"), 12);
    EXPECT_TRUE(standard.boolean("isFirstLaunch"));
    EXPECT_LT(standard.real("lastSuccessfulSync"), -1e9);
    EXPECT_FALSE(shared.boolean("InjectIframes"));
    EXPECT_TRUE(shared.boolean("toggleShortcut"));
    EXPECT_TRUE(standardStore.values.empty());
    EXPECT_TRUE(sharedStore.values.empty());

    standard.set("DefaultAuthor", "");
    EXPECT_EQ(standard.string("DefaultAuthor"), "") << "an emptied text is a value";
    standardStore.setValue("ACEFontSize", "large");
    EXPECT_EQ(standard.integer("ACEFontSize"), 12) << "a value of another type is none";
    EXPECT_EQ(standard.string("unknown"), "");
}

TEST(NotificationCenter, survivesHandlersThatComeAndGoWhileItDelivers) {
    NotificationCenter center;
    std::vector<std::string> heard;
    NotificationCenter::Subscription second;
    NotificationCenter::Subscription late;
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
