#include "desktop/qt_alerts.h"
#include "desktop/qt_dispatcher.h"
#include "support/event_loop.h"
#include "support/test.h"

#include <QtWidgets>

#include <atomic>
#include <latch>

namespace tessaril {
namespace {

using Act = std::function<void(QMessageBox&)>;

Act click(const QString& text) {
    return [text](QMessageBox& box) {
        for (QAbstractButton* button : box.buttons())
            if (button->text().remove('&') == text) button->click();
    };
}

Act press(Qt::Key key) {
    return [key](QMessageBox& box) { QTest::keyClick(&box, key); };
}

struct QtAlertsTest : ::testing::Test {
    /// Does `act` with every box that comes on the screen.
    void onBox(const Act& act) {
        timer.disconnect();
        QObject::connect(&timer, &QTimer::timeout, &timer, [act] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (box && box->isActiveWindow()) act(*box);
        });
        timer.start(0);
    }

    QTimer timer;
    QtDispatcher dispatcher;
    QtAlerts alerts{dispatcher};
    alertQuestion question{.title = "Title", .text = "Text", .buttons = {"Yes", "Perhaps", "No"}};
};

TEST_F(QtAlertsTest, AnswerWithWhatTheUserChoseAndNeverDestroyByClosing) {
    const alertQuestion reset{.title = "Reset?",
                              .text = "",
                              .buttons = {"No", "Yes"},
                              .destructiveButton = 1,
                              .offersSuppression = true};
    const std::tuple<const alertQuestion&, Act, int> cases[] = {
        {question, click("Yes"), 0},
        {question, click("Perhaps"), 1},
        {question, press(Qt::Key_Return), 0},
        {question, press(Qt::Key_Escape), 2},
        {reset, press(Qt::Key_Return), 0},
        {reset, press(Qt::Key_Escape), 0},
        {reset, click("Yes"), 1}};
    for (const auto& [asked, act, button] : cases) {
        onBox(act);
        const alertAnswer answer = alerts.ask(asked);
        EXPECT_EQ(answer.button, button) << asked.title;
        EXPECT_FALSE(answer.suppressed);
    }
    onBox([](QMessageBox& box) {
        box.checkBox()->click();
        box.close();
    });
    EXPECT_TRUE(alerts.ask(reset).suppressed);
}

TEST_F(QtAlertsTest, ShowTextsAsTheyAre) {
    onBox([](QMessageBox& box) {
        int texts = 0;
        for (const QLabel* label : box.findChildren<QLabel*>())
            texts += label->text().contains("bold") && label->textFormat() == Qt::PlainText;
        EXPECT_EQ(texts, 2);
        EXPECT_TRUE(QSize(1'200, 600).expandedTo(box.size()) == QSize(1'200, 600));
        box.close();
    });
    question.title = "<b>bold</b> &amp; <img src='file:///x.png'> ";
    question.text = question.title + std::string(5'000, 'x');
    alerts.ask(question);
}

TEST_F(QtAlertsTest, ComeOneAfterAnotherBehindAQuestionAndQuittingWaitsForThem) {
    std::vector<std::string> shown;
    onBox([&](QMessageBox& box) {
        if (shown.empty()) {
            alerts.showAlert("first", "");
            dispatcher.inBackground(taskPriority::utility, [this] {
                alerts.showAlert("second", "");
                alerts.showAlert("third", "");
            });
            dispatcher.finish();
        }
        shown.push_back(box.text().toStdString());
        QTest::keyClick(&box, Qt::Key_Escape);
    });
    alerts.ask(question);
    alerts.finish();
    EXPECT_THAT(shown, ElementsAre("Title", "first", "second", "third"));

    alerts.showAlert("before", "");
    dispatcher.finish();
    alerts.ask(question);
    EXPECT_THAT(shown, ElementsAre("Title", "first", "second", "third", "before", "Title"));
}

TEST_F(QtAlertsTest, CloseEveryQuestionOnceTheApplicationEnds) {
    alerts.stopAsking();
    EXPECT_EQ(alerts.ask({.title = "Title", .buttons = {"a", "b", "c"}}).button, 2);
    EXPECT_EQ(alerts.ask({.buttons = {"a", "b"}, .destructiveButton = 1}).button, 0);
    EXPECT_EQ(alerts.ask({.buttons = {"a", "b", "c"}, .closingButton = 1}).button, 1);
}

TEST(QtDispatcherThreads, RunTasksOnTheirSideInOrder) {
    QtDispatcher dispatcher;
    std::atomic<int> misplaced = 0;
    std::vector<int> order;
    for (int task = 0; task < 60; ++task) {
        dispatcher.inBackground(static_cast<taskPriority>(task % 3),
                                [&] { misplaced += QThread::currentThread() == qApp->thread(); });
        dispatcher.onMain([&, task] { order.push_back(task); });
    }
    EXPECT_TRUE(order.empty()); // queued, even from the main thread
    ASSERT_TRUE(eventually([&] { return order.size() == 60; }));
    EXPECT_TRUE(std::ranges::is_sorted(order));
    EXPECT_EQ(misplaced, 0);
}

TEST(QtDispatcherThreads, ABusyPriorityKeepsNoOtherWaiting) {
    QtDispatcher dispatcher;
    std::atomic<bool> release = false;
    for (int task = 0; task < 50; ++task)
        dispatcher.inBackground(taskPriority::background, [&] { release.wait(false); });
    std::atomic<bool> saved = false;
    dispatcher.inBackground(taskPriority::utility, [&] { saved = true; });
    EXPECT_TRUE(eventually([&] { return saved.load(); }));
    release = true;
    release.notify_all();
}

TEST(QtDispatcherThreads, StartsOtherTasksBesideThoseThatWait) {
    QtDispatcher dispatcher;
    constexpr int waiting = 12;
    std::latch started(waiting);
    std::latch saved(1);
    for (int i = 0; i < waiting; ++i)
        dispatcher.inBackground(taskPriority::utility, [&] {
            dispatcher.whileWaiting([&] {
                started.count_down();
                saved.wait();
            });
        });
    started.wait();
    dispatcher.inBackground(taskPriority::utility, [&] { saved.count_down(); });
    dispatcher.finish(); // would never return
    EXPECT_TRUE(saved.try_wait());
}

TEST(QtDispatcherThreads, FinishLosesNothingThatWasBegun) {
    int steps = 0;
    const auto held = std::make_shared<int>();
    auto owner = std::make_unique<QtDispatcher>();
    QtDispatcher& dispatcher = *owner;
    // Main to background and back, several times over.
    std::function<void()> next = [&] {
        if (++steps < 10)
            dispatcher.inBackground(taskPriority::utility, [&] { dispatcher.onMain(next); });
    };
    dispatcher.onMain(next);
    dispatcher.inBackground(taskPriority::background, [held] {});
    dispatcher.finish();
    EXPECT_EQ(steps, 10);
    EXPECT_EQ(held.use_count(), 1);

    steps = 8;
    dispatcher.onMain(next);
    owner.reset(); // finishes too
    EXPECT_EQ(steps, 10);
    QCoreApplication::processEvents(); // left-over wake-ups find nothing
}

} // namespace
} // namespace tessaril
