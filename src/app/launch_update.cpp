#include "app/launch_update.h"

#include "events/notification_names.h"
#include "preferences/preference_keys.h"

namespace tessaril {

LaunchUpdate::LaunchUpdate(StyleUpdates& styleUpdates, Preferences& ownPreferences,
                           NotificationCenter& center, Dispatcher& dispatcher)
    : updates(styleUpdates)
    , preferences(ownPreferences)
    // The cloud sync posts it from a thread of its own.
    , performFirstUpdate(center.observe(notifications::performFirstUpdate,
                                        [this, &dispatcher](const notification&) {
                                            dispatcher.onMain([this] {
                                                if (pending) run();
                                            });
                                        })) {}

void LaunchUpdate::listShown() {
    if (done || !preferences.boolean(preferenceKeys::updateOnLaunch)) return;
    if (preferences.boolean(preferenceKeys::useiCloud))
        pending = true;
    else
        run();
}

void LaunchUpdate::run() {
    pending = false;
    done = true;
    updates.checkAll();
}

} // namespace tessaril
