#pragma once

#include "desktop/file_descriptor.h"

#include <chrono>
#include <memory>

namespace tessaril {

/// Ends the waits of another thread, once and for all. Safe to use from any thread.
class StopSignal {
public:
    StopSignal();

    void stop();
    bool isStopped() const;
    /// Readable from the stop on.
    int descriptor() const { return event.get(); }

private:
    FileDescriptor event;
};

/// Until when something may wait.
class TimeLimit {
public:
    using Clock = std::chrono::steady_clock;

    /// - endTime: Clock::time_point::max() for no end but the stop
    TimeLimit(Clock::time_point endTime, std::shared_ptr<const StopSignal> stopSignal);

    Clock::time_point end() const { return endTime; }
    bool isOver() const;
    /// Rounded up, not negative, at most a day.
    std::chrono::milliseconds left() const;

    /// Waits until the descriptor is ready for one of `events`, as poll() has them. Gives what it
    /// is ready for; 0 when the limit came first.
    short waitFor(int descriptor, short events) const;

private:
    Clock::time_point endTime;
    std::shared_ptr<const StopSignal> stopSignal;
};

} // namespace tessaril
