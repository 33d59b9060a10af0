#include "events/notification_names.h"
#include "support/list_window.h"
#include "support/test.h"
#include "windows/spinner.h"

namespace tessaril {
namespace {

/// A machine whose user begins to sync.
struct SyncOverlayTest : ::testing::Test, ListWindow {
    ~SyncOverlayTest() override { application.finish(); }

    void openPreferences() {
        others.openPreferences(window);
        ASSERT_TRUE(eventually([&] {
            preferences = QApplication::activeWindow();
            return preferences && preferences->windowTitle() == "Preferences";
        }));
        settle();
    }
    QCheckBox& cloudBox() { return partOf<QCheckBox>(*preferences, "UseiCloud"); }
    void clickCloudBox() {
        QTest::mouseClick(&cloudBox(), Qt::LeftButton, {}, {8, cloudBox().height() / 2});
    }
    void settle() {
        do
            machine.dispatcher.runAll();
        while (machine.recordServer.deliverNext());
        machine.dispatcher.runAll();
    }
    /// The first fetch, which fails; its preferences come.
    void beginToFail() {
        openPreferences();
        machine.records.errors = {std::nullopt, recordErrorCode::unreachable};
        clickCloudBox();
        settle();
    }
    void activateMain() {
        window.activateWindow();
        // QTest counts a window as active also while one over it is.
        ASSERT_TRUE(eventually([&] { return QApplication::activeWindow() == &window; }));
    }
    bool isLocked() { return application.styleList().isLockedForSync(); }
    QStringList spoken() { return {overlay.accessibleName(), overlay.accessibleDescription()}; }

    QPointer<QWidget> preferences;
    QWidget& overlay = part<QWidget>("syncOverlay");
    QPushButton& retry = part<QPushButton>("retryButton");
    QPushButton& offline = part<QPushButton>("offlineButton");
    Spinner& spinner = *overlay.findChild<Spinner*>();
};

TEST_F(SyncOverlayTest, ShowsTheFirstSyncOfAMachineWithoutStylesUntilItIsDone) {
    show(0);
    auto& begin = part<QPushButton>("beginButton");
    EXPECT_TRUE(begin.isVisible());
    openPreferences();
    clickCloudBox();
    EXPECT_TRUE(isLocked() && !overlay.isVisible()) << "it may be over in a moment";
    ASSERT_TRUE(eventually([&] { return overlay.isVisible(); }));
    EXPECT_TRUE(spinner.isSpinning() && !begin.isVisible() && !retry.isVisible());
    EXPECT_EQ(spoken().front(), "Syncing with iCloud…");
    settle();
    EXPECT_TRUE(!isLocked() && !overlay.isVisible() && begin.isVisible());
    EXPECT_FALSE(spinner.isSpinning());
    EXPECT_EQ(machine.recordServer.records.size(), 2U);
}

TEST_F(SyncOverlayTest, AFailedFetchIsTriedAgainByTheBoxThatHasTheFocus) {
    show(3);
    beginToFail();
    EXPECT_TRUE(isLocked() && retry.isVisible() && offline.isVisible());
    EXPECT_TRUE(preferences->isActiveWindow()) << "which nothing is taken from";
    EXPECT_THAT(spoken().front().toStdString(), HasSubstr("could not be fetched"));
    application.notificationCenter().post(notifications::iCloudError);
    settle();
    EXPECT_EQ(window.findChildren<QPushButton*>("retryButton").size(), 1);

    activateMain();
    ASSERT_TRUE(retry.hasFocus());
    QTest::keyClick(&retry, Qt::Key_Tab);
    EXPECT_TRUE(offline.hasFocus());
    QTest::keyClick(&offline, Qt::Key_Backtab);
    machine.records.errors = {std::nullopt, recordErrorCode::unreachable};
    QTest::keyClick(&retry, Qt::Key_Return);
    EXPECT_TRUE(overlay.isVisible() && spinner.isSpinning() && !retry.isVisible());
    EXPECT_TRUE(view.hasFocus());
    click(1, rowControl::checkBox);
    EXPECT_EQ(machine.alerts.beeps, 1);
    settle();
    EXPECT_TRUE(retry.hasFocus()) << "it failed again";
    QTest::keyClick(&window, Qt::Key_T, Qt::AltModifier);
    ASSERT_TRUE(eventually([&] { return !retry.isVisible(); })) << "the button goes down first";
    settle();
    EXPECT_TRUE(!isLocked() && !overlay.isVisible() && view.hasFocus());
    EXPECT_EQ(machine.recordServer.records.size(), 2U);
}

TEST_F(SyncOverlayTest, EscapeWorksOfflineWithTheListAsItWas) {
    show(3);
    beginToFail();
    activateMain();
    QTest::keyClick(&retry, Qt::Key_Escape);
    machine.dispatcher.runAll();
    EXPECT_TRUE(!isLocked() && !overlay.isVisible() && view.hasFocus());
    EXPECT_TRUE(machine.recordServer.answers.empty());
    click(1, rowControl::checkBox);
    EXPECT_FALSE(isEnabled(2));
    settle(); // whose save makes up for the fetch
    EXPECT_EQ(machine.recordServer.records.size(), 2U);
}

TEST_F(SyncOverlayTest, GoesWithTheSyncAndIsNotShownWhereNothingIsLocked) {
    show(1);
    application.notificationCenter().post(notifications::iCloudError);
    settle();
    EXPECT_FALSE(overlay.isVisible());
    beginToFail();
    EXPECT_TRUE(retry.isVisible());
    clickCloudBox();
    settle();
    EXPECT_TRUE(!isLocked() && !overlay.isVisible());
    activateMain();
    EXPECT_TRUE(view.hasFocus());
}

} // namespace
} // namespace tessaril
