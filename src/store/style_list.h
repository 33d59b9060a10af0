#pragma once

#include "events/notification_center.h"
#include "platform/dispatcher.h"
#include "platform/icon_loader.h"
#include "store/style_filter.h"
#include "store/style_object.h"
#include "store/style_store.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace tessaril {

/// What becomes of some rows that stand together.
struct rowsChange {
    enum class kind { insertion, removal, move };
    kind what;
    std::size_t first;
    std::size_t last;   ///< the last one of them, not the one behind
    std::size_t to = 0; ///< of a move, which is of one row: where it stands afterwards
};

/// What the style list tells its window. All on the main thread; a row's index is its style's.
class StyleListObserver {
public:
    virtual ~StyleListObserver() = default;

    /// All rows are about to be made anew, and have been.
    virtual void rowsWillReset() = 0;
    virtual void rowsReset() = 0;
    /// The same of some rows. Between the two calls nothing is to be read.
    virtual void rowsWillChange(const rowsChange& change) = 0;
    virtual void rowsChanged(const rowsChange& change) = 0;
    /// The row shows something else.
    virtual void rowChanged(std::size_t row) = 0;
    /// Scroll to the first of the rows, which are ascending, and select them and no others; where
    /// the filter hides one, the filter has to go.
    virtual void selectRows(const std::vector<std::size_t>& rows) = 0;
    /// `isLockedForSync` has changed.
    virtual void lockChanged() = 0;
};

/// The rows of the style list, kept in step with the live database by way of the event bus. Main
/// thread only, where notifications arrive on any.
class StyleList {
public:
    /// All outlive it.
    StyleList(StyleStore& store, NotificationCenter& center, Dispatcher& dispatcher,
              IconLoader& icons);
    ~StyleList();
    StyleList(const StyleList&) = delete;
    StyleList& operator=(const StyleList&) = delete;

    /// The window that shows the list; nothing to stop telling. Rows are read from the live
    /// database when the first observer arrives, which loads it.
    void setObserver(StyleListObserver* observer);

    const std::vector<std::unique_ptr<styleObject>>& styles() const { return rows; }

    /// The first row of the style.
    std::optional<std::size_t> rowOf(std::int64_t id) const;

    /// Whether the cloud copy is being fetched, so that no command may change the list.
    bool isLockedForSync() const { return lockedForSync; }
    void setLockedForSync(bool locked);

    /// The styles whose rows are on the screen, whose icons are wanted first.
    void setOnScreen(std::vector<std::int64_t> ids);

    // What the commands on the list tell it of.

    /// All rows anew from the live database. A style that is being checked for an update still
    /// shows so; how an earlier check ended does not stay.
    void refreshTable();
    /// Rows that the live database has no more, ascending.
    void removeRows(const std::vector<std::size_t>& removed);
    /// Rows that the live database has got, ascending; the indexes are those afterwards.
    void insertRows(const std::vector<std::size_t>& inserted);
    void moveRow(std::size_t from, std::size_t to);
    /// What the row's check box shows.
    void showEnabled(std::size_t row, bool isEnabled);
    /// How the style's update check goes, one of `updateStatuses`. A style that was updated shows
    /// what it has become.
    void showUpdateStatus(std::int64_t id, std::string_view status);
    /// Draws the row anew, as for a box that the user clicked in vain.
    void showAgain(std::size_t row);
    /// Scrolls to the first of the rows, which are ascending, and selects them and no others.
    void selectRows(const std::vector<std::size_t>& selected);

private:
    void refreshSoon(bool scrolls);
    void refreshTableAndScroll();
    void addLatestStyle();
    void showStyle(std::int64_t id);
    void showStyleWithNewRules(std::int64_t id);
    std::unordered_set<std::int64_t> stylesBeingChecked() const;
    void takeIcon(std::int64_t id, const std::shared_ptr<const siteIcon>& icon,
                  iconRequest request);
    void change(const rowsChange& change, const std::function<void()>& apply);
    void refreshUnlessEqualInNumber();

    StyleStore& store;
    NotificationCenter& center;
    Dispatcher& dispatcher;
    IconLoader& icons;
    StyleListObserver* observer = nullptr;
    std::vector<std::unique_ptr<styleObject>> rows;
    /// The first row of every style, made anew when it is asked for after the rows have changed.
    mutable std::unordered_map<std::int64_t, std::size_t> places;
    mutable bool placesHold = false;
    bool lockedForSync = false;
    std::atomic<bool> waitsForRefresh = false; ///< a task of the main thread
    std::atomic<bool> waitsForScroll = false;
    std::vector<NotificationCenter::Subscription> subscriptions;
};

} // namespace tessaril
