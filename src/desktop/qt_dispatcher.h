#pragma once

#include "platform/dispatcher.h"

#include <QObject>
#include <QThreadPool>

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>

namespace tessaril {

/// Tasks on Qt's main event loop and on thread pools. To be made on the main thread.
///
/// A pool per priority, so that slow downloads never keep a save waiting; the lower priorities
/// also run at a higher nice value. A task that waits does not count in its pool, which starts
/// another one beside it, up to a number of waiting ones that only a broken network reaches.
class QtDispatcher : public Dispatcher {
public:
    QtDispatcher();
    ~QtDispatcher() override;

    void onMain(Task task) override;
    void onMainAfter(std::chrono::milliseconds delay, Task task) override;
    void inBackground(taskPriority priority, Task task) override;
    void whileWaiting(const Task& wait) override;

    /// Runs on the main thread until no background task and no queued task of the main thread is
    /// left, what they queue included, so that nothing that was begun is lost when the application
    /// quits. Needs no event loop. Tasks whose delay has not passed are not waited for.
    void finish();

private:
    bool runNextOnMain();
    QThreadPool& pool(taskPriority priority);

    QObject mainThread; ///< receives the wake-ups
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<Task> mainTasks;
    std::size_t backgroundTasks = 0; ///< queued or running
    std::atomic<int> waitingTasks = 0;

    QThreadPool userInitiated;
    QThreadPool utility;
    QThreadPool background;
};

} // namespace tessaril
