#pragma once

#include "platform/dispatcher.h"

#include <deque>
#include <utility>
#include <vector>

namespace tessaril::testing {

/// A dispatcher on one thread whose tasks run when the test says so.
struct SteppedDispatcher : Dispatcher {
    struct delayedTask {
        std::chrono::milliseconds delay;
        Task task;
    };

    void onMain(Task task) override { mainTasks.push_back(std::move(task)); }
    void onMainAfter(std::chrono::milliseconds delay, Task task) override {
        delayedTasks.push_back({delay, std::move(task)});
    }
    void inBackground(taskPriority priority, Task task) override {
        priorities.push_back(priority);
        backgroundTasks.push_back(std::move(task));
    }

    /// Runs the oldest of the tasks; false when there is none.
    static bool step(std::deque<Task>& tasks) {
        if (tasks.empty()) return false;
        const Task task = std::move(tasks.front());
        tasks.pop_front();
        task();
        return true;
    }
    /// Runs everything queued, and what that queues, except delayed tasks.
    void runAll() {
        while (step(backgroundTasks) || step(mainTasks)) {
        }
    }
    /// Lets the delays pass.
    void passDelays() {
        for (auto& [delay, task] : std::exchange(delayedTasks, {}))
            onMain(std::move(task));
    }

    std::deque<Task> mainTasks;
    std::deque<Task> backgroundTasks;
    std::vector<delayedTask> delayedTasks;
    std::vector<taskPriority> priorities; ///< of all background tasks so far
};

} // namespace tessaril::testing
