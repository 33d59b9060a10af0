#include "support/stepped_dispatcher.h"
#include "windows/compiler_error_windows.h"

#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QTextDocument>
#include <QTextEdit>
#include <QTextFrame>

#include <gtest/gtest.h>

namespace tessaril {
namespace {

QList<QPointer<QWidget>> visibleWindows() {
    QList<QPointer<QWidget>> windows;
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (widget->isVisible() && widget->findChild<QTextEdit*>("errorTextView"))
            windows.append(widget);
    return windows;
}

QString headerOf(QWidget* window) {
    return window->findChild<QLabel*>("errorHeaderLabel")->text();
}

void waitUntilGone(const QPointer<QWidget>& window) {
    while (window)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

TEST(CompilerErrorWindows, OpenLaterIndependentlyAndCloseByButtonAndKey) {
    testing::SteppedDispatcher dispatcher;
    CompilerErrorWindows windows(dispatcher);
    windows.show({.title = "Compiler Error (One)", .header = std::nullopt, .text = "first"});
    windows.show({.title = "Compiler Error (Two)", .header = "Header", .text = "second"});
    EXPECT_TRUE(visibleWindows().isEmpty());
    dispatcher.runAll();
    auto shown = visibleWindows();
    ASSERT_EQ(shown.size(), 2);
    if (shown[0]->windowTitle() != "Compiler Error (One)") shown.swapItemsAt(0, 1);
    EXPECT_EQ(headerOf(shown[0]), "A compilation error occurred.");
    EXPECT_EQ(headerOf(shown[1]), "Header");
    EXPECT_FALSE(shown[0]->findChild<QLabel*>("exclamImage")->pixmap().isNull());

    QTest::mouseClick(shown[0]->findChild<QPushButton*>(), Qt::LeftButton);
    waitUntilGone(shown[0]);
    ASSERT_TRUE(shown[1]);
    // Escape closes from within the text too.
    ASSERT_TRUE(QTest::qWaitForWindowActive(shown[1]));
    QTest::keyClick(shown[1]->findChild<QTextEdit*>(), Qt::Key_Escape);
    waitUntilGone(shown[1]);
}

TEST(CompilerErrorWindows, ShowTheTextAsItIsUnwrappedAndToBeCopied) {
    testing::SteppedDispatcher dispatcher;
    CompilerErrorWindows windows(dispatcher);
    const std::string text =
        "<b>ParseError</b>: " + std::string(500, 'x') + "\n\tat line 2 &amp;\n\nlast";
    windows.show({.title = "Compiler Error (a[*]b\nc)", .header = "<i>H</i>", .text = text});
    dispatcher.runAll();
    ASSERT_EQ(visibleWindows().size(), 1);
    QWidget* window = visibleWindows().front();
    EXPECT_EQ(window->windowTitle(), "Compiler Error (a[*][*]b c)"); // doubled it stands for itself
    EXPECT_EQ(window->findChild<QLabel*>("errorHeaderLabel")->textFormat(), Qt::PlainText);

    auto* view = window->findChild<QTextEdit*>();
    EXPECT_EQ(view->toPlainText().toStdString(), text);
    EXPECT_EQ(view->document()->firstBlock().layout()->lineCount(), 1);
    EXPECT_EQ(view->cursorRect().left(), 20);
    QTest::keyClicks(view, "typed");
    EXPECT_EQ(view->toPlainText().toStdString(), text);
    QTest::keyClick(view, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(view, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text().toStdString(), text);
    const QPointer<QWidget> open = window;
    window->close();
    waitUntilGone(open);
}

} // namespace
} // namespace tessaril
