#include "events/notification_names.h"
#include "support/list_window.h"
#include "support/test.h"
#include "windows/compiler_error_windows.h"

namespace tessaril {
namespace {

using Paths = std::vector<std::filesystem::path>;

struct MainWindowTest : ::testing::Test, ListWindow {
    MainWindowTest()
        : ListWindow([this](mainWindowCommands& commands) {
            commands.canImport = [this] { return canImport; };
            commands.importFiles = [this](const Paths& paths) { imported = paths; };
            commands.openFiles = [this](const Paths& paths) { opened = paths; };
            commands.openPreferences = [this] { ++preferencesOpened; };
        }) {
        showWindow();
    }

    void add(int count) {
        for (int id = 1; id <= count; ++id) {
            application.store().appendStyle(namedStyle("Quiet %1\nNight", id));
            application.notificationCenter().post(notifications::addLatestStyle);
        }
    }
    QPoint checkBox(int position) { return place(position, rowControl::checkBox); }
    void drag(const QPoint& from, const QPoint& to, Qt::MouseButton button = Qt::LeftButton) {
        QTest::mousePress(view.viewport(), button, {}, from);
        QTest::mouseRelease(view.viewport(), button, {}, to);
    }

    bool canImport = false;
    Paths imported, opened;
    int preferencesOpened = 0;
    QPushButton& beginButton = part<QPushButton>("beginButton");
};

TEST_F(MainWindowTest, TheCheckBoxWorksByMouseAndSpaceKeyOnly) {
    add(2);
    click(1, rowControl::checkBox);
    EXPECT_TRUE(isEnabled(1) && !isEnabled(2));
    click(1, rowControl::checkBox);
    drag(rowRect(0).center(), rowRect(0).center()); // selects
    EXPECT_TRUE(isEnabled(1) && isEnabled(2));
    QTest::keyClick(&view, Qt::Key_Space);
    EXPECT_FALSE(isEnabled(1));

    // A press elsewhere that ends on the box, and one on the box of another row, are no clicks.
    drag(rowRect(1).center(), checkBox(1));
    drag(checkBox(0), checkBox(1));
    drag(checkBox(1), checkBox(1), Qt::RightButton);
    EXPECT_TRUE(isEnabled(2));
}

TEST_F(MainWindowTest, SaysHowToBeginUntilThereIsAStyleToShow) {
    EXPECT_TRUE(beginButton.isVisible() && beginButton.hasFocus());
    QTest::keyClick(&window, Qt::Key_Comma, Qt::ControlModifier);
    EXPECT_EQ(preferencesOpened, 1);
    add(100);
    EXPECT_TRUE(view.isVisible() && view.hasFocus() && !beginButton.isVisible());
    EXPECT_EQ(view.selectionModel()->selectedIndexes(), QModelIndexList{row(99)});
    EXPECT_TRUE(view.viewport()->rect().contains(rowRect(99)));
    QAccessibleInterface* last = QAccessible::queryAccessibleInterface(&view)->child(99);
    EXPECT_EQ(last->text(QAccessible::Name), "Quiet %1 Night, Custom Style, enabled");
    click(99, rowControl::checkBox);
    EXPECT_FALSE(last->state().checked);
}

TEST_F(MainWindowTest, TakesFilesFromTheDialogAndByDropping) {
    QTest::keyClick(&window, Qt::Key_O, Qt::ControlModifier);
    EXPECT_FALSE(window.findChild<QFileDialog*>());
    canImport = true;
    QTest::mouseClick(&beginButton, Qt::LeftButton);
    auto* dialog = window.findChild<QFileDialog*>();
    ASSERT_TRUE(dialog);
    EXPECT_TRUE(dialog->nameFilters().join("").endsWith("(*.user.css *.css *.styl *.less)"));
    emit dialog->filesSelected({"/etc/ä b.user.css", "/etc/c.less"});
    EXPECT_THAT(imported, ElementsAre("/etc/ä b.user.css", "/etc/c.less"));
    dialog->close();
    ASSERT_TRUE(eventually([&] { return !window.findChild<QFileDialog*>(); }));
    QTest::mouseClick(&beginButton, Qt::LeftButton);
    dialog = window.findChild<QFileDialog*>();
    EXPECT_EQ(dialog->directory(), QDir("/etc")) << "where the last one was";
    dialog->close();

    QMimeData data;
    const auto isTaken = [&] {
        QDragEnterEvent enters({10, 10}, Qt::CopyAction, &data, Qt::LeftButton, {});
        enters.ignore();
        QApplication::sendEvent(view.viewport(), &enters); // which leaves it to the window
        return enters.isAccepted();
    };
    const QUrl address("https://a.example/c.css");
    data.setUrls({address});
    EXPECT_FALSE(isTaken());
    data.setUrls({QUrl("file:///styles/a%20b.css"), address});
    EXPECT_TRUE(isTaken());
    QDropEvent drop({10, 10}, Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(&window, &drop);
    EXPECT_THAT(opened, ElementsAre()); // the source of the drag does not wait
    QCoreApplication::processEvents();
    EXPECT_THAT(opened, ElementsAre("/styles/a b.css"));
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
    QTest::mouseClick(shown[1]->findChild<QPushButton*>(), Qt::LeftButton);
    ASSERT_TRUE(eventually([&] { return !shown[1]; }));

    ASSERT_TRUE(shown[0] && QTest::qWaitForWindowActive(shown[0]));
    auto* view = shown[0]->findChild<QTextEdit*>();
    QTest::keyClicks(view, "typed");
    QTest::keyClick(view, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(view, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text().toStdString(), text);
    QTest::keyClick(view, Qt::Key_Escape); // from within the text too
    EXPECT_TRUE(eventually([&] { return !shown[0]; }));
}

} // namespace
} // namespace tessaril
