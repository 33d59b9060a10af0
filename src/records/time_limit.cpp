#include "records/time_limit.h"

#include <poll.h>
#include <sys/eventfd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <system_error>
#include <utility>

namespace tessaril {

StopSignal::StopSignal() : event(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (!event.isOpen()) throw std::system_error(errno, std::generic_category(), "eventfd");
}

void StopSignal::stop() {
    const std::uint64_t one = 1;
    // It can only fail where it was stopped 2^64 times before.
    [[maybe_unused]] const auto written = ::write(event.get(), &one, sizeof one);
}

bool StopSignal::isStopped() const {
    pollfd waited{.fd = event.get(), .events = POLLIN, .revents = 0};
    return ::poll(&waited, 1, 0) == 1;
}

TimeLimit::TimeLimit(Clock::time_point end, std::shared_ptr<const StopSignal> stop)
    : endTime(end), stopSignal(std::move(stop)) {}

bool TimeLimit::isOver() const {
    return Clock::now() >= endTime || stopSignal->isStopped();
}

std::chrono::milliseconds TimeLimit::left() const {
    using namespace std::chrono;
    const auto now = Clock::now();
    if (now >= endTime) return 0ms;
    if (endTime == Clock::time_point::max()) return 24h;
    return std::min<milliseconds>(ceil<milliseconds>(endTime - now), 24h);
}

short TimeLimit::waitFor(int descriptor, short events) const {
    for (;;) {
        std::array waited{pollfd{.fd = descriptor, .events = events, .revents = 0},
                          pollfd{.fd = stopSignal->descriptor(), .events = POLLIN, .revents = 0}};
        const bool isEndless = endTime == Clock::time_point::max();
        const int ready =
            ::poll(waited.data(), waited.size(), isEndless ? -1 : static_cast<int>(left().count()));
        if (ready < 0 && errno != EINTR) return POLLERR;
        if (waited[1].revents != 0) return 0;
        if (ready > 0) return waited[0].revents;
        if (isOver()) return 0;
    }
}

} // namespace tessaril
