#pragma once

#include "platform/dispatcher.h"

#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace tessaril::testing {

/// A dispatcher that starts a thread for every background task. Tasks of the main thread are kept.
class ThreadDispatcher : public Dispatcher {
public:
    ~ThreadDispatcher() override { join(); }

    void onMain(Task task) override {
        const std::lock_guard lock(mutex);
        mainTasks.push_back(std::move(task));
    }
    void onMainAfter(std::chrono::milliseconds, Task task) override { onMain(std::move(task)); }
    void inBackground(taskPriority, Task task) override {
        const std::lock_guard lock(mutex);
        threads.emplace_back(std::move(task));
    }

    /// Waits for all background tasks, those that they start included.
    void join() {
        for (std::vector<std::thread> started = take(); !started.empty(); started = take())
            for (std::thread& thread : started)
                thread.join();
    }

    /// Runs what is kept of the main thread so far.
    void runMain() {
        std::vector<Task> kept;
        {
            const std::lock_guard lock(mutex);
            kept = std::exchange(mainTasks, {});
        }
        for (const Task& task : kept)
            task();
    }

private:
    std::vector<std::thread> take() {
        const std::lock_guard lock(mutex);
        return std::exchange(threads, {});
    }

    std::mutex mutex;
    std::vector<Task> mainTasks;
    std::vector<std::thread> threads;
};

} // namespace tessaril::testing
