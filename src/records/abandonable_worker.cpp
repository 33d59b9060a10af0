#include "records/abandonable_worker.h"

#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

namespace tessaril {

struct AbandonableWorker::Shared {
    struct job {
        Task task;
        TimeLimit::Clock::time_point end;
        Done done;
    };

    std::optional<job> nextJob() {
        std::unique_lock lock(mutex);
        changed.wait(lock, [this] { return next || stop->isStopped(); });
        if (stop->isStopped()) return std::nullopt;
        return std::exchange(next, std::nullopt);
    }

    const std::shared_ptr<StopSignal> stop = std::make_shared<StopSignal>();
    std::mutex mutex;
    std::condition_variable changed;
    std::optional<job> next;
};

AbandonableWorker::AbandonableWorker(RecordSession session) : shared(std::make_shared<Shared>()) {
    std::thread([shared = shared, session = std::move(session)]() mutable {
        while (auto job = shared->nextJob())
            job->done(job->task(session, TimeLimit(job->end, shared->stop)));
    }).detach();
}

AbandonableWorker::~AbandonableWorker() {
    shared->stop->stop();
    const std::lock_guard lock(shared->mutex);
    shared->changed.notify_all();
}

void AbandonableWorker::carryOut(Task task, TimeLimit::Clock::time_point end, Done done) {
    const std::lock_guard lock(shared->mutex);
    shared->next.emplace(std::move(task), end, std::move(done));
    shared->changed.notify_all();
}

} // namespace tessaril
