#include "support/event_loop.h"
#include "support/stand_in_machine.h"
#include "support/window_commands.h"
#include "windows/import_sheet.h"
#include "windows/main_window.h"

#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tessaril {
namespace {

using namespace testing;

class ImportSheetTest : public ::testing::Test {
protected:
    ImportSheetTest() {
        QApplication::clipboard()->clear();
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }

    void open() {
        window.activateWindow();
        ASSERT_TRUE(eventually([this] { return QApplication::activeWindow() == &window; }));
        QTest::keyClick(&window, Qt::Key_L, Qt::ControlModifier);
        ASSERT_TRUE(sheet);
        ASSERT_TRUE(eventually([this] { return QApplication::activeWindow() == sheet; }));
    }
    QWidget& part(const char* name) { return *sheet->findChild<QWidget*>(name); }
    QLineEdit& urlBox() { return static_cast<QLineEdit&>(part("urlBox")); }
    QPushButton& importButton() { return static_cast<QPushButton&>(part("importButton")); }

    /// The parts that only some states show.
    std::string shown() {
        std::string names;
        for (const char* name : {"loadSpinner", "importLabel", "errorLabel"})
            if (part(name).isVisible()) names.append(name).append(" ");
        return names;
    }

    StandInMachine machine;
    Application application{machine.surroundings()};
    QPointer<ImportSheet> sheet;
    MainWindow window{[this] {
        mainWindowCommands commands = windowCommands(application);
        commands.importFromURL = [this] {
            sheet = new ImportSheet(application.urlImport(), &window);
            sheet->open();
        };
        return commands;
    }()};
};

TEST_F(ImportSheetTest, ShowsWhatTheImportIsAt) {
    machine.urls.responses["https://a.example/x.css"].body = "b {}";
    open();
    EXPECT_EQ(QApplication::focusWidget(), &urlBox());
    QTest::keyClicks(&urlBox(), "  ");
    EXPECT_FALSE(importButton().isEnabled());
    QTest::keyClick(&urlBox(), Qt::Key_Return);
    EXPECT_TRUE(machine.dispatcher.backgroundTasks.empty());

    QTest::keyClicks(&urlBox(), "https://a.example/y.css");
    EXPECT_EQ(shown(), "");
    const auto places = [this] {
        return std::vector{sheet->geometry(), urlBox().geometry(), importButton().geometry()};
    };
    const auto before = places();
    importButton().setFocus();
    QTest::mouseClick(&importButton(), Qt::LeftButton);
    EXPECT_FALSE(importButton().isEnabled());
    EXPECT_EQ(QApplication::focusWidget(), &urlBox()) << "not Cancel, for the next key press";
    EXPECT_EQ(shown(), "loadSpinner importLabel ");
    EXPECT_EQ(places(), before) << "nothing jumps";
    QTest::keyClicks(&urlBox(), "typed");
    EXPECT_EQ(machine.dispatcher.backgroundTasks.size(), 1U) << "one at a time";

    machine.dispatcher.runAll();
    EXPECT_EQ(machine.alerts.alerts.size(), 1U);
    EXPECT_TRUE(importButton().isEnabled());
    EXPECT_EQ(shown(), "errorLabel ");
    EXPECT_EQ(places(), before);
    EXPECT_EQ(urlBox().text(), "  https://a.example/y.css");

    QApplication::clipboard()->setText("https://a.example/x.css");
    QTest::keyClick(&urlBox(), Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(&urlBox(), Qt::Key_V, Qt::ControlModifier);
    QTest::keyClick(&urlBox(), Qt::Key_Return);
    EXPECT_EQ(shown(), "loadSpinner importLabel ");
    machine.dispatcher.runAll();
    EXPECT_TRUE(eventually([&] { return !sheet; }));
    EXPECT_EQ(application.store().countStyles(), 1U);
}

TEST_F(ImportSheetTest, EscapeAbandonsTheImport) {
    QApplication::clipboard()->setText(" https://a.example/gone.css\n");
    open();
    EXPECT_EQ(urlBox().selectedText(), "https://a.example/gone.css") << "offered";
    QTest::keyClick(&urlBox(), Qt::Key_Return);
    QTest::keyClick(&urlBox(), Qt::Key_Escape);
    EXPECT_TRUE(eventually([&] { return !sheet; }));
    machine.dispatcher.runAll();
    EXPECT_TRUE(machine.urls.asked.empty());
    EXPECT_TRUE(machine.alerts.alerts.empty());
}

} // namespace
} // namespace tessaril
