#pragma once

#include "records/record_session.h"
#include "records/time_limit.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tessaril {

/// What came of an operation.
struct recordOutcome {
    std::optional<recordError> error;
    std::optional<std::map<recordID, cloudRecord>> records; ///< of a fetch
    std::vector<std::string> changeTags;                    ///< of a save
    recordTags tags;                                        ///< of a subscription
};

/// A thread with a session, which carries out one task after another. Where a task does not end,
/// the thread is left behind with it: no time limit holds for the look-up of a host's name, nor
/// for a file on a network drive that is gone.
class AbandonableWorker {
public:
    using Task = std::function<recordOutcome(RecordSession&, const TimeLimit&)>;
    using Done = std::function<void(recordOutcome)>;

    explicit AbandonableWorker(RecordSession session);
    /// Calls off the task under way, without waiting for it.
    ~AbandonableWorker();
    AbandonableWorker(const AbandonableWorker&) = delete;
    AbandonableWorker& operator=(const AbandonableWorker&) = delete;

    /// Not before the task before it was done.
    /// - done: called on the worker's thread, also late, when the worker is gone
    void carryOut(Task task, TimeLimit::Clock::time_point end, Done done);

private:
    struct Shared;
    std::shared_ptr<Shared> shared;
};

} // namespace tessaril
