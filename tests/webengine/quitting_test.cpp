#include "support/event_loop.h"
#include "support/running_web_engine.h"
#include "support/stand_in_machine.h"
#include "support/test.h"
#include "support/window_commands.h"
#include "windows/import_moz_doc_view.h"
#include "windows/other_windows.h"

#include <QApplication>

namespace tessaril {
namespace {

/// The main window with the windows that it opens, in an application that ends with its windows.
struct QuittingTest : ::testing::Test {
    QuittingTest() { QApplication::setQuitOnLastWindowClosed(true); }
    ~QuittingTest() override { QApplication::setQuitOnLastWindowClosed(false); }

    /// Runs the application with `user` in front of it; whether it has quit by itself afterwards.
    bool quits(const std::function<void()>& user) {
        QTimer::singleShot(0, &window, user);
        QTimer::singleShot(std::chrono::minutes(2), &window, [] { QApplication::exit(1); });
        return QApplication::exec() == 0;
    }

    QWidget* pasteWindow() { return window.findChild<ImportMozDocView*>(); }
    void openPasteWindow() {
        bringForward(window);
        QTest::keyClick(&window, Qt::Key_V, Qt::ControlModifier | Qt::ShiftModifier);
        ASSERT_TRUE(pasteWindow());
        pasteWindow()->activateWindow();
        ASSERT_TRUE(eventually([&] { return holds(web, "reportChanges && editor.isFocused()"); }));
    }

    StandInMachine machine;
    Application application{machine.surroundings()};
    shownWebView web;
    OtherWindows others{
        application, [this](QWidget* parent) { return web = runningWebEngine().makeView(parent); },
        TESSARIL_RESOURCES "/Ace/index.html"};
    mainWindowCommands commands() {
        mainWindowCommands all = windowCommands(application);
        all.pasteStyle = [this] { others.openPasteWindow(window); };
        all.mayClose = [this](auto retry) { return others.mayClose(std::move(retry)); };
        return all;
    }
    MainWindow window{commands()};
};

TEST_F(QuittingTest, AsksBeforeAPastedTextIsLostAndEndsOnlyIfItMayBe) {
    const std::function<void()> close = [this] { window.close(); };
    const std::function<void()> quit = [this] {
        QTest::keyClick(&window, Qt::Key_Q, Qt::ControlModifier);
    };
    for (const auto& ending : {close, quit}) {
        EXPECT_TRUE(quits([&] {
            machine.alerts.answers = {{0}, {1}};
            openPasteWindow();
            QTest::keyClicks(QApplication::focusWidget(), "b {}");
            ending();
            ASSERT_TRUE(eventually(
                [&] { return machine.alerts.answers.size() == 1 || !window.isVisible(); }));
            QCoreApplication::processEvents();
            EXPECT_TRUE(window.isVisible() && pasteWindow() && pasteWindow()->isVisible());
            ending();
        }));
        EXPECT_EQ(machine.alerts.answers.size(), 0U);
        EXPECT_FALSE(window.isVisible() || (pasteWindow() && pasteWindow()->isVisible()));
    }
}

} // namespace
} // namespace tessaril
