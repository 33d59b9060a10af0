#include "events/notification_names.h"
#include "model/database_json.h"
#include "store/database_backups.h"
#include "support/list_window.h"
#include "support/test.h"
#include "windows/compiler_error_windows.h"
#include "windows/spinner.h"

namespace tessaril {
namespace {

/// A dialog over the main window.
struct SheetTest : ::testing::Test, ListWindow {
    void enter(const char* name) {
        sheet = window.findChild<QDialog*>(name);
        ASSERT_TRUE(sheet && eventually([&] { return QApplication::activeWindow() == sheet; }));
    }
    [[nodiscard]] bool isGone() {
        return eventually([this] { return !sheet; });
    }
    template <class Widget>
    Widget& inSheet(const char* name) {
        return partOf<Widget>(*sheet, name);
    }
    bool isShown(const char* name) { return inSheet<QWidget>(name).isVisible(); }

    QPointer<QDialog> sheet;
};

struct ImportSheetTest : SheetTest {
    void open(const QString& copied) {
        QApplication::clipboard()->setText(copied);
        showWindow();
        press("Ctrl+L");
        enter("importSheet");
    }
    bool shows(bool progress, bool error) {
        return isShown("loadSpinner") == progress && isShown("importLabel") == progress &&
               isShown("errorLabel") == error;
    }
};

TEST_F(ImportSheetTest, ShowsWhatTheImportIsAt) {
    machine.urls.responses["https://a.example/x.css"].body = "b {}";
    open("");
    auto& address = inSheet<QLineEdit>("urlBox");
    auto& button = inSheet<QPushButton>("importButton");
    press("'  '");
    EXPECT_FALSE(button.isEnabled());
    press("Return");
    EXPECT_TRUE(machine.dispatcher.backgroundTasks.empty());

    press("'https://a.example/y.css'");
    EXPECT_TRUE(shows(false, false));
    button.setFocus();
    clickOn(button);
    EXPECT_FALSE(button.isEnabled());
    EXPECT_TRUE(address.hasFocus()) << "not Cancel, for the next key press";
    EXPECT_TRUE(shows(true, false));
    press("'typed'");
    EXPECT_EQ(machine.dispatcher.backgroundTasks.size(), 1U) << "one at a time";
    machine.dispatcher.runAll();
    EXPECT_EQ(machine.alerts.alerts.size(), 1U);
    EXPECT_TRUE(button.isEnabled() && shows(false, true));
    EXPECT_EQ(address.text(), "  https://a.example/y.css");

    press("Ctrl+A 'https://a.example/x.css' Return");
    EXPECT_TRUE(shows(true, false));
    machine.dispatcher.runAll();
    EXPECT_TRUE(isGone());
    EXPECT_EQ(application.store().countStyles(), 1U);
}

TEST_F(ImportSheetTest, EscapeAbandonsTheImport) {
    open(" https://a.example/gone.css\n");
    EXPECT_EQ(inSheet<QLineEdit>("urlBox").selectedText(), "https://a.example/gone.css");
    press("Return Esc");
    EXPECT_TRUE(isGone());
    machine.dispatcher.runAll();
    EXPECT_TRUE(machine.urls.asked.empty() && machine.alerts.alerts.empty());
}

/// Styles each of which has a newer version.
struct UpdateWindowTest : SheetTest {
    void show(int count) {
        for (int id = 1; id <= count; ++id) {
            const std::string address = "https://a.example/" + std::to_string(id) + ".css";
            styleContainer style = namedStyle(std::string(1, char('A' + id - 1)), id);
            style.source = sourceUserCSS;
            style.downloadedFrom = address;
            application.store().appendStyle(style);
            machine.urls.responses[address].body =
                "/* ==UserStyle==\n@name New " + style.styleData.name +
                "\n==/UserStyle== */ @-moz-document domain(\"a\") { b {} }";
        }
        showWindow();
    }
    QString secondLine(int position) {
        return row(position).data(StyleListModel::secondLineRole).toString();
    }
    void openSheet() {
        others.openUpdateSheet(window);
        enter("updateSheet");
    }
    QString lastLine() {
        return inSheet<QPlainTextEdit>("logText").toPlainText().section('\n', -1);
    }
    static void sendKey(QWidget& widget, QEvent::Type type, Qt::Key key, quint64 time,
                        bool isRepeated = false) {
        QKeyEvent event(type, key, Qt::NoModifier, QString(), isRepeated);
        event.setTimestamp(time);
        QApplication::sendEvent(&widget, &event);
    }
};

TEST_F(UpdateWindowTest, RowsAndButtonsShowHowTheChecksGo) {
    application.listCommands().setRoutes({.updateIndividual = [this](auto id) {
        application.styleUpdates().checkStyleForUpdate(id);
    }});
    show(2);
    const QList<QToolButton*> buttons = window.findChildren<QToolButton*>();
    QToolButton& updateAll = **std::ranges::find_if(
        buttons, [](auto* each) { return each->toolTip().startsWith("Check all styles"); });
    EXPECT_TRUE(updateAll.isEnabled());
    click(0, rowControl::update);
    EXPECT_EQ(secondLine(0), "Checking for updates...");
    EXPECT_FALSE(updateAll.isEnabled());
    machine.dispatcher.runAll();
    EXPECT_EQ(secondLine(0), "Updated!");
    EXPECT_EQ(row(0).data(), "New A");

    machine.urls.responses.erase("https://a.example/2.css");
    clickOn(updateAll);
    EXPECT_FALSE(updateAll.isEnabled());
    machine.dispatcher.runAll();
    EXPECT_EQ(secondLine(0), "Already up-to-date.");
    EXPECT_EQ(secondLine(1), "Update error.");
    EXPECT_TRUE(updateAll.isEnabled());
    application.store().resetDatabase();
    application.styleList().refreshTable();
    EXPECT_FALSE(updateAll.isEnabled());
}

TEST_F(UpdateWindowTest, TheSheetShowsItsRunAndClosesWhenItIsDone) {
    show(26);
    openSheet();
    auto& log = inSheet<QPlainTextEdit>("logText");
    auto& done = inSheet<QPushButton>("doneButton");
    auto& cancel = inSheet<QPushButton>("cancelButton");
    const auto& spinner = inSheet<Spinner>("spinnerIndicator");
    EXPECT_TRUE(spinner.isSpinning() && cancel.isEnabled() && !done.isEnabled());
    log.selectAll();
    machine.dispatcher.runAll();
    EXPECT_EQ(lastLine(), "Updates completed. 26 styles were updated.");
    EXPECT_TRUE(log.textCursor().hasSelection()) << "what was selected stays";
    EXPECT_EQ(log.verticalScrollBar()->value(), log.verticalScrollBar()->maximum());
    EXPECT_EQ(inSheet<QProgressBar>("progressBar").value(), 100);
    EXPECT_FALSE(spinner.isSpinning() || cancel.isEnabled());
    EXPECT_TRUE(done.hasFocus());
    sendKey(done, QEvent::KeyPress, Qt::Key_Return, 0, true);
    EXPECT_TRUE(sheet->isVisible()) << "the key was held down when it ended";
    press("Return");
    EXPECT_TRUE(isGone());
    machine.dispatcher.runAll();
    EXPECT_EQ(row(25).data(), "New Z");
}

TEST_F(UpdateWindowTest, EscapeAndTheCloseButtonMeanCancelThenDone) {
    show(2);
    openSheet();
    // Held down, as some desktops tell it; five times would end the run without its checks.
    for (quint64 time = 1000; time < 1400; time += 40) {
        sendKey(*sheet, QEvent::KeyPress, Qt::Key_Escape, time);
        sendKey(*sheet, QEvent::KeyRelease, Qt::Key_Escape, time + 39);
    }
    EXPECT_TRUE(sheet->isVisible());
    machine.dispatcher.runAll();
    EXPECT_EQ(lastLine(), "Update process was interrupted. 1 style was updated.");
    sheet->close();
    EXPECT_TRUE(isGone());
}

struct RestoreSheetTest : SheetTest {
    /// A backup of an hour of a day that is long gone.
    void putBackup(int hour, std::vector<styleContainer> styles) {
        const auto made =
            std::chrono::sys_days(std::chrono::year(2020) / 5 / 17) + std::chrono::hours(hour);
        machine.files.contents["/container/backups/" + backupName(made, 1)] =
            styles.empty() ? "{" : *encodeDatabase({.styles = std::move(styles)});
    }
    /// By the keys of the menu.
    void open() {
        showWindow();
        machine.dispatcher.runAll(); // from here on a step is one of the sheet's
        press("Alt+F R");
        enter("restoreSheet");
    }
    void step() {
        machine.dispatcher.step(machine.dispatcher.backgroundTasks);
        machine.dispatcher.step(machine.dispatcher.mainTasks);
    }
    QString texts(const char* list, int row) {
        const auto& item = *inSheet<QTreeWidget>(list).topLevelItem(row);
        return item.text(item.columnCount() - 2) + '|' + item.text(item.columnCount() - 1);
    }
    void chooseBackup(int row) {
        auto& backups = inSheet<QTreeWidget>("backups");
        clickRow(backups, backups.model()->index(row, 0));
    }
};

TEST_F(RestoreSheetTest, ShowsWhatIsMissingAndBringsItBack) {
    for (const char* name : {"A", "B"})
        application.store().appendStyle(namedStyle(name, name[0] - '@'));
    putBackup(1, {namedStyle("A", 1), namedStyle("Older", 7)});
    putBackup(2, {namedStyle("A", 1), namedStyle("B changed", 2), namedStyle("Gone\nfor now", 3)});
    putBackup(3, {});
    open();
    const auto& backups = inSheet<QTreeWidget>("backups");
    const auto& restore = inSheet<QPushButton>("restoreButton");
    EXPECT_TRUE(isShown("emptyNote"));
    step();
    ASSERT_EQ(backups.topLevelItemCount(), 3);
    EXPECT_TRUE(!isShown("emptyNote") && backups.hasFocus());
    press("Return");
    EXPECT_FALSE(restore.isEnabled() || !sheet->isVisible()) << "nothing is chosen";

    // The first cannot be read, though it is chosen before that is known.
    press("Home");
    step();
    EXPECT_EQ(texts("backups", 0), "unreadable|");
    EXPECT_TRUE(backups.selectedItems().isEmpty());
    chooseBackup(0);
    EXPECT_TRUE(backups.selectedItems().isEmpty() && !restore.isEnabled());
    chooseBackup(1);
    EXPECT_FALSE(restore.isEnabled()) << "not read as yet";
    step();
    EXPECT_EQ(texts("backups", 1), "3|1");
    EXPECT_EQ(texts("backupStyles", 0), "Gone for now|missing");
    EXPECT_EQ(texts("backupStyles", 1), "B changed|changed");
    EXPECT_EQ(texts("backupStyles", 2), "A|");
    EXPECT_TRUE(inSheet<QLabel>("summary").text().startsWith("Restore brings back 1 style that"));

    application.styleList().setLockedForSync(true);
    press("Return");
    EXPECT_TRUE(sheet->isVisible() && !restore.isEnabled() && machine.alerts.beeps == 1);
    application.styleList().setLockedForSync(false);
    press("Down");
    machine.dispatcher.runAll();
    EXPECT_EQ(texts("backupStyles", 0), "Older|missing");
    press("Return");
    EXPECT_TRUE(isGone());
    machine.dispatcher.runAll();
    EXPECT_EQ(view.model()->rowCount(), 3);
    EXPECT_EQ(row(2).data(), "Older");
    EXPECT_EQ(view.selectionModel()->selectedIndexes(), QModelIndexList{row(2)});
}

TEST_F(RestoreSheetTest, SaysThatThereIsNoBackupAndClosesByEscape) {
    open();
    machine.dispatcher.runAll();
    EXPECT_TRUE(inSheet<QLabel>("emptyNote").text().startsWith("There are no backups yet."));
    EXPECT_FALSE(inSheet<QPushButton>("restoreButton").isEnabled());
    press("Esc");
    EXPECT_TRUE(isGone());
}

TEST_F(RestoreSheetTest, ClosingEndsTheReading) {
    for (int hour = 0; hour < 3; ++hour)
        putBackup(hour, {namedStyle("A", 1)});
    open();
    step();
    sheet->close();
    EXPECT_TRUE(isGone());
    step();
    EXPECT_TRUE(machine.dispatcher.backgroundTasks.empty());
}

struct RecoveryPanelTest : SheetTest {
    void remove(const std::vector<styleContainer>& styles) {
        liveDatabase::styleList removed;
        for (const styleContainer& style : styles)
            removed.push_back(std::make_shared<const styleContainer>(style));
        application.recoveryList().add(removed);
        application.notificationCenter().post(notifications::deletedStylesChanged);
        settle();
    }
    QListWidget& list() { return inSheet<QListWidget>("removedStyles"); }
    QPushButton& button() { return inSheet<QPushButton>("recoverSelectedButton"); }
    QModelIndex removedRow(int position) { return list().model()->index(position, 0); }
    std::vector<std::int64_t> ids() {
        std::vector<std::int64_t> all;
        for (const auto& row : application.styleList().styles())
            all.push_back(row->uniqueID);
        return all;
    }
};

TEST_F(RecoveryPanelTest, RecoversTheSelectedStylesFromTheLastToTheFirst) {
    showWindow();
    remove({namedStyle("a", 1), namedStyle("b", 2), namedStyle("c", 3), fullStyle(4)});
    others.openRecoveryPanel(window);
    enter("recoveryPanel");
    EXPECT_FALSE(button().isEnabled());
    clickRow(list(), removedRow(0));
    clickRow(list(), removedRow(2), Qt::ControlModifier);
    EXPECT_TRUE(button().isEnabled());
    remove({namedStyle("e", 5)}); // by a merge meanwhile
    EXPECT_EQ(list().count(), 5);
    clickRow(list(), removedRow(3), Qt::ControlModifier);
    application.styleList().setLockedForSync(true);
    press("Return");
    EXPECT_TRUE(ids().empty() && machine.alerts.beeps == 1 && button().isEnabled());
    application.styleList().setLockedForSync(false);
    clickOn(button());
    settle();
    EXPECT_THAT(ids(), ElementsAre(4, 3, 1));
    EXPECT_EQ(*application.store().findStyle(4), fullStyle(4));
    EXPECT_THAT(application.recoveryList().names(), ElementsAre("b", "e"));
    EXPECT_TRUE(list().count() == 2 && !button().isEnabled());

    clickRow(list(), removedRow(1));
    QTest::mouseDClick(list().viewport(), Qt::LeftButton, {},
                       list().visualRect(removedRow(1)).center());
    settle();
    clickRow(list(), removedRow(0));
    press("Return");
    settle();
    EXPECT_THAT(ids(), ElementsAre(4, 3, 1, 5, 2));
    EXPECT_TRUE(isShown("emptyNote"));
    press("Ctrl+W");
    EXPECT_TRUE(isGone());
}

TEST_F(RecoveryPanelTest, OpensOnceFromThePreferencesThatFollowTheList) {
    showWindow();
    others.openPreferences(window);
    auto& recover = part<QPushButton>("recoverButton");
    EXPECT_FALSE(recover.isEnabled());
    const std::string longName = "a\nb\u202E" + std::string(10'000, 'x');
    remove(std::vector(10'000, namedStyle(longName, 1)));
    EXPECT_TRUE(recover.isEnabled());
    for (int i = 0; i < 2; ++i)
        clickOn(recover);
    enter("recoveryPanel");
    EXPECT_EQ(window.findChildren<QDialog*>("recoveryPanel").size(), 1);
    ASSERT_EQ(list().count(), 10'000);
    EXPECT_TRUE(list().item(9'999)->text().startsWith("a bx"));
    EXPECT_LT(list().item(9'999)->text().size(), 1000);
    press("F2");
    EXPECT_FALSE(list().findChild<QLineEdit*>()) << "the names are not to be edited";
    press("Esc");
    EXPECT_FALSE(sheet && sheet->isVisible());
    application.recoveryList().recover({0});
    settle();
    EXPECT_TRUE(recover.isEnabled());
}

TEST(CompilerErrorWindows, ShowTextsAsTheyAreToBeCopiedAndCloseByButtonAndKey) {
    SteppedDispatcher dispatcher;
    CompilerErrorWindows windows(dispatcher);
    const std::string text = "<b>ParseError</b>: \n\tat line 2 &amp;\n\nlast";
    windows.show({.title = "Other", .header = std::nullopt, .text = "other"});
    windows.show({.title = "Compiler Error (a[*]b\nc)", .header = "<i>H</i>", .text = text});
    dispatcher.runAll();
    QPointer<QWidget> shown[2];
    for (QWidget* window : QApplication::topLevelWidgets())
        if (window->isVisible()) shown[window->windowTitle() == "Other"] = window;
    ASSERT_TRUE(shown[0] && shown[1]);
    EXPECT_EQ(shown[0]->windowTitle(), "Compiler Error (a[*][*]b c)"); // doubled, for itself
    EXPECT_EQ(shown[0]->findChild<QLabel*>("errorHeaderLabel")->textFormat(), Qt::PlainText);
    EXPECT_EQ(shown[1]->findChild<QLabel*>("errorHeaderLabel")->text(),
              "A compilation error occurred.");
    clickOn(*shown[1]->findChild<QPushButton*>());
    ASSERT_TRUE(eventually([&] { return !shown[1]; }));

    ASSERT_TRUE(shown[0] && QTest::qWaitForWindowActive(shown[0]));
    shown[0]->findChild<QTextEdit*>()->setFocus();
    press("'typed' Ctrl+A Ctrl+C");
    EXPECT_EQ(QApplication::clipboard()->text().toStdString(), text);
    press("Esc"); // from within the text too
    EXPECT_TRUE(eventually([&] { return !shown[0]; }));
}

} // namespace
} // namespace tessaril
