#include "store/save_queue.h"

#include <utility>

namespace tessaril {

SaveQueue::SaveQueue(Dispatcher& ownDispatcher, std::function<void(bool)> saveOnce)
    : dispatcher(ownDispatcher), save(std::move(saveOnce)) {}

void SaveQueue::request(bool upload) {
    {
        const std::lock_guard lock(mutex);
        waitingUpload |= upload;
        // Whoever runs a save looks for a waiting one afterwards: no thread is kept for waiting.
        if (std::exchange(waiting, true) || running) return;
    }
    dispatcher.inBackground(taskPriority::utility, [this] {
        std::unique_lock lock(mutex);
        if (!running) runWaiting(std::move(lock));
    });
}

void SaveQueue::finish() {
    std::unique_lock lock(mutex);
    ended.wait(lock, [this] { return !running; });
    runWaiting(std::move(lock));
}

void SaveQueue::runWaiting(std::unique_lock<std::mutex> lock) {
    running = true;
    while (std::exchange(waiting, false)) {
        const bool upload = std::exchange(waitingUpload, false);
        lock.unlock();
        save(upload);
        lock.lock();
    }
    running = false;
    ended.notify_all();
}

} // namespace tessaril
