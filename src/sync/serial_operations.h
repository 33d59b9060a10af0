#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

namespace tessaril {

/// Runs operations that end later, on any thread: each begins when the one before has ended, on
/// the thread that ended it; the first on the thread that adds it.
class SerialOperations {
public:
    using Ended = std::function<void()>;
    /// Calls what it is given exactly once.
    using Operation = std::function<void(Ended)>;

    void add(Operation operation);

    /// Returns when all have ended, or the time is over.
    void waitUntilIdle(std::chrono::milliseconds time);

private:
    void run();
    void ended();

    std::mutex mutex; ///< guards what follows
    std::condition_variable becameIdle;
    std::deque<Operation> waiting;
    bool isRunning = false;
    bool isLooping = false; ///< some thread is in `run`
};

} // namespace tessaril
