#include "events/notification_names.h"
#include "store/style_store.h"

#include <algorithm>

// The commands on the collection of styles, as far as they concern the database.
namespace tessaril {

namespace {

constexpr std::string_view copyPrefix = "Copy of ";

/// A changed style is a new one: what others hold never changes.
template <typename Change>
void change(std::shared_ptr<const styleContainer>& style, Change apply) {
    auto changed = std::make_shared<styleContainer>(*style);
    apply(*changed);
    style = std::move(changed);
}

void enable(std::shared_ptr<const styleContainer>& style, bool enabled) {
    if (style->isEnabled == enabled) return;
    change(style, [enabled](styleContainer& changed) { changed.isEnabled = enabled; });
}

} // namespace

void StyleStore::setEnabled(const std::set<std::int64_t>& ids, bool enabled) {
    const bool found = withDatabase([&](liveDatabase& live) {
        bool any = false;
        for (auto& style : live.styles) {
            if (!ids.contains(style->uniqueID)) continue;
            enable(style, enabled);
            any = true;
        }
        return any;
    });
    if (found) saveDatabase();
}

void StyleStore::setAllEnabled(bool enabled) {
    withDatabase([enabled](liveDatabase& live) {
        for (auto& style : live.styles)
            enable(style, enabled);
    });
    saveDatabase();
}

void StyleStore::duplicateStyle(std::size_t index) {
    const bool isDone = withDatabase([index](liveDatabase& live) {
        if (index >= live.styles.size()) return false;
        auto copy = live.styles[index];
        change(copy, [&](styleContainer& style) {
            style.styleData.name.insert(0, copyPrefix);
            style.source = sourceCustom;
            style.userstyleID = noUserstyleID;
            style.uniqueID = tessaril::generateUniqueID(live.styles);
        });
        live.styles.push_back(std::move(copy));
        return true;
    });
    if (isDone) saveDatabase();
}

void StyleStore::deleteStyle(std::size_t index) {
    const auto style = styleAt(index);
    if (!style) return;
    machine.center.post(notifications::closeProperties, style->uniqueID);
    const bool isDone = withDatabase([&](liveDatabase& live) {
        // Who closed a window may have changed the list, as may another thread.
        if (index >= live.styles.size() || live.styles[index]->uniqueID != style->uniqueID)
            return false;
        live.styles.erase(live.styles.begin() + static_cast<std::ptrdiff_t>(index));
        return true;
    });
    if (isDone) saveDatabase();
}

void StyleStore::renameStyle(std::size_t index, std::string_view name) {
    const auto id = withDatabase([&](liveDatabase& live) -> std::optional<std::int64_t> {
        if (index >= live.styles.size()) return std::nullopt;
        change(live.styles[index], [&](styleContainer& style) { style.styleData.name = name; });
        return live.styles[index]->uniqueID;
    });
    if (!id) return;
    saveDatabase();
    machine.center.post(
        {notifications::styleNameChanged, {{"id", *id}, {"newname", std::string(name)}}});
}

void StyleStore::moveStyle(std::size_t from, std::size_t to) {
    const bool isDone = withDatabase([&](liveDatabase& live) {
        if (from >= live.styles.size() || to >= live.styles.size()) return false;
        auto moved = std::move(live.styles[from]);
        live.styles.erase(live.styles.begin() + static_cast<std::ptrdiff_t>(from));
        live.styles.insert(live.styles.begin() + static_cast<std::ptrdiff_t>(to), std::move(moved));
        return true;
    });
    if (isDone) saveDatabase();
}

void StyleStore::insertStyle(std::shared_ptr<const styleContainer> style, std::size_t index) {
    withDatabase([&](liveDatabase& live) {
        if (tessaril::indexOfStyle(live.styles, style->uniqueID))
            change(style, [&](styleContainer& renumbered) {
                renumbered.uniqueID = tessaril::generateUniqueID(live.styles);
            });
        const std::size_t place = std::min(index, live.styles.size());
        live.styles.insert(live.styles.begin() + static_cast<std::ptrdiff_t>(place),
                           std::move(style));
    });
    saveDatabase();
}

} // namespace tessaril
