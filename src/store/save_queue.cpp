#include "store/save_queue.h"

#include <utility>

namespace tessaril {

SaveQueue::SaveQueue(Dispatcher& ownDispatcher, std::function<void(bool)> saveOnce)
    : dispatcher(ownDispatcher), save(std::move(saveOnce)) {}

void SaveQueue::request(bool upload) {
    {
        const std::lock_guard lock(mutex);
        waitingUpload |= upload;
        if (std::exchange(waiting, true)) return;
    }
    dispatcher.inBackground(taskPriority::utility, [this] { runWaiting(); });
}

void SaveQueue::finish() {
    runWaiting();
}

void SaveQueue::runWaiting() {
    const std::lock_guard oneAtATime(running);
    bool upload = false;
    {
        const std::lock_guard lock(mutex);
        if (!std::exchange(waiting, false)) return;
        upload = std::exchange(waitingUpload, false);
    }
    save(upload);
}

} // namespace tessaril
