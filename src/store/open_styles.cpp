#include "store/open_styles.h"

#include "events/notification_names.h"

namespace tessaril {

OpenStyles::OpenStyles(NotificationCenter& center)
    : added(center.observe(notifications::addToOpenStyles,
                           [this](const notification& n) {
                               if (const auto id = n.id()) ids.add(*id);
                           }))
    , removed(center.observe(notifications::removeFromOpenStyles, [this](const notification& n) {
        if (const auto id = n.id()) ids.remove(*id);
    })) {}

void openRegistered(NotificationCenter& center, std::int64_t id,
                    const std::function<bool()>& open) {
    center.post(notifications::addToOpenStyles, id);
    if (!open()) center.post(notifications::removeFromOpenStyles, id);
}

} // namespace tessaril
