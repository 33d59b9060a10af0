#include "store/style_list.h"

#include "events/notification_names.h"

#include <algorithm>

namespace tessaril {

StyleList::StyleList(StyleStore& styleStore, NotificationCenter& center, Dispatcher& mainDispatcher,
                     Alerts& alertPresenter)
    : store(styleStore), dispatcher(mainDispatcher), alerts(alertPresenter) {
    namespace names = notifications;
    // The cloud sync posts these from threads of its own.
    subscriptions.push_back(center.observe(names::refreshTable, [this](const notification&) {
        dispatcher.onMain([this] { refreshTable(); });
    }));
    subscriptions.push_back(
        center.observe(names::refreshTableAndScroll, [this](const notification&) {
            dispatcher.onMain([this] { refreshTableAndScroll(); });
        }));
    subscriptions.push_back(center.observe(names::openStyleNotif, [this](const notification& n) {
        if (const auto id = n.id()) dispatcher.onMain([this, id] { openStyle(*id); });
    }));
    subscriptions.push_back(
        center.observe(names::addLatestStyle, [this](const notification&) { addLatestStyle(); }));
}

void StyleList::setObserver(StyleListObserver* newObserver) {
    observer = newObserver;
    if (observer) refreshTable();
}

void StyleList::onToggle(std::size_t row) {
    if (row >= rows.size()) return;
    if (lockedForSync) {
        alerts.beep();
        tellChanged(row); // the box shows what is, not what was clicked
        return;
    }
    const auto style = store.styleWithID(rows[row].uniqueID);
    if (!style) return;
    store.setEnabled(style->uniqueID, !style->isEnabled);
    // Of two styles with one identifier, which only a file from elsewhere can hold, it is the first
    // that changed.
    const auto changed = std::ranges::find(rows, style->uniqueID, &styleObject::uniqueID);
    changed->isEnabled = !style->isEnabled;
    tellChanged(static_cast<std::size_t>(changed - rows.begin()));
}

void StyleList::tellChanged(std::size_t row) {
    if (observer) observer->rowChanged(row);
}

void StyleList::refreshTable() {
    rows = store.styleRows();
    if (observer) observer->rowsReset();
}

void StyleList::refreshTableAndScroll() {
    refreshTable();
    if (observer && !rows.empty()) observer->selectRow(rows.size() - 1);
}

void StyleList::addLatestStyle() {
    const liveDatabase live = store.snapshot();
    if (live.styles.empty()) return;
    if (live.styles.size() != rows.size() + 1) {
        refreshTableAndScroll();
        return;
    }
    rows.emplace_back(*live.styles.back());
    if (observer) observer->rowAppended();
}

void StyleList::openStyle(std::int64_t id) {
    for (std::size_t row = 0; row < rows.size(); ++row)
        if (rows[row].uniqueID == id && observer) observer->selectRow(row);
}

} // namespace tessaril
