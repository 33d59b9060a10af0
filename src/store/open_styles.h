#pragma once

#include "events/notification_center.h"
#include "store/style_ids.h"

#include <cstdint>
#include <functional>

namespace tessaril {

/// The identifiers of the styles that are open in a Style Editor window, as `addToOpenStyles` and
/// `removeFromOpenStyles` tell. Safe to use from any thread.
class OpenStyles {
public:
    explicit OpenStyles(NotificationCenter& center);

    bool isEmpty() const { return ids.isEmpty(); }
    bool contains(std::int64_t id) const { return ids.contains(id); }

private:
    StyleIDs ids;
    NotificationCenter::Subscription added;
    NotificationCenter::Subscription removed;
};

/// Enters the style while `open` opens its window: one whose window did not open must not stay
/// locked.
/// - open: gives whether it has
void openRegistered(NotificationCenter& center, std::int64_t id, const std::function<bool()>& open);

} // namespace tessaril
