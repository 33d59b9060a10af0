#include "support/list_window.h"
#include "support/test.h"
#include "windows/import_sheet.h"

namespace tessaril {
namespace {

struct ImportSheetTest : ::testing::Test, ListWindow {
    ImportSheetTest()
        : ListWindow([this](mainWindowCommands& commands) {
            commands.importFromURL = [this] {
                sheet = new ImportSheet(application.urlImport(), &window);
                sheet->open();
            };
        }) {
        QApplication::clipboard()->clear();
        showWindow();
    }

    void open() {
        QTest::keyClick(&window, Qt::Key_L, Qt::ControlModifier);
        ASSERT_TRUE(sheet);
        ASSERT_TRUE(eventually([this] { return QApplication::activeWindow() == sheet; }));
    }
    QWidget& of(const char* name) { return *sheet->findChild<QWidget*>(name); }
    QLineEdit& urlBox() { return static_cast<QLineEdit&>(of("urlBox")); }
    QPushButton& importButton() { return static_cast<QPushButton&>(of("importButton")); }

    /// The parts that only some states show.
    std::string shown() {
        std::string names;
        for (const char* name : {"loadSpinner", "importLabel", "errorLabel"})
            if (of(name).isVisible()) names.append(name).append(" ");
        return names;
    }

    QPointer<ImportSheet> sheet;
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
    importButton().setFocus();
    QTest::mouseClick(&importButton(), Qt::LeftButton);
    EXPECT_FALSE(importButton().isEnabled());
    EXPECT_EQ(QApplication::focusWidget(), &urlBox()) << "not Cancel, for the next key press";
    EXPECT_EQ(shown(), "loadSpinner importLabel ");
    QTest::keyClicks(&urlBox(), "typed");
    EXPECT_EQ(machine.dispatcher.backgroundTasks.size(), 1U) << "one at a time";

    machine.dispatcher.runAll();
    EXPECT_EQ(machine.alerts.alerts.size(), 1U);
    EXPECT_TRUE(importButton().isEnabled());
    EXPECT_EQ(shown(), "errorLabel ");
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
