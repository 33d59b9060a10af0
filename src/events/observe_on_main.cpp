#include "events/observe_on_main.h"

#include <utility>

namespace tessaril {

NotificationCenter::Subscription observeOnMain(NotificationCenter& center, Dispatcher& dispatcher,
                                               std::string_view name,
                                               std::weak_ptr<const void> alive,
                                               std::function<void(const notification&)> handler) {
    return center.observe(name, [&dispatcher, watched = std::move(alive),
                                 handle = std::move(handler)](const notification& posted) {
        dispatcher.onMain([watched, handle, posted] {
            if (!watched.expired()) handle(posted);
        });
    });
}

} // namespace tessaril
