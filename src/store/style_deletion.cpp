#include "store/style_deletion.h"

#include <algorithm>
#include <string>
#include <unordered_map>

namespace tessaril {

namespace {

constexpr const char* undoName = "Delete Style";

constexpr std::string_view openTitle = "Cannot Delete Style";
constexpr std::string_view openText =
    "This style is currently open in the Style Editor. Please close it before deleting.";
constexpr std::string_view someOpenTitle = "Cannot Delete Styles";
constexpr std::string_view someOpenText =
    "Some styles could not be deleted because they are currently open in the Style Editor. Please "
    "close them before deleting.";

std::string openTextNaming(const std::string& name) {
    return "\"" + name +
           "\" is currently open in the Style Editor. Please close it before deleting.";
}

alertQuestion questionAbout(const styleObject& row) {
    return {.title = "Are you sure you want to delete the style \"" + row.name + "\"?",
            .text = "If iCloud sync is enabled, this style will also be deleted from iCloud. You "
                    "can undo this action afterwards.",
            .buttons = {"Yes", "No"}};
}

alertQuestion questionAbout(std::size_t count) {
    return {.title = "Are you sure you want to delete " + std::to_string(count) + " styles?",
            .text = "If iCloud sync is enabled, these styles will also be deleted from iCloud. You "
                    "can undo this action afterwards.",
            .buttons = {"Yes", "No"}};
}

} // namespace

StyleDeletion::StyleDeletion(styleDeletionSurroundings surroundings) : machine(surroundings) {}

StyleDeletion::~StyleDeletion() {
    machine.undoManager.removeActions(this);
}

void StyleDeletion::deleteClicked(std::size_t row) {
    const auto& rows = machine.list.styles();
    if (row >= rows.size()) return;
    const styleObject& shown = *rows[row];
    if (machine.openStyles.contains(shown.uniqueID))
        return machine.alerts.showAlert(openTitle, openText);
    if (machine.updatingStyles.contains(shown.uniqueID)) return machine.alerts.beep();
    const chosenStyle chosen{shown.uniqueID, row}; // the row may be gone after the question
    if (machine.alerts.ask(questionAbout(shown)).button == 0) deleteFree({chosen});
}

void StyleDeletion::deleteSelected(const std::vector<std::size_t>& selected) {
    const auto& rows = machine.list.styles();
    const bool areSeveral = selected.size() > 1;
    bool someAreOpen = false;
    std::vector<chosenStyle> chosen;
    std::optional<alertQuestion> question;
    for (const std::size_t row : selected) {
        if (row >= rows.size()) continue;
        const styleObject& shown = *rows[row];
        if (machine.openStyles.contains(shown.uniqueID)) {
            someAreOpen = true;
            if (!areSeveral) machine.alerts.showAlert(openTitle, openTextNaming(shown.name));
        } else if (machine.updatingStyles.contains(shown.uniqueID)) {
            machine.alerts.beep();
        } else {
            if (!question)
                question = areSeveral ? questionAbout(selected.size()) : questionAbout(shown);
            chosen.push_back({shown.uniqueID, row});
        }
    }
    if (question) {
        if (machine.alerts.ask(*question).button != 0) return;
        deleteFree(std::move(chosen));
    }
    if (someAreOpen && areSeveral) machine.alerts.showAlert(someOpenTitle, someOpenText);
}

/// While a question was shown, or since an undo, a style may have been opened, or the list locked.
void StyleDeletion::deleteFree(std::vector<chosenStyle> chosen) {
    if (machine.list.isLockedForSync()) return machine.alerts.beep();
    const bool wasOne = chosen.size() == 1;
    const std::size_t open = std::erase_if(
        chosen, [this](const chosenStyle& one) { return machine.openStyles.contains(one.id); });
    const std::size_t updating = std::erase_if(
        chosen, [this](const chosenStyle& one) { return machine.updatingStyles.contains(one.id); });
    if (open > 0 && wasOne)
        machine.alerts.showAlert(openTitle, openText);
    else if (open > 0)
        machine.alerts.showAlert(someOpenTitle, someOpenText);
    if (updating > 0) machine.alerts.beep();
    deleteStyles(chosen);
}

void StyleDeletion::deleteStyles(const std::vector<chosenStyle>& chosen) {
    if (chosen.empty()) return;
    const liveDatabase live = machine.store.snapshot();
    std::unordered_map<std::int64_t, std::size_t> places;
    for (std::size_t index = live.styles.size(); index-- > 0;)
        places[live.styles[index]->uniqueID] = index;
    std::vector<deletedStyle> deleted;
    for (const auto& [id, row] : chosen) {
        const auto place = places.find(id);
        if (place == places.end()) continue;
        // Two styles may share an identifier, which only a file from elsewhere can bring.
        const bool isThere = row < live.styles.size() && live.styles[row]->uniqueID == id;
        const std::size_t index = isThere ? row : place->second;
        deleted.push_back({live.styles[index], index});
    }
    if (deleted.empty()) return machine.list.refreshTable();
    std::ranges::sort(deleted, {}, &deletedStyle::index);

    machine.undoManager.registerAction(undoName, this, [this, deleted] { restore(deleted); });
    std::vector<std::size_t> rows;
    for (const deletedStyle& gone : deleted)
        rows.push_back(gone.index);
    for (auto row = rows.rbegin(); row != rows.rend(); ++row)
        machine.store.deleteStyle(*row);
    const auto showsThem = [this](const deletedStyle& gone) {
        const auto& shown = machine.list.styles();
        return gone.index < shown.size() && shown[gone.index]->uniqueID == gone.style->uniqueID;
    };
    if (std::ranges::all_of(deleted, showsThem))
        machine.list.removeRows(rows);
    else
        machine.list.refreshTable();
}

void StyleDeletion::restore(const std::vector<deletedStyle>& deleted) {
    std::vector<std::size_t> rows;
    std::vector<chosenStyle> chosen;
    for (const deletedStyle& gone : deleted) {
        const std::size_t row = std::min(gone.index, machine.store.countStyles());
        machine.store.insertStyle(gone.style, row);
        rows.push_back(row);
        if (const auto style = machine.store.styleAt(row)) chosen.push_back({style->uniqueID, row});
    }
    machine.undoManager.registerAction(undoName, this, [this, chosen] { deleteFree(chosen); });
    machine.list.insertRows(rows);
    machine.list.selectRows(rows);
}

} // namespace tessaril
