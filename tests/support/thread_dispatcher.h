#pragma once

#include "platform/dispatcher.h"

#include <mutex>
#include <thread>
#include <vector>

namespace tessaril::testing {

/// A dispatcher that starts a thread for every background task. Tasks of the main thread are kept
/// until they are asked for.
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
        for (;;) {
            std::vector<std::thread> started;
            {
                const std::lock_guard lock(mutex);
                started.swap(threads);
            }
            if (started.empty()) return;
            for (std::thread& thread : started)
                thread.join();
        }
    }

private:
    std::mutex mutex;
    std::vector<Task> mainTasks;
    std::vector<std::thread> threads;
};

} // namespace tessaril::testing
