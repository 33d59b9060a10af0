#include "store/style_list.h"

#include "events/notification_names.h"

#include <algorithm>

namespace tessaril {

namespace {

/// Rows that stand together, of an ascending list.
struct rowRun {
    std::size_t first;
    std::size_t last;
};

std::vector<rowRun> runsOf(const std::vector<std::size_t>& ascending) {
    std::vector<rowRun> runs;
    for (const std::size_t row : ascending) {
        if (!runs.empty() && runs.back().last + 1 == row)
            runs.back().last = row;
        else
            runs.push_back({row, row});
    }
    return runs;
}

} // namespace

StyleList::StyleList(StyleStore& styleStore, NotificationCenter& bus, Dispatcher& mainDispatcher,
                     IconLoader& iconLoader)
    : store(styleStore), center(bus), dispatcher(mainDispatcher), icons(iconLoader) {
    namespace names = notifications;
    icons.setFoundHandler(
        [this](auto id, const auto& icon, auto request) { takeIcon(id, icon, request); });
    // The cloud sync posts these from threads of its own.
    subscriptions.push_back(
        center.observe(names::refreshTable, [this](const notification&) { refreshSoon(false); }));
    subscriptions.push_back(center.observe(names::refreshTableAndScroll,
                                           [this](const notification&) { refreshSoon(true); }));
    subscriptions.push_back(
        center.observe(names::addLatestStyle, [this](const notification&) { addLatestStyle(); }));
    subscriptions.push_back(center.observe(names::styleNameChanged, [this](const notification& n) {
        if (const auto id = n.id()) showStyle(*id);
    }));
    subscriptions.push_back(center.observe(names::updateFavicons, [this](const notification& n) {
        if (const auto id = n.id()) showStyleWithNewRules(*id);
    }));
    subscriptions.push_back(center.observe(names::refreshFavicons, [this](const notification& n) {
        const auto row = n.id() ? rowOf(*n.id()) : std::nullopt;
        if (row) showAgain(*row);
    }));
}

StyleList::~StyleList() {
    icons.setFoundHandler({});
}

void StyleList::setObserver(StyleListObserver* newObserver) {
    observer = newObserver;
    if (observer) refreshTable();
}

std::optional<std::size_t> StyleList::rowOf(std::int64_t id) const {
    if (!placesHold) {
        places.clear();
        places.reserve(rows.size());
        for (std::size_t row = 0; row < rows.size(); ++row)
            places.try_emplace(rows[row]->uniqueID, row);
        placesHold = true;
    }
    const auto found = places.find(id);
    return found == places.end() ? std::nullopt : std::optional(found->second);
}

void StyleList::setLockedForSync(bool locked) {
    if (locked == lockedForSync) return;
    lockedForSync = locked;
    if (observer) observer->lockChanged();
}

void StyleList::setOnScreen(std::vector<std::int64_t> ids) {
    icons.setOnScreen(std::move(ids));
}

/// Many styles that are brought back one by one are shown at once.
void StyleList::refreshSoon(bool scrolls) {
    if (scrolls) waitsForScroll = true;
    if (waitsForRefresh.exchange(true)) return;
    dispatcher.onMain([this] {
        waitsForRefresh = false;
        if (waitsForScroll.exchange(false))
            refreshTableAndScroll();
        else
            refreshTable();
    });
}

void StyleList::refreshTable() {
    if (observer) observer->rowsWillReset();
    std::vector<std::int64_t> withoutIcon;
    std::unordered_set<std::int64_t> beingChecked = stylesBeingChecked();
    rows = store.styleRows([&](styleObject& row, const styleContainer& style) {
        // Taken out, as of several rows with one identifier only the first shows a check.
        if (beingChecked.erase(row.uniqueID) > 0) row.updateStatus = updateStatuses::checking;
        row.faviconImg = icons.known(style);
        if (!row.faviconImg) withoutIcon.push_back(row.uniqueID);
    });
    placesHold = false;
    if (observer) observer->rowsReset();
    icons.fetch(withoutIcon, iconRequest::newRow);
}

void StyleList::refreshTableAndScroll() {
    refreshTable();
    if (!rows.empty()) selectRows({rows.size() - 1});
}

void StyleList::addLatestStyle() {
    const std::size_t count = store.countStyles();
    if (count == 0) return;
    if (count != rows.size() + 1) {
        refreshTableAndScroll();
        return;
    }
    insertRows({count - 1});
    selectRows({rows.size() - 1});
}

std::unordered_set<std::int64_t> StyleList::stylesBeingChecked() const {
    std::unordered_set<std::int64_t> ids;
    for (const auto& row : rows)
        if (row->updateStatus == updateStatuses::checking) ids.insert(row->uniqueID);
    return ids;
}

/// What of the row may have become another by renaming, in the editor or by an update.
void StyleList::showStyle(std::int64_t id) {
    const auto row = rowOf(id);
    const auto style = row ? store.findStyle(id) : nullptr;
    if (!style) return;
    rows[*row]->name = style->styleData.name;
    rows[*row]->homepage = style->homepageURL;
    rows[*row]->searchText = searchTextOf(*style);
    showAgain(*row);
}

void StyleList::showStyleWithNewRules(std::int64_t id) {
    showStyle(id);
    icons.fetch(std::span(&id, 1), iconRequest::rulesChanged);
}

void StyleList::takeIcon(std::int64_t id, const std::shared_ptr<const siteIcon>& icon,
                         iconRequest request) {
    const auto row = rowOf(id);
    if (!row) return;
    if (request == iconRequest::newRow && rows[*row]->faviconImg) return;
    rows[*row]->faviconImg = icon;
    center.post(notifications::refreshFavicons, id);
}

void StyleList::change(const rowsChange& change, const std::function<void()>& apply) {
    if (observer) observer->rowsWillChange(change);
    apply();
    placesHold = false;
    if (observer) observer->rowsChanged(change);
}

void StyleList::removeRows(const std::vector<std::size_t>& removed) {
    // From the highest, so that the indexes of the others hold.
    const std::vector<rowRun> runs = runsOf(removed);
    for (auto run = runs.rbegin(); run != runs.rend(); ++run) {
        if (run->last >= rows.size()) return refreshTable();
        const auto at = [this](std::size_t row) {
            return rows.begin() + static_cast<std::ptrdiff_t>(row);
        };
        change({rowsChange::kind::removal, run->first, run->last},
               [&] { rows.erase(at(run->first), at(run->last) + 1); });
    }
    refreshUnlessEqualInNumber();
}

void StyleList::insertRows(const std::vector<std::size_t>& inserted) {
    std::vector<std::int64_t> withoutIcon;
    for (const auto& [first, last] : runsOf(inserted)) {
        std::vector<std::unique_ptr<styleObject>> made;
        for (std::size_t index = first; index <= last; ++index) {
            const auto style = store.styleAt(index);
            if (!style || first > rows.size()) return refreshTable();
            made.push_back(std::make_unique<styleObject>(*style));
            made.back()->faviconImg = icons.known(*style);
            if (!made.back()->faviconImg) withoutIcon.push_back(style->uniqueID);
        }
        change({rowsChange::kind::insertion, first, last}, [&, place = first] {
            rows.insert(rows.begin() + static_cast<std::ptrdiff_t>(place),
                        std::make_move_iterator(made.begin()), std::make_move_iterator(made.end()));
        });
    }
    icons.fetch(withoutIcon, iconRequest::newRow);
    refreshUnlessEqualInNumber();
}

void StyleList::refreshUnlessEqualInNumber() {
    if (store.countStyles() != rows.size()) refreshTable();
}

void StyleList::moveRow(std::size_t from, std::size_t to) {
    if (from == to || from >= rows.size() || to >= rows.size()) return;
    change({rowsChange::kind::move, from, from, to}, [&] {
        auto moved = std::move(rows[from]);
        rows.erase(rows.begin() + static_cast<std::ptrdiff_t>(from));
        rows.insert(rows.begin() + static_cast<std::ptrdiff_t>(to), std::move(moved));
    });
}

void StyleList::showEnabled(std::size_t row, bool isEnabled) {
    if (row >= rows.size()) return;
    rows[row]->isEnabled = isEnabled;
    showAgain(row);
}

void StyleList::showUpdateStatus(std::int64_t id, std::string_view status) {
    const auto row = rowOf(id);
    if (!row) return;
    rows[*row]->updateStatus = status;
    if (status == updateStatuses::updated)
        showStyleWithNewRules(id);
    else
        showAgain(*row);
}

void StyleList::showAgain(std::size_t row) {
    if (observer && row < rows.size()) observer->rowChanged(row);
}

void StyleList::selectRows(const std::vector<std::size_t>& selected) {
    if (observer && !selected.empty() && selected.back() < rows.size())
        observer->selectRows(selected);
}

} // namespace tessaril
