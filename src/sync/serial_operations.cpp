#include "sync/serial_operations.h"

#include <utility>

namespace tessaril {

void SerialOperations::add(Operation operation) {
    {
        const std::lock_guard lock(mutex);
        waiting.push_back(std::move(operation));
    }
    run();
}

/// A loop, as operations that end at once would nest.
void SerialOperations::run() {
    std::unique_lock lock(mutex);
    if (std::exchange(isLooping, true)) return;
    while (!isRunning && !waiting.empty()) {
        const Operation operation = std::move(waiting.front());
        waiting.pop_front();
        isRunning = true;
        lock.unlock();
        operation([this] { ended(); });
        lock.lock();
    }
    isLooping = false;
    if (!isRunning) becameIdle.notify_all();
}

void SerialOperations::waitUntilIdle(std::chrono::milliseconds time) {
    std::unique_lock lock(mutex);
    becameIdle.wait_for(lock, time, [this] { return !isLooping && !isRunning && waiting.empty(); });
}

void SerialOperations::ended() {
    {
        const std::lock_guard lock(mutex);
        isRunning = false;
    }
    run();
}

} // namespace tessaril
