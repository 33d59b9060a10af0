#pragma once

#include "events/notification_center.h"
#include "model/style_database.h"
#include "model/style_making.h"
#include "platform/alerts.h"
#include "platform/dispatcher.h"
#include "platform/file_system.h"
#include "platform/message_channel.h"
#include "preferences/preferences.h"
#include "store/database_backups.h"
#include "store/document_writer.h"
#include "store/live_database.h"
#include "store/save_queue.h"
#include "store/style_object.h"

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string_view>
#include <vector>

namespace tessaril {

/// The directory's name under which application and extension share their files.
inline constexpr std::string_view applicationGroup = "7RX2KD84QM.group.com.tessaril.shared";

/// The document's file in that directory.
inline constexpr std::string_view documentName = "styledb.sdb";

/// The alert about a file that holds no database.
inline constexpr std::string_view readErrorTitle = "Error reading style database";
inline constexpr std::string_view readErrorText =
    "The style database file you selected may not be valid, or is corrupt.";

/// What the store reaches the machine and its neighbours through. All outlive the store.
struct storeSurroundings {
    FileSystem& files;
    MessageChannel& channel;
    Alerts& alerts;
    Dispatcher& dispatcher;
    NotificationCenter& center;
    Preferences& preferences;
    /// What it gives is called once the style is stored.
    QuietCompile compileStyle;
    /// What backups are dated by.
    DatabaseBackups::Clock clock = systemSeconds;
};

/// Gives the style what a Style Editor changes, as it is in `from`.
void takeEditorChanges(styleContainer& style, const styleContainer& from);

/// The one live database of the process, loaded from the shared container at the first access and
/// written back after every change. Safe to use from any thread; a failure is logged and shown as
/// an alert, never returned.
class StyleStore {
public:
    /// - container: the shared container's directory, which must exist
    StyleStore(storeSurroundings surroundings, std::filesystem::path container);

    /// What a save with upload ends with while `UseiCloud` is on; runs on a background task.
    void setUploadHandler(std::function<void()> handler);

    // Persistence

    /// Loads the live database; at the first access only, as any other member does.
    void loadDatabase();

    /// Stamps the live database, then encodes, sends, writes and uploads it in the background.
    void saveDatabase();

    /// The same without stamp and upload: for a database that came from the cloud.
    void saveDatabaseWithoutUpload();

    /// Returns when every save asked for so far has been tried: whether the last one worked.
    bool waitForSaves();

    /// Returns when every save asked for so far has been written, and tries once more, upload and
    /// all, where the last one failed; for quitting. Background tasks with nothing to do may be
    /// left.
    void finishSaves();

    /// Keeps the document among the backups, as the user had it last: returns when every save
    /// asked for so far has been tried (one may run on the calling thread), the last one once more
    /// where it failed, and the document is kept. To be called before the live database is
    /// replaced by one that may lack styles, off the main thread, as it may take long. False when
    /// the last state could not be saved or the document not be kept; then nothing should be
    /// replaced. Shows no alert of its own. Never from the upload handler, within a save.
    bool keepDocument();

    /// The documents that were kept: before every import, reset and other replacement of the
    /// database, and before the first save of a day.
    const DatabaseBackups& databaseBackups() const { return backups; }

    /// Writes the live database to `file` in the background.
    void exportDatabase(const std::filesystem::path& file);

    /// Writes `styledb-pre-icloud.sdb` unless it exists; on the calling thread, so that it is whole
    /// before the first sync. A failure is only logged.
    void writePreCloudBackup();

    /// Merges the styles of a database file into the live database and saves. Reads the file on
    /// the calling thread. Keeps the document first; where that fails, an alert says so and nothing
    /// changes.
    void importDatabase(const std::filesystem::path& file);

    /// Replaces the live database by an empty one and saves. Keeps the document first, as above; it
    /// takes no time where `keepDocument` has just done so. Gives whether it did.
    bool resetDatabase();

    /// Has `change` make another database of the live one, under its lock; where it gives false,
    /// the live database stays as it is. No save; the caller saves.
    bool changeDatabase(const std::function<bool(liveDatabase&)>& change);

    // Queries

    /// The live database as it stands: a copy of pointers, never changed later.
    liveDatabase snapshot();

    /// The first style with the identifier as it stands, not copied; nothing when there is none.
    std::shared_ptr<const styleContainer> findStyle(std::int64_t id);
    std::optional<styleContainer> styleWithID(std::int64_t id);
    std::optional<std::size_t> indexOfStyle(std::int64_t id);
    std::size_t countStyles();
    /// The style at a position; null behind the last one.
    std::shared_ptr<const styleContainer> styleAt(std::size_t index);
    /// A row for every style, in order. `complete` is called for each with its style.
    std::vector<std::unique_ptr<styleObject>>
    styleRows(const std::function<void(styleObject&, const styleContainer&)>& complete = {});
    std::size_t countNonCustomStyles();
    bool mostStylesEnabled();
    bool isDuplicateStyle(const styleContainer& style);
    bool isUserCSSInstalled(const styleContainer& style);
    std::int64_t generateUniqueID();

    // Changes. Those that address a style by identifier do nothing when no style carries it.

    /// Appends a style and gives the identifier that it has then: a fresh one where its own was
    /// taken. No save; the caller saves.
    std::int64_t appendStyle(styleContainer style);

    /// Sets whether every style that carries one of the identifiers is enabled, and saves once.
    void setEnabled(const std::set<std::int64_t>& ids, bool enabled);

    /// Takes over the properties of `from` that the properties window sets, compiles and saves.
    void applyStyleProperties(std::int64_t id, const styleContainer& from);

    /// Takes over the code and metadata of `from`, compiles, saves, posts `updateFavicons`.
    void applyEditorChanges(std::int64_t id, const styleContainer& from);

    /// Compiles the style as it stands, and saves where that gives another result.
    void recompileStyle(std::int64_t id);

    /// Replaces the style's data and gives whether there was such a style. No save; the caller
    /// saves.
    bool setStyleData(std::int64_t id, styleJSON data);

    /// Replaces the style by `newStyle`, which keeps what the user set on the stored one: enabled
    /// flag, frames, exclusions, appearance. Gives whether there was such a style. No save; the
    /// caller saves.
    bool replaceStyleKeepingSettings(std::int64_t id, styleContainer newStyle);

    // Changes of the collection, each of which saves. Indexes are list positions; one outside the
    // list changes nothing.

    /// Appends a copy of the style under its own identifier, as one that was written here.
    void duplicateStyle(std::size_t index);

    /// Posts `closeProperties`, then removes the style.
    void deleteStyle(std::size_t index);

    /// Posts `styleNameChanged`. The style does not count as modified.
    void renameStyle(std::size_t index, std::string_view name);

    void setAllEnabled(bool enabled);

    /// Takes the style out and puts it in again so that it stands at `to`.
    void moveStyle(std::size_t from, std::size_t to);

    /// Puts a style in, behind the last one where the list has become shorter. One whose identifier
    /// is taken gets a fresh one.
    void insertStyle(std::shared_ptr<const styleContainer> style, std::size_t index);

private:
    /// Calls `use` with the loaded live database, under its lock.
    template <typename Use>
    auto withDatabase(Use use) {
        loadDatabase();
        const std::lock_guard lock(mutex);
        return use(database);
    }

    void load();
    void save(bool withUpload);
    void reportSaveFailure();
    bool keepsDocumentOrTells();
    bool writeSnapshot(const std::filesystem::path& file);
    bool changeStyle(std::int64_t id, const std::function<void(styleContainer&)>& change);

    storeSurroundings machine;
    std::filesystem::path container;
    std::function<void()> upload;
    std::atomic<bool> lastSaveFailed = false;
    bool owesUpload = false; ///< of a save that failed; used by saves only, which run one by one
    std::once_flag loaded;
    std::mutex mutex; ///< guards `database`
    liveDatabase database;
    DocumentWriter writer;
    DatabaseBackups backups;
    SaveQueue saves;
};

} // namespace tessaril
