#include "model/database_json.h"
#include "store/backup_restore.h"
#include "support/list_window.h"
#include "support/test.h"
#include "windows/restore_sheet.h"

#include <QtWidgets>

namespace tessaril {
namespace {

struct RestoreSheetTest : ::testing::Test, ListWindow {
    RestoreSheetTest()
        : ListWindow([this](mainWindowCommands& commands) {
            commands.restoreFromBackup = [this] {
                sheet = new RestoreSheet(
                    std::make_unique<BackupRestore>(application.backupRestore()), &window);
                sheet->open();
            };
        }) {}

    /// A backup of an hour of a day that is long gone.
    void putBackup(int hour, std::vector<styleContainer> styles) {
        const auto made =
            std::chrono::sys_days(std::chrono::year(2020) / 5 / 17) + std::chrono::hours(hour);
        machine.files.contents["/container/backups/" + backupName(made, 1)] =
            *encodeDatabase({.styles = std::move(styles)});
    }
    /// By the keys of the menu.
    void open() {
        showWindow();
        machine.dispatcher.runAll(); // from here on a step is one of the sheet's
        QTest::keyClick(&window, Qt::Key_F, Qt::AltModifier);
        QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_R);
        ASSERT_TRUE(sheet && QTest::qWaitForWindowActive(sheet));
    }
    void step() {
        machine.dispatcher.step(machine.dispatcher.backgroundTasks);
        machine.dispatcher.step(machine.dispatcher.mainTasks);
    }
    template <class Widget>
    Widget& inSheet(const char* name) {
        return *sheet->findChild<Widget*>(name);
    }
    static QStringList texts(const QTreeWidget& list, int row) {
        QStringList found;
        for (int column = 0; column < list.columnCount(); ++column)
            found.append(list.topLevelItem(row)->text(column));
        return found;
    }

    QPointer<RestoreSheet> sheet;
};

TEST_F(RestoreSheetTest, ShowsWhatIsMissingAndBringsItBack) {
    for (int id = 1; id <= 2; ++id)
        application.store().appendStyle(namedStyle(id == 1 ? "A" : "B", id));
    putBackup(1, {namedStyle("A", 1), namedStyle("Older", 7)});
    putBackup(2, {namedStyle("A", 1), namedStyle("B changed", 2), namedStyle("Gone\nfor now", 3)});
    machine.files.contents["/container/backups/styledb-2020-05-17T030000Z.sdb"] = "{";
    open();
    const auto& backups = inSheet<QTreeWidget>("backups");
    const auto& styles = inSheet<QTreeWidget>("backupStyles");
    auto& restore = inSheet<QPushButton>("restoreButton");
    const auto& note = inSheet<QLabel>("emptyNote");
    EXPECT_EQ(note.text(), "Looking for backups…");
    step();
    ASSERT_EQ(backups.topLevelItemCount(), 3);
    EXPECT_FALSE(note.isVisible());
    EXPECT_TRUE(sheet->focusWidget() == &backups);
    EXPECT_EQ(texts(backups, 1)[1], "…");
    QTest::keyClick(sheet, Qt::Key_Return);
    EXPECT_FALSE(restore.isEnabled() || !sheet->isVisible()) << "nothing is chosen";

    // The first cannot be read, though it is chosen before that is known.
    QTest::keyClick(sheet->focusWidget(), Qt::Key_Home);
    EXPECT_EQ(inSheet<QLabel>("summary").text(), "Reading the backup…");
    step();
    EXPECT_EQ(texts(backups, 0)[1], "unreadable");
    EXPECT_TRUE(backups.selectedItems().isEmpty());
    QTest::mouseClick(backups.viewport(), Qt::LeftButton, {},
                      backups.visualItemRect(backups.topLevelItem(0)).center());
    EXPECT_TRUE(backups.selectedItems().isEmpty() && !restore.isEnabled());

    QTest::mouseClick(backups.viewport(), Qt::LeftButton, {},
                      backups.visualItemRect(backups.topLevelItem(1)).center());
    EXPECT_FALSE(restore.isEnabled()) << "not read as yet";
    step();
    EXPECT_EQ(texts(backups, 1).mid(1), QStringList({"3", "1"}));
    EXPECT_EQ(texts(backups, 2)[1], "…");
    EXPECT_EQ(texts(styles, 0), QStringList({"Gone for now", "missing"}));
    EXPECT_EQ(texts(styles, 1), QStringList({"B changed", "changed"}));
    EXPECT_EQ(texts(styles, 2), QStringList({"A", ""}));
    EXPECT_TRUE(inSheet<QLabel>("summary").text().startsWith("Restore brings back 1 style that"));

    application.styleList().setLockedForSync(true);
    QTest::keyClick(sheet->focusWidget(), Qt::Key_Return);
    EXPECT_TRUE(sheet->isVisible() && !restore.isEnabled() && machine.alerts.beeps == 1);
    application.styleList().setLockedForSync(false);
    QTest::keyClick(sheet->focusWidget(), Qt::Key_Down);
    machine.dispatcher.runAll();
    EXPECT_EQ(texts(styles, 0), QStringList({"Older", "missing"}));
    EXPECT_TRUE(restore.isEnabled());
    QTest::keyClick(sheet->focusWidget(), Qt::Key_Return);
    EXPECT_TRUE(eventually([&] { return !sheet; }));
    machine.dispatcher.runAll();
    EXPECT_EQ(view.model()->rowCount(), 3);
    EXPECT_EQ(row(2).data(), "Older");
    EXPECT_EQ(view.selectionModel()->selectedIndexes(), QModelIndexList{row(2)});
}

TEST_F(RestoreSheetTest, SaysThatThereIsNoBackupAndClosesByEscape) {
    open();
    machine.dispatcher.runAll();
    EXPECT_TRUE(inSheet<QLabel>("emptyNote").isVisible());
    EXPECT_TRUE(inSheet<QLabel>("emptyNote").text().startsWith("There are no backups yet."));
    EXPECT_FALSE(inSheet<QPushButton>("restoreButton").isEnabled());
    QTest::keyClick(sheet->focusWidget(), Qt::Key_Escape);
    EXPECT_TRUE(eventually([&] { return !sheet; }));
}

TEST_F(RestoreSheetTest, ClosingEndsTheReading) {
    for (int hour = 0; hour < 3; ++hour)
        putBackup(hour, {namedStyle("A", 1)});
    open();
    step();
    sheet->close();
    EXPECT_TRUE(eventually([&] { return !sheet; }));
    step();
    EXPECT_TRUE(machine.dispatcher.backgroundTasks.empty());
}

} // namespace
} // namespace tessaril
