#include "events/notification_names.h"
#include "store/style_list.h"
#include "support/store_machine.h"

#include <gmock/gmock.h>

namespace tessaril {
namespace {

using namespace testing;
using ::testing::ElementsAre, ::testing::IsEmpty;

class StyleListTest : public ::testing::Test, public StyleListObserver, public StoreMachine<> {
protected:
    StyleListTest() {
        putDocument({namedStyle("A", 1), namedStyle("B", 2)});
        list.setObserver(this);
        EXPECT_THAT(tellings(), ElementsAre("reset"));
    }

    void rowsReset() override { told.emplace_back("reset"); }
    void rowAppended() override { told.emplace_back("appended"); }
    void rowChanged(std::size_t row) override { told.push_back("changed " + std::to_string(row)); }
    void selectRow(std::size_t row) override { told.push_back("select " + std::to_string(row)); }

    std::vector<std::string> tellings() {
        dispatcher.runAll();
        return std::exchange(told, {});
    }

    std::string shown() const {
        std::string all;
        for (const styleObject& row : list.styles())
            all += row.name;
        return all;
    }

    StyleList list{store, center, dispatcher, alerts};
    std::vector<std::string> told;
};

TEST_F(StyleListTest, rowsFollowTheDatabaseByTheBus) {
    EXPECT_EQ(shown(), "AB");
    center.post(notifications::openStyleNotif, 2);
    center.post(notifications::openStyleNotif, 3);
    EXPECT_THAT(tellings(), ElementsAre("select 1")) << "a link to a style selects its row";

    store.appendStyle(namedStyle("C", 3));
    center.post(notifications::addLatestStyle);
    EXPECT_THAT(tellings(), ElementsAre("appended"));
    EXPECT_EQ(shown(), "ABC");

    store.appendStyle(namedStyle("D", 4));
    store.appendStyle(namedStyle("E", 5));
    center.post(notifications::addLatestStyle);
    EXPECT_THAT(tellings(), ElementsAre("reset", "select 4")) << "more than one is new: read anew";
    EXPECT_EQ(shown(), "ABCDE");

    center.post(notifications::refreshTableAndScroll);
    EXPECT_THAT(tellings(), ElementsAre("reset", "select 4"));
    store.resetDatabase();
    center.post(notifications::addLatestStyle);
    EXPECT_THAT(tellings(), IsEmpty()) << "no style, no row";
    center.post(notifications::refreshTable);
    center.post(notifications::refreshTableAndScroll);
    EXPECT_THAT(tellings(), ElementsAre("reset", "reset"));
    EXPECT_EQ(shown(), "");
}

TEST_F(StyleListTest, theCheckBoxFlipsTheStyleAndSaves) {
    list.onToggle(1);
    EXPECT_THAT(tellings(), ElementsAre("changed 1"));
    EXPECT_FALSE(list.styles()[1].isEnabled);
    EXPECT_TRUE(written().styles[0].isEnabled);
    EXPECT_FALSE(written().styles[1].isEnabled);
    list.onToggle(1);
    EXPECT_TRUE(store.styleWithID(2)->isEnabled);

    list.setLockedForSync(true);
    list.onToggle(0);
    list.onToggle(17);
    EXPECT_EQ(alerts.beeps, 1);
    EXPECT_TRUE(store.styleWithID(1)->isEnabled);
    EXPECT_TRUE(list.styles()[0].isEnabled);
}

} // namespace
} // namespace tessaril
