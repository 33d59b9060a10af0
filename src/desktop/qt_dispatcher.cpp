#include "desktop/qt_dispatcher.h"

#include <QMetaObject>
#include <QThread>
#include <QTimer>

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

namespace tessaril {

namespace {

int niceness(taskPriority priority) {
    switch (priority) {
    case taskPriority::userInitiated:
        return 0;
    case taskPriority::utility:
        return 5;
    case taskPriority::background:
        return 10;
    }
    return 0;
}

/// More threads than that are not started for tasks that wait.
constexpr int mostWaitingTasks = 32;

/// The pool whose task the thread runs.
thread_local QThreadPool* poolOfThread = nullptr;

/// On Linux the nice value belongs to the thread.
void setNiceness(int value) {
    ::setpriority(PRIO_PROCESS, static_cast<id_t>(::gettid()), value);
}

} // namespace

QtDispatcher::QtDispatcher() {
    const int threads = std::max(2, QThread::idealThreadCount());
    for (QThreadPool* each : {&userInitiated, &utility})
        each->setMaxThreadCount(threads);
    // What runs at this priority mostly waits for the network, on which one must not hold up the
    // next.
    background.setMaxThreadCount(std::max(16, threads));
}

QtDispatcher::~QtDispatcher() {
    finish();
}

void QtDispatcher::onMain(Task task) {
    {
        const std::lock_guard lock(mutex);
        mainTasks.push_back(std::move(task));
    }
    changed.notify_all();
    QMetaObject::invokeMethod(
        &mainThread, [this] { runNextOnMain(); }, Qt::QueuedConnection);
}

void QtDispatcher::onMainAfter(std::chrono::milliseconds delay, Task task) {
    // Timers belong to the thread that starts them. A coarse timer may fire early.
    QMetaObject::invokeMethod(
        &mainThread,
        [this, delay, task = std::move(task)] {
            QTimer::singleShot(delay, Qt::PreciseTimer, &mainThread, task);
        },
        Qt::QueuedConnection);
}

void QtDispatcher::inBackground(taskPriority priority, Task task) {
    {
        const std::lock_guard lock(mutex);
        ++backgroundTasks;
    }
    pool(priority).start([this, priority, task = std::move(task)]() mutable {
        setNiceness(niceness(priority));
        poolOfThread = &pool(priority);
        task();
        task = nullptr; // what it holds is gone before it counts as done
        {
            const std::lock_guard lock(mutex);
            --backgroundTasks;
            // Under the lock: finish() may be the last act before this object goes.
            changed.notify_all();
        }
    });
}

void QtDispatcher::whileWaiting(const Task& wait) {
    QThreadPool* const own = poolOfThread;
    const bool isSpared = own != nullptr && ++waitingTasks <= mostWaitingTasks;
    if (isSpared) own->releaseThread();
    wait();
    if (isSpared) own->reserveThread();
    if (own != nullptr) --waitingTasks;
}

void QtDispatcher::finish() {
    for (;;) {
        while (runNextOnMain()) {
        }
        std::unique_lock lock(mutex);
        changed.wait(lock, [this] { return !mainTasks.empty() || backgroundTasks == 0; });
        if (mainTasks.empty()) return;
    }
}

/// Runs the oldest task of the main thread; false when there is none, as after finish() has run
/// what a wake-up was still under way for.
bool QtDispatcher::runNextOnMain() {
    Task task;
    {
        const std::lock_guard lock(mutex);
        if (mainTasks.empty()) return false;
        task = std::move(mainTasks.front());
        mainTasks.pop_front();
    }
    task();
    return true;
}

QThreadPool& QtDispatcher::pool(taskPriority priority) {
    switch (priority) {
    case taskPriority::userInitiated:
        return userInitiated;
    case taskPriority::utility:
        return utility;
    case taskPriority::background:
        break;
    }
    return background;
}

} // namespace tessaril
