#include "store/open_styles.h"

#include "events/notification_names.h"

namespace tessaril {

OpenStyles::OpenStyles(NotificationCenter& center)
    : added(center.observe(notifications::addToOpenStyles,
                           [this](const notification& n) {
                               const std::lock_guard lock(mutex);
                               if (const auto id = n.id()) ids.insert(*id);
                           }))
    , removed(center.observe(notifications::removeFromOpenStyles, [this](const notification& n) {
        const std::lock_guard lock(mutex);
        if (const auto id = n.id()) ids.erase(*id);
    })) {}

bool OpenStyles::isEmpty() const {
    const std::lock_guard lock(mutex);
    return ids.empty();
}

bool OpenStyles::contains(std::int64_t id) const {
    const std::lock_guard lock(mutex);
    return ids.contains(id);
}

} // namespace tessaril
