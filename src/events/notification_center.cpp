#include "events/notification_center.h"

#include <algorithm>
#include <utility>

namespace tessaril {

std::optional<std::int64_t> notification::id() const {
    const auto* value = info<std::int64_t>("id");
    return value ? std::optional(*value) : std::nullopt;
}

NotificationCenter::Subscription::Subscription(NotificationCenter& owner, std::uint64_t ownToken)
    : center(&owner), token(ownToken) {}

NotificationCenter::Subscription::Subscription(Subscription&& other) noexcept
    : center(std::exchange(other.center, nullptr)), token(other.token) {}

NotificationCenter::Subscription&
NotificationCenter::Subscription::operator=(Subscription&& other) noexcept {
    std::swap(center, other.center);
    std::swap(token, other.token);
    return *this;
}

NotificationCenter::Subscription::~Subscription() {
    if (center) center->remove(token);
}

NotificationCenter::Subscription NotificationCenter::observe(std::string_view name,
                                                             Handler handler) {
    const std::lock_guard lock(mutex);
    observers.push_back({++lastToken, name, std::make_shared<Handler>(std::move(handler))});
    return {*this, lastToken};
}

void NotificationCenter::post(const notification& posted) {
    // Handlers run without the lock, so that they may use the center; who has unsubscribed since
    // the delivery began is skipped.
    std::vector<std::uint64_t> tokens;
    {
        const std::lock_guard lock(mutex);
        for (const observer& o : observers)
            if (o.name == posted.name) tokens.push_back(o.token);
    }
    for (const std::uint64_t token : tokens) {
        std::shared_ptr<Handler> handler;
        {
            const std::lock_guard lock(mutex);
            const auto found = std::ranges::find(observers, token, &observer::token);
            if (found != observers.end()) handler = found->handler;
        }
        if (handler) (*handler)(posted);
    }
}

void NotificationCenter::remove(std::uint64_t token) {
    const std::lock_guard lock(mutex);
    std::erase_if(observers, [token](const observer& o) { return o.token == token; });
}

} // namespace tessaril
