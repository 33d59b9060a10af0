#include "store/database_commands.h"

#include "events/notification_names.h"
#include "model/text.h"
#include "store/exported_file.h"

namespace tessaril {

namespace {

constexpr std::string_view idleImportTitle = "Import Style DB";
constexpr std::string_view busyImportTitle = "Importing...";

constexpr std::string_view openStylesTitle = "Cannot Reset Style Database";
constexpr std::string_view openStylesText =
    "There are still styles open in the Style Editor. Please close all styles before resetting the "
    "database.";
constexpr const char* resetTitle = "WARNING: This will delete all current styles.";
constexpr const char* resetText =
    "If iCloud sync is enabled, this will also erase all styles from iCloud. This action cannot be "
    "undone. Are you sure you would like to reset your style database?";

bool isDatabaseFile(const std::filesystem::path& file) {
    return lowercasedASCII(file.extension().string()) == "." + std::string(databaseFileType);
}

} // namespace

DatabaseCommands::DatabaseCommands(databaseCommandSurroundings surroundings)
    : machine(surroundings) {}

std::string_view DatabaseCommands::importTitle() const {
    return isImporting ? busyImportTitle : idleImportTitle;
}

void DatabaseCommands::set(bool& state, bool value) {
    state = value;
    if (changed) changed();
}

void DatabaseCommands::importFrom(const std::filesystem::path& file) {
    if (!areAvailable()) return;
    // A panel shows only this type, but takes any name that is typed.
    if (!isDatabaseFile(file)) return machine.alerts.showAlert(readErrorTitle, readErrorText);
    merge(file, false);
}

void DatabaseCommands::restoreFrom(const std::filesystem::path& backup) {
    if (areAvailable()) merge(backup, true);
}

void DatabaseCommands::merge(const std::filesystem::path& file, bool scrolls) {
    set(isImporting, true);
    machine.dispatcher.inBackground(taskPriority::utility, [this, file, scrolls] {
        const std::size_t before = machine.store.countStyles();
        machine.store.importDatabase(file);
        const bool hasMore = machine.store.countStyles() > before;
        machine.dispatcher.onMain([this, hasNewRows = scrolls && hasMore] {
            machine.center.post(hasNewRows ? notifications::refreshTableAndScroll
                                           : notifications::refreshTable);
            set(isImporting, false);
        });
    });
}

void DatabaseCommands::exportTo(const std::filesystem::path& chosen) {
    const auto file =
        exportedFile(chosen, std::span(&databaseFileType, 1), machine.files, machine.alerts);
    if (file) machine.store.exportDatabase(*file);
}

bool DatabaseCommands::refusesToReset() {
    if (machine.openStyles.isEmpty()) return false;
    machine.alerts.showAlert(openStylesTitle, openStylesText);
    return true;
}

void DatabaseCommands::reset() {
    if (!areAvailable() || refusesToReset()) return;
    const alertAnswer answer = machine.alerts.ask({.title = resetTitle,
                                                   .text = resetText,
                                                   .buttons = {"No", "Yes"},
                                                   .style = alertStyle::critical,
                                                   .destructiveButton = 1});
    if (answer.button != 1 || !areAvailable()) return;
    set(isResetting, true);
    machine.dispatcher.inBackground(taskPriority::utility, [this] {
        machine.store.keepDocument(); // what takes long of the reset, which tells of a failure
        machine.dispatcher.onMain([this] {
            set(isResetting, false);
            emptyDatabase();
        });
    });
}

void DatabaseCommands::emptyDatabase() {
    // A link may have opened a style while the question was shown.
    if (refusesToReset()) return;
    if (machine.store.resetDatabase() && machine.wasReset) machine.wasReset();
    machine.center.post(notifications::refreshTable);
}

} // namespace tessaril
