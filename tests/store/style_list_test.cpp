#include "events/notification_names.h"
#include "model/database_json.h"
#include "store/style_list.h"
#include "support/memory_files.h"
#include "support/recording_alerts.h"
#include "support/sample_styles.h"
#include "support/stepped_dispatcher.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tessaril {

namespace {

using namespace testing;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class StyleListTest : public ::testing::Test, public StyleListObserver {
protected:
    StyleListTest() {
        files.contents["/container/styledb.sdb"] =
            *encodeDatabase({.styles = {namedStyle("A", 1), namedStyle("B", 2)}});
        list.setObserver(this);
    }

    void rowsReset() override { told.emplace_back("reset"); }
    void rowAppended() override { told.emplace_back("appended"); }
    void rowChanged(std::size_t row) override { told.push_back("changed " + std::to_string(row)); }
    void selectRow(std::size_t row) override { told.push_back("select " + std::to_string(row)); }

    std::vector<std::string> tellings() {
        dispatcher.runAll();
        return std::exchange(told, {});
    }

    std::vector<std::string> names() {
        std::vector<std::string> result;
        for (const styleObject& row : list.styles())
            result.push_back(row.name);
        return result;
    }

    MemoryFiles files;
    MemoryChannel channel{files};
    RecordingAlerts alerts;
    SteppedDispatcher dispatcher;
    NotificationCenter center;
    MemoryPreferences stored;
    Preferences preferences{stored};
    StyleStore store{{.files = files,
                      .channel = channel,
                      .alerts = alerts,
                      .dispatcher = dispatcher,
                      .center = center,
                      .preferences = preferences,
                      .compileStyle = [](styleContainer&) {}},
                     "/container"};
    StyleList list{store, center, dispatcher, alerts};
    std::vector<std::string> told;
};

TEST_F(StyleListTest, rowsFollowTheDatabaseByTheBus) {
    EXPECT_THAT(tellings(), ElementsAre("reset"));
    EXPECT_THAT(names(), ElementsAre("A", "B"));

    store.appendStyle(namedStyle("C", 3));
    center.post(notifications::addLatestStyle);
    EXPECT_THAT(tellings(), ElementsAre("appended"));
    EXPECT_THAT(names(), ElementsAre("A", "B", "C"));

    // Rows and database disagree: everything is read anew.
    store.appendStyle(namedStyle("D", 4));
    store.appendStyle(namedStyle("E", 5));
    center.post(notifications::addLatestStyle);
    EXPECT_THAT(tellings(), ElementsAre("reset", "select 4"));
    EXPECT_THAT(names(), ElementsAre("A", "B", "C", "D", "E"));

    center.post(notifications::refreshTableAndScroll);
    EXPECT_THAT(tellings(), ElementsAre("reset", "select 4"));
    store.resetDatabase();
    center.post(notifications::addLatestStyle);
    EXPECT_THAT(tellings(), IsEmpty()) << "no style, no row";
    center.post(notifications::refreshTable);
    center.post(notifications::refreshTableAndScroll);
    EXPECT_THAT(tellings(), ElementsAre("reset", "reset"));
    EXPECT_THAT(names(), IsEmpty());
}

TEST_F(StyleListTest, theCheckBoxFlipsTheStyleAndSaves) {
    tellings();
    list.onToggle(1);
    EXPECT_THAT(tellings(), ElementsAre("changed 1"));
    EXPECT_FALSE(list.styles()[1].isEnabled);
    EXPECT_FALSE(store.styleWithID(2)->isEnabled);
    EXPECT_TRUE(store.styleWithID(1)->isEnabled);
    EXPECT_TRUE(files.contents.contains("wormhole/styleDBUpdated"));
    list.onToggle(1);
    EXPECT_TRUE(store.styleWithID(2)->isEnabled);

    list.setLockedForSync(true);
    list.onToggle(0);
    EXPECT_EQ(alerts.beeps, 1);
    EXPECT_TRUE(store.styleWithID(1)->isEnabled);
    EXPECT_TRUE(list.styles()[0].isEnabled);
    list.onToggle(17);
    EXPECT_EQ(alerts.beeps, 1);
}

TEST_F(StyleListTest, aLinkToAStyleSelectsItsRow) {
    tellings();
    center.post(notifications::openStyleNotif, 2);
    center.post(notifications::openStyleNotif, 3);
    EXPECT_THAT(tellings(), ElementsAre("select 1"));
}

} // namespace

} // namespace tessaril
