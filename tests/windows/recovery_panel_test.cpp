#include "events/notification_names.h"
#include "support/list_window.h"
#include "support/test.h"
#include "windows/other_windows.h"
#include "windows/recovery_panel.h"

#include <QtWidgets>

namespace tessaril {
namespace {

struct RecoveryPanelTest : ::testing::Test, ListWindow {
    RecoveryPanelTest() { showWindow(); }

    void remove(const std::vector<styleContainer>& styles) {
        liveDatabase::styleList removed;
        for (const styleContainer& style : styles)
            removed.push_back(std::make_shared<const styleContainer>(style));
        application.recoveryList().add(removed);
        application.notificationCenter().post(notifications::deletedStylesChanged);
        settle();
    }
    void settle() {
        machine.dispatcher.runAll();
        QCoreApplication::processEvents();
    }
    void open() {
        others.openRecoveryPanel(window);
        panel = window.findChild<RecoveryPanel*>();
        ASSERT_TRUE(panel && QTest::qWaitForWindowActive(panel));
    }
    QListWidget& list() { return *panel->findChild<QListWidget*>(); }
    QPushButton& button() { return *panel->findChild<QPushButton*>("recoverSelectedButton"); }
    void click(int row, Qt::KeyboardModifiers keys = {}) {
        QTest::mouseClick(list().viewport(), Qt::LeftButton, keys,
                          list().visualItemRect(list().item(row)).center());
    }
    std::vector<std::int64_t> ids() {
        std::vector<std::int64_t> all;
        for (const auto& row : application.styleList().styles())
            all.push_back(row->uniqueID);
        return all;
    }

    OtherWindows others{application, [](QWidget*) { return shownWebView(); }, "/none"};
    QPointer<RecoveryPanel> panel;
};

TEST_F(RecoveryPanelTest, RecoversTheSelectedStylesFromTheLastToTheFirst) {
    remove({namedStyle("a", 1), namedStyle("b", 2), namedStyle("c", 3), fullStyle(4)});
    open();
    EXPECT_FALSE(button().isEnabled());
    click(0);
    click(2, Qt::ControlModifier);
    EXPECT_TRUE(button().isEnabled());
    remove({namedStyle("e", 5)}); // by a merge meanwhile
    EXPECT_EQ(list().count(), 5);
    click(3, Qt::ControlModifier);
    application.styleList().setLockedForSync(true);
    QTest::keyClick(&list(), Qt::Key_Return);
    EXPECT_TRUE(ids().empty() && machine.alerts.beeps == 1 && button().isEnabled());
    application.styleList().setLockedForSync(false);
    QTest::mouseClick(&button(), Qt::LeftButton);
    settle();
    EXPECT_THAT(ids(), ElementsAre(4, 3, 1));
    EXPECT_EQ(*application.store().findStyle(4), fullStyle(4));
    EXPECT_THAT(application.recoveryList().names(), ElementsAre("b", "e"));
    EXPECT_TRUE(list().count() == 2 && !button().isEnabled());

    click(1);
    QTest::mouseDClick(list().viewport(), Qt::LeftButton, {},
                       list().visualItemRect(list().item(1)).center());
    settle();
    click(0);
    QTest::keyClick(&list(), Qt::Key_Return);
    settle();
    EXPECT_THAT(ids(), ElementsAre(4, 3, 1, 5, 2));
    EXPECT_TRUE(panel->findChild<QLabel*>("emptyNote")->isVisible());
    QTest::keyClick(panel, Qt::Key_W, Qt::ControlModifier);
    ASSERT_TRUE(eventually([&] { return !panel; }));
}

TEST_F(RecoveryPanelTest, OpensOnceFromThePreferencesThatFollowTheList) {
    others.openPreferences(window);
    auto* recover = window.findChild<QPushButton*>("recoverButton");
    ASSERT_TRUE(recover && !recover->isEnabled());
    const std::string longName = "a\nb\u202E" + std::string(10'000, 'x');
    remove(std::vector(10'000, namedStyle(longName, 1)));
    EXPECT_TRUE(recover->isEnabled());
    for (int i = 0; i < 2; ++i)
        QTest::mouseClick(recover, Qt::LeftButton);
    EXPECT_EQ(window.findChildren<RecoveryPanel*>().size(), 1);
    panel = window.findChild<RecoveryPanel*>();
    ASSERT_TRUE(panel && list().count() == 10'000);
    EXPECT_TRUE(list().item(9'999)->text().startsWith("a bx"));
    EXPECT_LT(list().item(9'999)->text().size(), 1000);
    QTest::keyClick(&list(), Qt::Key_F2);
    EXPECT_FALSE(list().findChild<QLineEdit*>()) << "the names are not to be edited";
    QTest::keyClick(&list(), Qt::Key_Escape);
    EXPECT_FALSE(panel && panel->isVisible());
    application.recoveryList().recover({0});
    settle();
    EXPECT_TRUE(recover->isEnabled());
}

} // namespace
} // namespace tessaril
