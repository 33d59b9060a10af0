#pragma once

#include "events/notification_center.h"
#include "store/style_store.h"

#include <cstddef>
#include <mutex>
#include <string>
#include <vector>

namespace tessaril {

/// `recoveryList`: the styles that merges removed from the database in this run, in the order of
/// their removal. Kept in memory only. Safe to use from any thread.
class RecoveryList {
public:
    /// Posts `deletedStylesChanged` itself only when `recover` has taken styles out; whoever adds
    /// posts it.
    RecoveryList(StyleStore& store, NotificationCenter& center);

    bool isEmpty() const;

    /// The styles' names, in order.
    std::vector<std::string> names() const;

    void add(const liveDatabase::styleList& removed);

    /// Puts the styles at the positions, which may come in any order, back into the database: the
    /// last first, behind the others, each with a save and `refreshTableAndScroll`. They are
    /// unchanged, but one whose identifier is taken meanwhile gets a fresh one. Main thread only.
    void recover(std::vector<std::size_t> positions);

private:
    StyleStore& store;
    NotificationCenter& center;
    mutable std::mutex mutex; ///< guards `styles`
    liveDatabase::styleList styles;
};

} // namespace tessaril
