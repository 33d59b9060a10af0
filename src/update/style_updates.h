#pragma once

#include "events/notification_center.h"
#include "platform/alerts.h"
#include "platform/dispatcher.h"
#include "store/style_ids.h"
#include "store/style_list.h"
#include "store/style_store.h"
#include "update/style_check.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <set>
#include <stop_token>

namespace tessaril {

/// What the updates work with. All outlive them and their tasks.
struct styleUpdatesSurroundings {
    StyleStore& store;
    StyleList& list;
    NotificationCenter& center;
    Dispatcher& dispatcher;
    Alerts& alerts;
    StyleIDs& updatingStyles; ///< the styles being checked, which this keeps
    checkSurroundings checks;
};

/// The checks for newer versions that show in the rows of the style list, a few at a time in the
/// background. Main thread only.
class StyleUpdates {
public:
    explicit StyleUpdates(styleUpdatesSurroundings surroundings);

    /// Called when `isRunning` has changed; nothing to stop.
    void setObserver(std::function<void()> handler) { observer = std::move(handler); }

    /// Checks one style, unless it is being checked already.
    void checkStyleForUpdate(std::int64_t id);

    /// Checks all styles in the list; `updateAllClicked:` and `newUpdateAll:`. Beeps while the list
    /// is locked for sync, is empty, or a check runs.
    void updateAllClicked();

    /// The same without a beep, as nobody has asked for it. A style that is being checked already
    /// is left at that.
    void checkAll();

    /// `updateAllStyles:`, which asks for the sheet. Beeps while the list is locked for sync.
    void updateAllStyles();

    bool isRunning() const { return !machine.updatingStyles.isEmpty(); }
    /// Whether there is a style that can be checked.
    bool hasStylesToCheck() const;

    /// Ends all checks; what they would have found is dropped. For quitting.
    void stop();

private:
    void begin(std::int64_t id);
    void startWaiting();
    void start(const std::shared_ptr<const styleContainer>& style);
    void end(std::int64_t id, checkOutcome outcome);
    void tellWhetherRunning();

    styleUpdatesSurroundings machine;
    std::function<void()> observer;
    bool wasRunning = false;
    std::deque<std::int64_t> waiting;
    std::set<std::int64_t> askedFor; ///< by the row's own button
    std::size_t running = 0;
    std::stop_source stopping;
};

} // namespace tessaril
