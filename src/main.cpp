#include "app/application.h"
#include "desktop/appearance.h"
#include "desktop/curl_url_loader.h"
#include "desktop/desktop_applications.h"
#include "desktop/directory_resources.h"
#include "desktop/extension_state.h"
#include "desktop/folder_message_channel.h"
#include "desktop/helper_icon_decoder.h"
#include "desktop/javascript_core_engine.h"
#include "desktop/keychain.h"
#include "desktop/own_folders.h"
#include "desktop/posix_file_system.h"
#include "desktop/qt_alerts.h"
#include "desktop/qt_dispatcher.h"
#include "desktop/settings_store.h"
#include "desktop/shared_container.h"
#include "desktop/single_instance.h"
#include "desktop/start_arguments.h"
#include "desktop/termination_signals.h"
#include "desktop/web_engine.h"
#include "events/notification_names.h"
#include "preferences/preference_keys.h"
#include "records/sql_record_store.h"
#include "windows/compiler_error_windows.h"
#include "windows/main_window.h"
#include "windows/other_windows.h"

#include <QApplication>
#include <QFile>
#include <QMessageBox>
#include <QPointer>

#include <span>

namespace {

using namespace tessaril;

/// What is shipped lies beside the folder of the program, in the build tree as when installed.
std::filesystem::path shippedFolder() {
    return std::filesystem::path(
               QFile::encodeName(QApplication::applicationDirPath()).toStdString())
               .parent_path() /
           "share";
}

/// Arguments are absolute paths and links.
void open(Application& application, std::span<const std::string> arguments) {
    std::vector<std::filesystem::path> files;
    for (const std::string& argument : arguments) {
        if (argument.starts_with('/'))
            files.emplace_back(argument);
        else
            application.openLink(argument);
    }
    application.openFiles(files);
}

int refuseToStart(const QString& text) {
    QMessageBox::critical(nullptr, "Tessaril cannot start", text);
    return EXIT_FAILURE;
}

int runApplication(const std::filesystem::path& container, SingleInstance& instance,
                   const std::vector<std::string>& arguments, bool darkAppearance,
                   std::function<void(laterStart)>& onLaterStart) {
    removeStaleStagedFiles(container);
    removeStaleStagedFiles(container / "wormhole");
    removeStaleStagedFiles(standardPreferencesFile().parent_path());
    const std::filesystem::path iconCache = makeIconCacheFolder();
    if (!iconCache.empty()) removeStaleStagedFiles(iconCache);
    const std::filesystem::path importFolder = makeImportFolder(container);
    if (!importFolder.empty()) removeStaleStagedFiles(importFolder);
    const std::filesystem::path draftFolder = makeDraftFolder(container);
    if (!draftFolder.empty()) removeStaleStagedFiles(draftFolder);
    const std::filesystem::path backupFolder = makeBackupFolder(container);
    if (!backupFolder.empty()) removeStaleStagedFiles(backupFolder);

    PosixFileSystem files;
    FolderMessageChannel channel(files, container);
    QtDispatcher dispatcher;
    QtAlerts alerts(dispatcher);
    CompilerErrorWindows compilerErrors(dispatcher);
    SettingsStore standardPreferences(standardPreferencesFile());
    SettingsStore sharedPreferences(sharedPreferencesFile(container));
    JavaScriptCoreEngine scripts;
    DirectoryResources resources(shippedFolder() / "tessaril/resources");
    ExtensionState extension(files, container,
                             shippedFolder() / "doc/tessaril/browser-extension.html");
    DesktopApplications externals;
    const std::filesystem::path ownPrograms = shippedFolder().parent_path() / "lib/tessaril";
    LazyWebEngine webEngine(ownPrograms / "tessaril_webengine.so");
    HelperIconDecoder iconDecoder(ownPrograms / "tessaril_icon_decoder");
    Keychain keychain;
    // Read from the store of preferences: the record store's threads ask, and may outlive the
    // application.
    SqlRecordStore records(
        {.address =
             [&standardPreferences] {
                 const auto address =
                     standardPreferences.value(preferenceKeys::recordStoreAddress, std::string());
                 return address ? std::get<std::string>(*address) : std::string();
             },
         .passwords = Keychain::source()});
    CurlUrlLoader urls; // after the record store, which sets OpenSSL up for threads left behind

    Application application({.files = files,
                             .channel = channel,
                             .alerts = alerts,
                             .dispatcher = dispatcher,
                             .standardPreferences = standardPreferences,
                             .sharedPreferences = sharedPreferences,
                             .scripts = scripts,
                             .resources = resources,
                             .compilerErrors = compilerErrors,
                             .extension = extension,
                             .externals = externals,
                             .urls = urls,
                             .iconDecoder = iconDecoder,
                             .records = records,
                             .container = container,
                             .iconCache = iconCache,
                             .importFolder = importFolder,
                             .draftFolder = draftFolder,
                             .darkAppearance = darkAppearance});

    OtherWindows others(
        application, [&](QWidget* parent) { return webEngine.makeView(parent); },
        shippedFolder() / "tessaril/resources/Ace/index.html");
    others.setPasswords(keychain);
    QPointer<QWidget> shown;
    application.listCommands().setRoutes(
        {.openStyleForEditing = [&](std::int64_t id,
                                    bool) { return others.openStyleEditor(id, *shown); },
         .openStyleProps = [&](std::int64_t id) { return others.openStyleProps(id, *shown); },
         .exportFromStyleList =
             [&](const styleContainer& style) { others.openExportSheet(style, *shown); },
         .updateIndividual =
             [&](std::int64_t id) { application.styleUpdates().checkStyleForUpdate(id); }});
    application.newStyle().setOpenNewStyleInEditor(
        [&](std::int64_t id) { return others.openStyleEditor(id, *shown); });
    application.draftOffer().setOpen([&](const styleToEdit& opened) {
        others.openStyleEditor(opened, *shown);
        return true;
    });
    MainWindow window(
        {.list = application.styleList(),
         .listCommands = application.listCommands(),
         .newStyle = application.newStyle(),
         .listUndo = application.listUndo(),
         .updates = application.styleUpdates(),
         .center = application.notificationCenter(),
         .dispatcher = application.dispatcher(),
         .canImport = [&] { return application.fileImport().canImport(); },
         .importFiles = [&](auto chosen) { application.fileImport().importFiles(chosen); },
         .openFiles = [&](auto dropped) { application.openFiles(dropped); },
         .openPreferences = [&] { others.openPreferences(window); },
         .emailSupport = [&] { application.emailSupport(); },
         .openWebsite = [&] { application.openWebsite(); },
         .retrySync = [&] { application.cloudSync().retry(); },
         .workOffline = [&] { application.cloudSync().workOffline(); },
         .pasteStyle = [&] { others.openPasteWindow(window); },
         .importFromURL = [&] { others.openImportSheet(window); },
         .restoreFromBackup = [&] { others.openRestoreSheet(window); },
         .mayClose = [&](auto retry) { return others.mayClose(std::move(retry)); }});
    shown = &window;
    const auto openUpdateSheet = application.notificationCenter().observe(
        notifications::openUpdateSheet,
        [&](const notification&) { others.openUpdateSheet(window); });
    // Queued: an opened file may ask a question, and nobody is to wait for its answer. What is
    // queued is done even when the application quits meanwhile.
    const auto openSoon = [&](std::vector<std::string> asked) {
        application.onceLaunched([&, asked] { open(application, asked); });
    };
    onLaterStart = [&](const laterStart& start) {
        window.bringForward(start.activationToken);
        openSoon(start.arguments);
    };
    window.show();
    application.styleListShown();
    openSoon(arguments);

    const TerminationSignals termination;
    const int status = QApplication::exec();
    alerts.stopAsking();
    others.keepUnsaved();
    // A name that is being edited is a change too, and belongs into the last save.
    if (QWidget* edited = QApplication::focusWidget()) edited->clearFocus();
    instance.stopListening();
    onLaterStart = nullptr;
    application.stopLoading();
    dispatcher.finish();
    application.finish();
    dispatcher.finish(); // the last save may have an alert to show
    if (!termination.haveCome()) alerts.finish();
    return status;
}

} // namespace

int main(int argc, char* argv[]) {
    QApplication qt(argc, argv);
    QApplication::setApplicationName("tessaril");
    QApplication::setDesktopFileName("com.tessaril.app");
    const bool dark = applyAppearance();

    const auto container = makeSharedContainer();
    if (!container)
        return refuseToStart("The folder for your styles could not be made or opened. Please check "
                             "your data folder and its permissions.");

    const std::vector<std::string> given(argv + 1, argv + argc);
    const auto arguments = absoluteArguments(given, std::filesystem::current_path());

    SingleInstance instance(*container);
    std::function<void(laterStart)> onLaterStart;
    const auto role = instance.begin({arguments, qgetenv("XDG_ACTIVATION_TOKEN").toStdString()},
                                     [&](laterStart start) {
                                         if (onLaterStart) onLaterStart(std::move(start));
                                     });
    switch (role) {
    case SingleInstance::role::handedOver:
        return EXIT_SUCCESS;
    case SingleInstance::role::refused:
        return refuseToStart("Tessaril is running already, but does not answer.");
    case SingleInstance::role::first:
        break;
    }
    return runApplication(*container, instance, arguments, dark, onLaterStart);
}
