#pragma once

#include "events/notification_center.h"
#include "platform/dispatcher.h"

#include <functional>
#include <memory>
#include <string_view>

namespace tessaril {

/// Subscribes a handler that runs on the main thread, whichever thread posts; later, and not at all
/// once `alive` has gone. `dispatcher` must live as long as the subscription.
NotificationCenter::Subscription observeOnMain(NotificationCenter& center, Dispatcher& dispatcher,
                                               std::string_view name,
                                               std::weak_ptr<const void> alive,
                                               std::function<void(const notification&)> handler);

} // namespace tessaril
