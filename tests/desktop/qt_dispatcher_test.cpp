#include "desktop/qt_dispatcher.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <vector>

namespace tessaril {
namespace {

using namespace std::chrono_literals;

TEST(QtDispatcherThreads, RunsMainTasksInOrderOnTheMainThread) {
    QtDispatcher dispatcher;
    std::vector<int> order;
    bool onMainThread = true;
    for (int task = 0; task < 100; ++task)
        dispatcher.onMain([&, task] {
            order.push_back(task);
            onMainThread &= QThread::currentThread() == qApp->thread();
        });
    EXPECT_TRUE(order.empty()); // queued, even from the main thread
    while (order.size() < 100)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
    EXPECT_TRUE(onMainThread);
}

TEST(QtDispatcherThreads, RunsBackgroundTasksOfEveryPriorityOffTheMainThread) {
    QtDispatcher dispatcher;
    std::atomic<int> elsewhere = 0;
    // More than any pool has threads, each handing over to the main thread.
    int arrived = 0;
    for (int task = 0; task < 60; ++task)
        dispatcher.inBackground(static_cast<taskPriority>(task % 3), [&] {
            if (QThread::currentThread() != qApp->thread()) ++elsewhere;
            dispatcher.onMain([&] { ++arrived; });
        });
    while (arrived < 60)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    EXPECT_EQ(elsewhere, 60);
}

TEST(QtDispatcherThreads, ABusyPriorityKeepsNoOtherWaiting) {
    QtDispatcher dispatcher;
    std::atomic<bool> release = false;
    for (int task = 0; task < 50; ++task)
        dispatcher.inBackground(taskPriority::background, [&] { release.wait(false); });
    bool saved = false;
    dispatcher.inBackground(taskPriority::utility,
                            [&] { dispatcher.onMain([&] { saved = true; }); });
    while (!saved)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    release = true;
    release.notify_all();
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

TEST(QtDispatcherThreads, DelayedTasksAreNeverEarly) {
    QtDispatcher dispatcher;
    QElapsedTimer clock;
    clock.start();
    qint64 ranAfter = -1;
    dispatcher.inBackground(taskPriority::utility, [&] {
        dispatcher.onMainAfter(30ms, [&] { ranAfter = clock.elapsed(); });
    });
    while (ranAfter < 0)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    EXPECT_GE(ranAfter, 30);
}

} // namespace
} // namespace tessaril
