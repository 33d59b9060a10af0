#pragma once

#include "events/notification_center.h"
#include "platform/alerts.h"
#include "platform/dispatcher.h"
#include "platform/file_system.h"
#include "store/open_styles.h"
#include "store/style_store.h"

#include <filesystem>
#include <functional>
#include <string_view>

namespace tessaril {

/// The panels that pick the files.
inline constexpr std::string_view importDatabaseTitle = "Import Tessaril Database";
inline constexpr std::string_view exportDatabaseTitle = "Export Tessaril Database";
inline constexpr std::string_view databaseFileType = "sdb";
inline constexpr std::string_view exportedDatabaseName = "Tessaril Styles.sdb";

/// What the commands work with. All outlive them and their tasks.
struct databaseCommandSurroundings {
    FileSystem& files;
    Alerts& alerts;
    Dispatcher& dispatcher;
    NotificationCenter& center;
    StyleStore& store;
    const OpenStyles& openStyles;
    std::function<void()> wasReset = {}; ///< called when the user has reset it
};

/// Import, export and reset of the whole style database, as three buttons offer them, and the
/// import of a backup. An import goes on when the window with the buttons is closed. Main thread
/// only.
class DatabaseCommands {
public:
    explicit DatabaseCommands(databaseCommandSurroundings surroundings);

    /// Called when the title or the availability has changed; nothing to stop.
    void setChangeHandler(std::function<void()> handler) { changed = std::move(handler); }

    std::string_view importTitle() const;
    /// Of all three buttons.
    bool areAvailable() const { return !isImporting && !isResetting; }

    /// Merges the database in the background, then posts `refreshTable`. A file of another type is
    /// refused like one that is no database.
    void importFrom(const std::filesystem::path& file);

    /// The same for a backup; where it adds styles, the list scrolls to the last of them.
    void restoreFrom(const std::filesystem::path& backup);

    /// Writes the database in the background. A name of another type gets this one's, and where
    /// that makes it one that exists, the user is asked.
    void exportTo(const std::filesystem::path& chosen);

    /// Asks, keeps a backup in the background, then empties the database; refuses while a style is
    /// open in the editor.
    void reset();

private:
    void merge(const std::filesystem::path& file, bool scrolls);
    bool refusesToReset();
    void emptyDatabase();
    void set(bool& state, bool value);

    databaseCommandSurroundings machine;
    std::function<void()> changed;
    bool isImporting = false;
    bool isResetting = false;
};

} // namespace tessaril
