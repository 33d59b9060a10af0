#pragma once

#include "platform/dispatcher.h"

#include <condition_variable>
#include <functional>
#include <mutex>

namespace tessaril {

/// Runs saves one after another in the background. A save asked for while one waits is folded into
/// the waiting one; one asked for while one runs follows it, so that the last state is always
/// saved.
class SaveQueue {
public:
    /// - save: does one save; its argument says whether any of the folded requests wants the upload
    SaveQueue(Dispatcher& dispatcher, std::function<void(bool upload)> save);

    void request(bool upload);

    /// Returns when no save runs or waits; may run one on the calling thread.
    void finish();

private:
    void runWaiting(std::unique_lock<std::mutex> lock);

    Dispatcher& dispatcher;
    std::function<void(bool)> save;
    std::mutex mutex; ///< guards what follows
    std::condition_variable ended;
    bool running = false;
    bool waiting = false;
    bool waitingUpload = false;
};

} // namespace tessaril
