#include "store/style_list_commands.h"

#include "events/notification_names.h"
#include "model/text.h"

#include <set>

namespace tessaril {

namespace {

constexpr std::string_view blankNameTitle = "Invalid Name";
constexpr std::string_view blankNameText = "A style name can't be left blank.";

} // namespace

StyleListCommands::StyleListCommands(styleListSurroundings surroundings)
    : machine(surroundings)
    , deletion({.store = machine.store,
                .list = machine.list,
                .alerts = machine.alerts,
                .undoManager = machine.undoManager,
                .openStyles = machine.openStyles,
                .updatingStyles = machine.updatingStyles})
    , openStyleNotif(
          machine.center.observe(notifications::openStyleNotif, [this](const notification& n) {
              // The cloud sync posts it from a thread of its own.
              if (const auto id = n.id())
                  machine.dispatcher.onMain([this, id] { openLinked(*id); });
          })) {}

bool StyleListCommands::beepsAsLocked() {
    if (!machine.list.isLockedForSync()) return false;
    machine.alerts.beep();
    return true;
}

bool StyleListCommands::isUpdating(std::size_t row) const {
    const styleObject* shown = rowAt(row);
    return shown && machine.updatingStyles.contains(shown->uniqueID);
}

const styleObject* StyleListCommands::rowAt(std::size_t row) const {
    const auto& rows = machine.list.styles();
    return row < rows.size() ? rows[row].get() : nullptr;
}

/// Where the row's style stands in the live database, which a task may have changed a moment ago.
std::optional<std::size_t> StyleListCommands::indexOf(std::size_t row) const {
    const styleObject* shown = rowAt(row);
    if (!shown) return std::nullopt;
    const auto style = machine.store.styleAt(row);
    if (style && style->uniqueID == shown->uniqueID) return row;
    return machine.store.indexOfStyle(shown->uniqueID);
}

// Enabling

void StyleListCommands::onToggle(std::size_t row) {
    const auto index = indexOf(row);
    if (!index) return;
    if (beepsAsLocked()) return machine.list.showAgain(row); // what is, not what was clicked
    const auto style = machine.store.styleAt(*index);
    if (!style) return;
    if (isUpdating(row)) machine.list.showAgain(row);
    setEnabled({row}, !style->isEnabled);
}

void StyleListCommands::setEnabled(const std::vector<std::size_t>& rows, bool isEnabled) {
    if (beepsAsLocked()) return;
    std::set<std::int64_t> ids;
    bool someAreUpdating = false;
    for (const std::size_t row : rows) {
        const styleObject* shown = rowAt(row);
        if (!shown) continue;
        if (isUpdating(row))
            someAreUpdating = true;
        else
            ids.insert(shown->uniqueID);
    }
    if (ids.empty()) {
        if (someAreUpdating) machine.alerts.beep();
        return;
    }
    machine.store.setEnabled(ids, isEnabled);
    const auto& all = machine.list.styles();
    for (std::size_t row = 0; row < all.size(); ++row)
        if (ids.contains(all[row]->uniqueID)) machine.list.showEnabled(row, isEnabled);
}

void StyleListCommands::enableAll() {
    if (beepsAsLocked()) return;
    machine.store.setAllEnabled(true);
    machine.list.refreshTable();
}

void StyleListCommands::disableAll() {
    if (beepsAsLocked()) return;
    machine.store.setAllEnabled(false);
    machine.list.refreshTable();
}

void StyleListCommands::setAllFromToolbar(bool isEnabled) {
    if (beepsAsLocked()) return;
    machine.store.setAllEnabled(isEnabled);
    machine.center.post(notifications::refreshTable);
}

void StyleListCommands::toggleAllClicked(int segment) {
    setAllFromToolbar(segment == 0);
}

void StyleListCommands::toggleOverflow() {
    setAllFromToolbar(!machine.store.mostStylesEnabled());
}

// The collection

void StyleListCommands::duplicateSelected(const std::vector<std::size_t>& rows) {
    if (beepsAsLocked()) return;
    for (const std::size_t row : rows) {
        const auto index = indexOf(row);
        if (!index) continue;
        if (isUpdating(row)) {
            machine.alerts.beep();
            continue;
        }
        machine.store.duplicateStyle(*index);
        machine.center.post(notifications::addLatestStyle);
    }
}

void StyleListCommands::deleteContextAction(std::size_t row) {
    if (!beepsAsLocked()) deletion.deleteClicked(row);
}

void StyleListCommands::deleteSelected(const std::vector<std::size_t>& rows) {
    if (!beepsAsLocked()) deletion.deleteSelected(rows);
}

bool StyleListCommands::renameMenu(std::size_t row) {
    return rowAt(row) && !beepsAsLocked();
}

void StyleListCommands::endEditingName(std::size_t row, std::string_view name) {
    const auto index = indexOf(row);
    if (!index) return;
    const std::string_view wanted = trimmed(name);
    if (beepsAsLocked()) return machine.list.showAgain(row);
    if (wanted.empty()) {
        machine.alerts.showAlert(blankNameTitle, blankNameText);
        return machine.list.showAgain(row);
    }
    machine.store.renameStyle(*index, wanted);
}

void StyleListCommands::dropRows(const std::vector<std::size_t>& dragged, std::size_t row) {
    if (beepsAsLocked()) return;
    const auto move = [this](std::size_t from, std::size_t to) {
        machine.store.moveStyle(from, to);
        machine.list.moveRow(from, to);
    };
    std::size_t movedDown = 0;
    std::size_t movedUp = 0;
    for (const std::size_t i : dragged) {
        if (!rowAt(i)) continue;
        if (i < row)
            move(i - movedDown++, row - 1);
        else
            move(i, row + movedUp++);
    }
}

// Other windows

void StyleListCommands::openSelected(const std::vector<std::size_t>& rows) {
    if (!routes.openStyleForEditing || beepsAsLocked()) return;
    for (const std::size_t row : rows)
        openForEditing(row);
}

void StyleListCommands::openForEditing(std::size_t row) {
    const styleObject* shown = rowAt(row);
    const auto style = shown ? machine.store.findStyle(shown->uniqueID) : nullptr;
    if (!style) return;
    const std::int64_t id = style->uniqueID;
    const bool isOpeningImported = style->source == sourceSite || style->source == sourceUserCSS;
    if (machine.updatingStyles.contains(id)) return machine.alerts.beep();
    if (machine.openStyles.contains(id))
        return machine.center.post(notifications::checkIfWindowFocus, id);
    openRegistered(machine.center, id,
                   [&] { return routes.openStyleForEditing(id, isOpeningImported); });
}

void StyleListCommands::openLinked(std::int64_t id) {
    if (machine.list.isLockedForSync() && openLater) return openLater(id);
    const auto row = machine.list.rowOf(id);
    if (!row) return;
    machine.list.selectRows({*row});
    openSelected({*row});
}

void StyleListCommands::openProperties(std::size_t row) {
    const styleObject* shown = rowAt(row);
    if (!routes.openStyleProps || !shown || beepsAsLocked()) return;
    if (isUpdating(row)) return machine.alerts.beep();
    const std::int64_t id = shown->uniqueID;
    if (machine.openProperties.contains(id))
        return machine.center.post(notifications::focusProperties, id);
    machine.openProperties.add(id);
    if (!routes.openStyleProps(id)) machine.openProperties.remove(id);
}

void StyleListCommands::exportStyle(std::size_t row) {
    const styleObject* shown = rowAt(row);
    if (!routes.exportFromStyleList || !shown || beepsAsLocked()) return;
    if (const auto style = machine.store.findStyle(shown->uniqueID))
        routes.exportFromStyleList(*style);
}

void StyleListCommands::updateIndividualClicked(std::size_t row) {
    const styleObject* shown = rowAt(row);
    if (!routes.updateIndividual || !shown || beepsAsLocked()) return;
    routes.updateIndividual(shown->uniqueID);
}

// Undo

void StyleListCommands::undo() {
    if (!beepsAsLocked()) machine.undoManager.undo();
}

void StyleListCommands::redo() {
    if (!beepsAsLocked()) machine.undoManager.redo();
}

} // namespace tessaril
