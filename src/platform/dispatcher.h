#pragma once

#include <chrono>
#include <functional>

namespace tessaril {

enum class taskPriority { background, utility, userInitiated };

/// Runs work later. May be called from any thread; a task runs exactly once.
class Dispatcher {
public:
    using Task = std::function<void()>;

    virtual ~Dispatcher() = default;

    /// Queues `task` for the main thread, in order.
    virtual void onMain(Task task) = 0;

    /// Queues `task` for the main thread, no earlier than `delay` from now.
    virtual void onMainAfter(std::chrono::milliseconds delay, Task task) = 0;

    /// Runs `task` on some other thread, concurrently with its like.
    virtual void inBackground(taskPriority priority, Task task) = 0;

    /// Runs `wait` on the calling thread before it returns. For what a background task only waits
    /// for: others of its priority need not wait with it.
    virtual void whileWaiting(const Task& wait) { wait(); }
};

} // namespace tessaril
