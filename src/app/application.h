#pragma once

#include "app/cloud_start.h"
#include "app/extension_warning.h"
#include "app/install_links.h"
#include "app/launch_update.h"
#include "app/link_router.h"
#include "app/opened_files.h"
#include "compile/style_compiler.h"
#include "events/notification_center.h"
#include "icons/style_icons.h"
#include "import/file_import.h"
#include "import/paste_import.h"
#include "import/style_site.h"
#include "import/url_import.h"
#include "less_imports/imported_files.h"
#include "less_imports/importing_compiler.h"
#include "less_imports/saving_compiler.h"
#include "platform/browser_extension.h"
#include "platform/external_applications.h"
#include "platform/record_store.h"
#include "preferences/change_announcement.h"
#include "preferences/cloud_switch.h"
#include "preferences/preference_controls.h"
#include "preferences/preference_sync.h"
#include "preferences/preferences.h"
#include "settings/style_prop_view.h"
#include "store/backup_restore.h"
#include "store/database_commands.h"
#include "store/new_style.h"
#include "store/open_styles.h"
#include "store/style_export.h"
#include "store/style_ids.h"
#include "store/style_list.h"
#include "store/style_list_commands.h"
#include "store/style_store.h"
#include "style_editor/draft_offer.h"
#include "style_editor/editor_saves.h"
#include "style_editor/style_drafts.h"
#include "style_editor/style_editor_controller.h"
#include "sync/cloud_sync.h"
#include "sync/recovery_list.h"
#include "undo/undo_manager.h"
#include "update/style_updates.h"
#include "update/update_run.h"

#include <filesystem>
#include <functional>
#include <stop_token>
#include <string_view>
#include <vector>

namespace tessaril {

/// The machine, as the application reaches it. All outlive the application.
struct applicationSurroundings {
    FileSystem& files;
    MessageChannel& channel;
    Alerts& alerts;
    Dispatcher& dispatcher;
    PreferenceStore& standardPreferences;
    PreferenceStore& sharedPreferences;
    ScriptEngine& scripts;
    Resources& resources;
    CompilerErrors& compilerErrors;
    BrowserExtension& extension;
    ExternalApplications& externals;
    UrlLoader& urls;
    IconDecoder& iconDecoder;
    RecordStore& records;
    std::filesystem::path container;    ///< the shared container's directory, which exists
    std::filesystem::path iconCache;    ///< a folder for icons alone, which exists; empty for none
    std::filesystem::path importFolder; ///< the same for the files that Less styles import
    std::filesystem::path draftFolder;  ///< the same for what is unsaved in Style Editors
    bool darkAppearance = false;        ///< whether the windows are dark at launch
};

/// The application: owns the store, the bus and the preferences, and routes what arrives from
/// outside. Main thread only.
class Application {
public:
    explicit Application(applicationSurroundings surroundings);

    StyleStore& store() { return styleStore; }
    StyleList& styleList() { return list; }
    StyleListCommands& listCommands() { return commands; }
    NewStyle& newStyle() { return styleMaker; }
    /// Of the main window.
    UndoManager& listUndo() { return undoManager; }
    NotificationCenter& notificationCenter() { return center; }
    Dispatcher& dispatcher() { return machine.dispatcher; }
    FileImport& fileImport() { return importer; }
    PasteImport& pasteImport() { return pasteImporter; }
    UrlImport& urlImport() { return urlImporter; }
    StyleExport& styleExport() { return exporter; }
    /// The checks for newer versions, in the list's rows and in a sheet.
    StyleUpdates& styleUpdates() { return rowUpdates; }
    UpdateRuns& updateRuns() { return sheetUpdates; }
    /// What the properties of a style work with.
    stylePropSurroundings styleProps();
    /// What a Style Editor works with.
    styleEditorSurroundings styleEditor();
    EditorSaves& editorSaves() { return saves; }
    /// What earlier runs left unsaved; offered once the style list is on the screen.
    DraftOffer& draftOffer() { return offer; }
    const OpenStyles& openStyles() const { return stylesOpenInEditors; }

    /// What the Preferences window works on.
    Preferences& preferences() { return standard; }
    PreferenceControls& preferenceControls() { return controls; }
    PreferenceSync& preferenceSync() { return synced; }
    CloudSwitch& cloudSwitch() { return cloud; }
    DatabaseCommands& databaseCommands() { return wholeDatabase; }
    /// What restoring from a backup works with.
    backupRestoreSurroundings backupRestore();

    CloudSync& cloudSync() { return sync; }
    RecoveryList& recoveryList() { return recovery; }

    /// Carries the task out on the main thread, after what has to come first at launch; for
    /// whatever the application is asked to open.
    void onceLaunched(std::function<void()> task);

    /// To be called once the style list is on the screen: offers unsaved drafts, updates the styles
    /// where that is wanted at launch, and runs the launch checks half a second later.
    void styleListShown();

    /// Opens files by their extension; others are ignored. Asks before a database is merged.
    void openFiles(const std::vector<std::filesystem::path>& files);

    /// Routes a link of the application's scheme; what is not one is ignored.
    void openLink(std::string_view link);

    /// The Help menu.
    void emailSupport();
    void openWebsite();

    /// Ends what is being loaded from the network, and the reading of backups for show, so that
    /// nobody waits for it; for quitting.
    void stopLoading();

    /// Returns when everything asked for has been written, and uploaded where that takes no more
    /// than a few seconds; for quitting.
    void finish();

private:
    importSurroundings importing();
    checkSurroundings updateChecks();
    void runLaunchChecks();
    void launched();

    applicationSurroundings machine;
    NotificationCenter center;
    ChangeAnnouncement preferenceChanges;
    Preferences standard;
    Preferences shared;
    PreferenceSync synced;
    StyleCompiler compiler;
    ImportedFiles importedFiles;
    ImportingCompiler importingCompiler;
    SavingCompiler savingCompiler;
    StyleStore styleStore;
    StyleIcons icons;
    StyleList list;
    FileImport importer;
    PasteImport pasteImporter;
    StyleSite site;
    UrlImport urlImporter;
    StyleExport exporter;
    OpenedFiles openedFiles;
    InstallLinks installLinks;
    LinkRouter links;
    ExtensionWarning extensionWarning;
    OpenStyles stylesOpenInEditors;
    StyleIDs updatingStyles;
    StyleIDs openProperties;
    UndoManager undoManager;
    StyleListCommands commands;
    NewStyle styleMaker;
    StyleUpdates rowUpdates;
    UpdateRuns sheetUpdates;
    LaunchUpdate updateOnLaunch;
    DatabaseCommands wholeDatabase;
    std::stop_source backupReading;
    PreferenceControls controls;
    CloudSwitch cloud;
    StyleDrafts drafts;
    EditorSaves saves;
    DraftOffer offer;
    RecoveryList recovery;
    CloudSync sync;
    CloudStart cloudStart;
    bool isLaunched = false;
    std::vector<std::function<void()>> afterLaunch;
};

} // namespace tessaril
