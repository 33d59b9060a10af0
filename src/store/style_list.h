#pragma once

#include "events/notification_center.h"
#include "platform/alerts.h"
#include "platform/dispatcher.h"
#include "store/style_object.h"
#include "store/style_store.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tessaril {

/// What the style list tells its window. All on the main thread; a row's index is its style's.
class StyleListObserver {
public:
    virtual ~StyleListObserver() = default;

    /// All rows are new.
    virtual void rowsReset() = 0;
    /// A last row was added, to be scrolled to and selected.
    virtual void rowAppended() = 0;
    /// The row shows something else.
    virtual void rowChanged(std::size_t row) = 0;
    /// Scroll to the row and select it.
    virtual void selectRow(std::size_t row) = 0;
};

/// The style list behind its window: the rows, kept in step with the live database by way of the
/// event bus, and the commands on them. Main thread only, where notifications arrive on any.
class StyleList {
public:
    StyleList(StyleStore& store, NotificationCenter& center, Dispatcher& dispatcher,
              Alerts& alerts);

    /// The window that shows the list; nothing to stop telling. Rows are read from the live
    /// database when the first observer arrives, which loads it.
    void setObserver(StyleListObserver* observer);

    const std::vector<styleObject>& styles() const { return rows; }

    /// The row's check box: flips whether the style is enabled and saves. Only beeps while locked.
    void onToggle(std::size_t row);

    /// Whether the cloud copy is being fetched, so that no command may change the list.
    bool isLockedForSync() const { return lockedForSync; }
    void setLockedForSync(bool locked) { lockedForSync = locked; }

private:
    void tellChanged(std::size_t row);
    void refreshTable();
    void refreshTableAndScroll();
    void addLatestStyle();
    void openStyle(std::int64_t id);

    StyleStore& store;
    Dispatcher& dispatcher;
    Alerts& alerts;
    StyleListObserver* observer = nullptr;
    std::vector<styleObject> rows;
    bool lockedForSync = false;
    std::vector<NotificationCenter::Subscription> subscriptions;
};

} // namespace tessaril
