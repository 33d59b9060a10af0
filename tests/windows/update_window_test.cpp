#include "support/list_window.h"
#include "support/test.h"
#include "windows/spinner.h"
#include "windows/update_sheet.h"

namespace tessaril {
namespace {

/// The window over styles named A, B, C, ... with the identifiers 1, 2, 3, ..., each of which has a
/// newer version.
struct UpdateWindowTest : ::testing::Test, ListWindow {
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
        application.listCommands().setRoutes({.updateIndividual = [this](auto id) {
            application.styleUpdates().checkStyleForUpdate(id);
        }});
        showWindow();
    }
    QToolButton& updateButton() {
        for (QToolButton* button : window.findChildren<QToolButton*>())
            if (button->toolTip().startsWith("Check all styles for updates")) return *button;
        throw std::logic_error("no button");
    }
    QString secondLine(int position) {
        return row(position).data(StyleListModel::secondLineRole).toString();
    }
    UpdateSheet* openSheet() {
        auto* sheet = new UpdateSheet(application.updateRuns().make(), &window);
        sheet->open();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(sheet));
        return sheet;
    }
    static void sendKey(QWidget& widget, QEvent::Type type, Qt::Key key, quint64 time,
                        bool isRepeated = false) {
        QKeyEvent event(type, key, Qt::NoModifier, QString(), isRepeated);
        event.setTimestamp(time);
        QApplication::sendEvent(&widget, &event);
    }
};

TEST_F(UpdateWindowTest, RowsAndButtonsShowHowTheChecksGo) {
    show(2);
    EXPECT_TRUE(updateButton().isEnabled());
    click(0, rowControl::update);
    EXPECT_EQ(secondLine(0), "Checking for updates...");
    EXPECT_FALSE(updateButton().isEnabled());
    click(0, rowControl::checkBox);
    EXPECT_TRUE(isEnabled(1)) << "not while it is checked";
    machine.dispatcher.runAll();
    EXPECT_EQ(secondLine(0), "Updated!");
    EXPECT_EQ(row(0).data(), "New A");

    machine.urls.responses.erase("https://a.example/2.css");
    QTest::mouseClick(&updateButton(), Qt::LeftButton);
    EXPECT_FALSE(updateButton().isEnabled());
    machine.dispatcher.runAll();
    EXPECT_EQ(secondLine(0), "Already up-to-date.");
    EXPECT_EQ(secondLine(1), "Update error.");
    EXPECT_TRUE(updateButton().isEnabled());

    application.store().resetDatabase();
    application.styleList().refreshTable();
    EXPECT_FALSE(updateButton().isEnabled());
}

TEST_F(UpdateWindowTest, TheSheetShowsItsRunAndClosesWhenItIsDone) {
    show(26);
    const QPointer<UpdateSheet> sheet = openSheet();
    auto& log = *sheet->findChild<QPlainTextEdit*>("logText");
    auto& progress = *sheet->findChild<QProgressBar*>("progressBar");
    auto& done = *sheet->findChild<QPushButton*>("doneButton");
    auto& cancel = *sheet->findChild<QPushButton*>("cancelButton");
    EXPECT_EQ(log.toPlainText(), "Checking for updates...\n");
    EXPECT_TRUE(sheet->findChild<Spinner*>("spinnerIndicator")->isSpinning());
    EXPECT_TRUE(cancel.isEnabled() && !done.isEnabled());
    log.selectAll();
    machine.dispatcher.runAll();
    EXPECT_TRUE(log.toPlainText().endsWith("Updates completed. 26 styles were updated."));
    EXPECT_TRUE(log.textCursor().hasSelection()) << "what was selected stays";
    EXPECT_EQ(log.verticalScrollBar()->value(), log.verticalScrollBar()->maximum());
    EXPECT_EQ(progress.value(), 100);
    EXPECT_FALSE(sheet->findChild<Spinner*>("spinnerIndicator")->isSpinning());
    EXPECT_TRUE(!cancel.isEnabled() && done.isEnabled());
    EXPECT_TRUE(done.hasFocus());
    sendKey(done, QEvent::KeyPress, Qt::Key_Return, 0, true);
    EXPECT_TRUE(sheet->isVisible()) << "the key was held down when it ended";
    QTest::keyClick(sheet, Qt::Key_Return);
    EXPECT_TRUE(eventually([&] { return !sheet; }));
    machine.dispatcher.runAll();
    EXPECT_EQ(row(25).data(), "New Z");
}

TEST_F(UpdateWindowTest, EscapeAndTheCloseButtonMeanCancelThenDone) {
    show(2);
    const QPointer<UpdateSheet> sheet = openSheet();
    // Held down, as some desktops tell it; five times would end the run without its checks.
    for (quint64 time = 1000; time < 1400; time += 40) {
        sendKey(*sheet, QEvent::KeyPress, Qt::Key_Escape, time);
        sendKey(*sheet, QEvent::KeyRelease, Qt::Key_Escape, time + 39);
    }
    EXPECT_TRUE(sheet->isVisible());
    machine.dispatcher.runAll();
    EXPECT_TRUE(sheet->findChild<QPlainTextEdit*>("logText")->toPlainText().endsWith(
        "Update process was interrupted. 1 style was updated."));
    sheet->close();
    EXPECT_TRUE(eventually([&] { return !sheet; }));
}

} // namespace
} // namespace tessaril
