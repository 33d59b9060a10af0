#include "desktop/qt_alerts.h"
#include "desktop/qt_dispatcher.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

namespace tessaril {
namespace {

QMessageBox* shownBox() {
    return qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
}

QPushButton* buttonNamed(const QString& text) {
    for (auto* button : shownBox()->findChildren<QPushButton*>())
        if (button->text().remove('&') == text) return button;
    return nullptr;
}

class QtAlertsTest : public ::testing::Test {
protected:
    /// Asks, and does `act` with the box once it is on the screen.
    alertAnswer ask(const alertQuestion& asked, const std::function<void()>& act) {
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, &timer, [&] {
            if (!shownBox() || !shownBox()->isVisible()) return;
            timer.stop();
            act();
        });
        timer.start(0);
        return alerts.ask(asked);
    }

    static void waitForBox() {
        while (!shownBox())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    QtDispatcher dispatcher;
    QtAlerts alerts{dispatcher};
    const alertQuestion question{
        .title = "Title", .text = "Text", .buttons = {"Yes", "Perhaps", "No"}};
};

TEST_F(QtAlertsTest, AnswersWithTheButtonTheUserChose) {
    for (const int chosen : {0, 1, 2}) {
        const auto click = [&] {
            QTest::mouseClick(buttonNamed(QString::fromStdString(question.buttons[chosen])),
                              Qt::LeftButton);
        };
        EXPECT_EQ(ask(question, click).button, chosen);
    }
    const auto pressReturn = [] { QTest::keyClick(shownBox(), Qt::Key_Return); };
    const auto pressEscape = [] { QTest::keyClick(shownBox(), Qt::Key_Escape); };
    EXPECT_EQ(ask(question, pressReturn).button, 0);
    EXPECT_EQ(ask(question, pressEscape).button, 2);
    EXPECT_EQ(ask(question, [] { shownBox()->close(); }).button, 2);
}

TEST_F(QtAlertsTest, ClosingNeverPicksADestructiveButton) {
    const alertQuestion reset{.title = "Delete everything?",
                              .text = "",
                              .buttons = {"No", "Yes"},
                              .style = alertStyle::critical,
                              .destructiveButton = 1};
    EXPECT_EQ(ask(reset, [] { QTest::keyClick(shownBox(), Qt::Key_Escape); }).button, 0);
    EXPECT_EQ(ask(reset, [] { QTest::keyClick(shownBox(), Qt::Key_Return); }).button, 0);
    const auto agree = [] {
        EXPECT_EQ(shownBox()->icon(), QMessageBox::Critical);
        QTest::mouseClick(buttonNamed("Yes"), Qt::LeftButton);
    };
    EXPECT_EQ(ask(reset, agree).button, 1);
}

TEST_F(QtAlertsTest, OffersSuppressionWhereAsked) {
    alertQuestion suppressible = question;
    suppressible.offersSuppression = true;
    const auto tickAndEscape = [] {
        shownBox()->checkBox()->click();
        QTest::keyClick(shownBox(), Qt::Key_Escape);
    };
    const alertAnswer ticked = ask(suppressible, tickAndEscape);
    EXPECT_EQ(ticked.button, 2);
    EXPECT_TRUE(ticked.suppressed);
    EXPECT_FALSE(ask(suppressible, [] { shownBox()->close(); }).suppressed);
    const auto lookAndClose = [] {
        EXPECT_FALSE(shownBox()->checkBox());
        shownBox()->close();
    };
    EXPECT_FALSE(ask(question, lookAndClose).suppressed);
}

TEST_F(QtAlertsTest, ShowsTextsAsTheyAre) {
    const std::string markup = "<b>bold</b> &amp; <img src='file:///x.png'>";
    const std::string endless = std::string(5'000, 'x');
    const alertQuestion odd{.title = markup, .text = markup + " " + endless, .buttons = {"OK"}};
    const auto look = [&] {
        int texts = 0;
        for (const QLabel* label : shownBox()->findChildren<QLabel*>()) {
            if (!label->text().contains("bold")) continue;
            ++texts;
            EXPECT_EQ(label->textFormat(), Qt::PlainText);
            EXPECT_TRUE(label->textInteractionFlags() & Qt::TextSelectableByMouse);
            EXPECT_TRUE(label->textInteractionFlags() & Qt::TextSelectableByKeyboard);
        }
        EXPECT_EQ(texts, 2);
        EXPECT_LT(shownBox()->width(), 1'200);
        EXPECT_LT(shownBox()->height(), 600);
        shownBox()->close();
    };
    ask(odd, look);
}

TEST_F(QtAlertsTest, ShowsAlertsOneAfterAnotherFromAnyThread) {
    std::vector<std::string> shown;
    alerts.showAlert("first", "");
    EXPECT_FALSE(shownBox()); // the caller goes on
    dispatcher.inBackground(taskPriority::utility, [this] {
        alerts.showAlert("second", "");
        alerts.showAlert("third", "");
    });
    for (int alert = 0; alert < 3; ++alert) {
        waitForBox();
        dispatcher.finish();
        EXPECT_EQ(QApplication::topLevelWidgets().count(shownBox()), 1);
        shown.push_back(shownBox()->text().toStdString());
        EXPECT_EQ(shownBox()->icon(), QMessageBox::Warning);
        EXPECT_EQ(shownBox()->buttons().size(), 1);
        const QPointer<QMessageBox> box = shownBox();
        QTest::keyClick(box, Qt::Key_Escape);
        while (box)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    EXPECT_THAT(shown, ::testing::ElementsAre("first", "second", "third"));
    EXPECT_FALSE(shownBox());
}

TEST_F(QtAlertsTest, AnAlertWaitsBehindAQuestionAndQuittingWaitsForTheAlert) {
    const auto alertMeanwhile = [this] {
        alerts.showAlert("meanwhile", "");
        dispatcher.finish();
        EXPECT_EQ(shownBox()->text(), "Title");
        shownBox()->close();
    };
    ask(question, alertMeanwhile);
    ASSERT_TRUE(shownBox());
    EXPECT_EQ(shownBox()->text(), "meanwhile");
    QTimer::singleShot(0, [] { buttonNamed("OK")->click(); });
    alerts.finish();
    EXPECT_FALSE(shownBox());
}

} // namespace
} // namespace tessaril
