#include "model/database_json.h"
#include "support/sample_styles.h"
#include "support/stand_in_machine.h"
#include "support/test.h"

namespace tessaril {
namespace {

struct CloudStartTest : ::testing::Test, StandInMachine {
    CloudStartTest() {
        for (const char* key : {"UseiCloud", "hasConfigurediCloud"})
            application.preferences().set(key, true);
        application.preferences().set("isFirstLaunch", true);
        application.styleListShown();
        EXPECT_TRUE(isLocked()) << "at once";
    }
    bool isLocked() { return application.styleList().isLockedForSync(); }
    void runLaunchChecks() {
        dispatcher.passDelays();
        for (bool any = true; any;) {
            dispatcher.runAll();
            any = recordServer.deliverNext();
        }
    }

    Application application{surroundings()};
};

TEST_F(CloudStartTest, TheListIsReleasedHoweverTheLaunchGoesOn) {
    runLaunchChecks();
    EXPECT_FALSE(isLocked());
    EXPECT_TRUE(recordServer.records.contains({"styleDatabase", "styleDatabase"}));
}

TEST_F(CloudStartTest, WithoutAnAccountSyncIsSwitchedOff) {
    records.status = accountStatus::notAvailable;
    runLaunchChecks();
    EXPECT_FALSE(isLocked() || application.preferences().boolean("UseiCloud"));
    EXPECT_THAT(alerts.alerts, IsEmpty());
}

TEST_F(CloudStartTest, TheSwitchMayBeFasterThanTheLaunchChecks) {
    application.preferences().set("UseiCloud", false);
    application.cloudSync().switchedOff();
    runLaunchChecks();
    EXPECT_FALSE(isLocked());

    // Between the question for the account and its answer.
    application.preferences().set("UseiCloud", true);
    application.styleListShown();
    dispatcher.passDelays();
    dispatcher.runAll();
    application.preferences().set("UseiCloud", false);
    application.cloudSync().switchedOff();
    runLaunchChecks();
    EXPECT_FALSE(isLocked());

    application.preferences().set("UseiCloud", true);
    application.styleListShown();
    application.cloudSync().begin();
    recordServer.deliver();
    dispatcher.runAll();
    runLaunchChecks();
    EXPECT_FALSE(isLocked());
}

TEST_F(CloudStartTest, TheListStaysLockedUntilTheSwitchHasBegun) {
    application.cloudSwitch().paneShown();
    recordServer.deliver();
    dispatcher.passDelays();
    while (SteppedDispatcher::step(dispatcher.mainTasks)) {
    } // the launch checks ask for the account
    application.cloudSwitch().turn(false);
    application.cloudSwitch().turn(true);
    recordServer.deliver();
    while (SteppedDispatcher::step(dispatcher.mainTasks)) {
    }
    EXPECT_TRUE(isLocked());
    runLaunchChecks();
    EXPECT_FALSE(isLocked());
}

TEST_F(CloudStartTest, TheFirstSyncBeginsByItselfWithABackup) {
    application.preferences().set("hasConfigurediCloud", false);
    application.preferences().set("UseiCloud", false);
    recordServer.records[{"styleDatabase", "styleDatabase"}] = {
        .id = {"styleDatabase", "styleDatabase"},
        .file = std::make_shared<const std::string>(
            *encodeDatabase({.styles = {namedStyle("Theirs", 1)}})),
        .changeTag = "1"};
    application.store().appendStyle(namedStyle("Mine", 2));
    runLaunchChecks();
    EXPECT_TRUE(application.preferences().boolean("UseiCloud"));
    EXPECT_TRUE(application.preferences().boolean("hasConfigurediCloud"));
    EXPECT_EQ(application.store().countStyles(), 2U);
    const auto backup = decodeDatabase(files.contents["/container/styledb-pre-icloud.sdb"]);
    ASSERT_TRUE(backup && backup->styles.size() == 1U) << "as it was before the merge";
    EXPECT_EQ(backup->styles[0].styleData.name, "Mine");
}

TEST_F(CloudStartTest, AnotherServerIsAnotherSync) {
    runLaunchChecks();
    application.preferences().set("recordStoreAddress", "/other.db");
    dispatcher.runAll();
    EXPECT_FALSE(application.preferences().boolean("UseiCloud"));
}

} // namespace
} // namespace tessaril
