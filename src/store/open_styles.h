#pragma once

#include "events/notification_center.h"

#include <cstdint>
#include <mutex>
#include <set>

namespace tessaril {

/// The identifiers of the styles that are open in a Style Editor window, as `addToOpenStyles` and
/// `removeFromOpenStyles` tell. Safe to use from any thread.
class OpenStyles {
public:
    explicit OpenStyles(NotificationCenter& center);

    bool isEmpty() const;
    bool contains(std::int64_t id) const;

private:
    mutable std::mutex mutex;
    std::set<std::int64_t> ids;
    NotificationCenter::Subscription added;
    NotificationCenter::Subscription removed;
};

} // namespace tessaril
