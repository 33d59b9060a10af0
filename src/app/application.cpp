#include "app/application.h"

#include "preferences/preference_keys.h"

#include <chrono>
#include <utility>

namespace tessaril {

namespace {

constexpr std::chrono::milliseconds launchCheckDelay(500);

constexpr std::string_view supportSubject = "I need some Tessaril help!";

} // namespace

Application::Application(applicationSurroundings surroundings)
    : machine(std::move(surroundings))
    , preferenceChanges(center, machine.dispatcher)
    , standard(machine.standardPreferences, [this] { preferenceChanges.announce(); })
    , shared(machine.sharedPreferences, [this] { preferenceChanges.announce(); })
    , synced(standard, &shared, center, machine.dispatcher)
    , compiler(machine.scripts, machine.resources, machine.alerts, machine.compilerErrors)
    , importedFiles(machine.urls, machine.files, machine.importFolder)
    , importingCompiler(compiler, importedFiles, machine.dispatcher)
    , savingCompiler(importingCompiler, styleStore, machine.dispatcher, machine.files,
                     machine.importFolder)
    , styleStore({.files = machine.files,
                  .channel = machine.channel,
                  .alerts = machine.alerts,
                  .dispatcher = machine.dispatcher,
                  .center = center,
                  .preferences = standard,
                  .compileStyle = [this](styleContainer& s) { return savingCompiler.compile(s); }},
                 machine.container)
    , icons({.loader = machine.urls,
             .decoder = machine.iconDecoder,
             .files = machine.files,
             .dispatcher = machine.dispatcher,
             .center = center,
             .preferences = standard,
             .findStyle = [this](std::int64_t id) { return styleStore.findStyle(id); },
             .cacheFolder = machine.iconCache})
    , list(styleStore, center, machine.dispatcher, icons)
    , importer(machine.files, importing())
    , pasteImporter(importing())
    , site(machine.urls, standard)
    , urlImporter(importing(), machine.urls, site)
    , exporter(machine.files, machine.alerts, machine.dispatcher)
    , openedFiles(styleStore, importer, center, machine.dispatcher, machine.alerts)
    , installLinks(importing(), urlImporter, site)
    , links(center, installLinks)
    , extensionWarning(machine.extension, standard, synced, machine.alerts)
    , stylesOpenInEditors(center)
    , commands({.store = styleStore,
                .list = list,
                .center = center,
                .dispatcher = machine.dispatcher,
                .alerts = machine.alerts,
                .undoManager = undoManager,
                .openStyles = stylesOpenInEditors,
                .updatingStyles = updatingStyles,
                .openProperties = openProperties})
    , styleMaker(styleStore, list, standard, center, machine.alerts)
    , rowUpdates({.store = styleStore,
                  .list = list,
                  .center = center,
                  .dispatcher = machine.dispatcher,
                  .alerts = machine.alerts,
                  .updatingStyles = updatingStyles,
                  .checks = updateChecks()})
    , sheetUpdates({.store = styleStore,
                    .center = center,
                    .dispatcher = machine.dispatcher,
                    .checks = updateChecks()})
    , updateOnLaunch(rowUpdates, standard, center, machine.dispatcher)
    , wholeDatabase({.files = machine.files,
                     .alerts = machine.alerts,
                     .dispatcher = machine.dispatcher,
                     .center = center,
                     .store = styleStore,
                     .openStyles = stylesOpenInEditors,
                     .wasReset = [this] { sync.databaseWasReset(); }})
    , controls(standard, shared, synced)
    , cloud(standard, center, machine.dispatcher)
    , drafts(machine.files, machine.draftFolder)
    , saves(styleStore, drafts, center, machine.dispatcher)
    , offer({.store = styleStore,
             .drafts = drafts,
             .saves = saves,
             .openStyles = stylesOpenInEditors,
             .center = center,
             .alerts = machine.alerts,
             .dispatcher = machine.dispatcher})
    , recovery(styleStore, center)
    , sync({.records = machine.records,
            .preferenceSync = synced,
            .dispatcher = machine.dispatcher,
            .merging = {.store = styleStore,
                        .files = machine.files,
                        .preferences = standard,
                        .center = center,
                        .alerts = machine.alerts,
                        .openStyles = stylesOpenInEditors,
                        .recoveryList = recovery,
                        .container = machine.container}})
    , cloudStart({.sync = sync,
                  .records = machine.records,
                  .store = styleStore,
                  .list = list,
                  .preferences = standard,
                  .center = center,
                  .dispatcher = machine.dispatcher}) {
    registerPreferenceDefaults(standard, shared, styleStore.generateUniqueID(),
                               machine.darkAppearance);
    styleStore.setUploadHandler([this] { sync.uploadDatabase(); });
    synced.setUploadHandler([this] { sync.uploadPreferences(); });
    sync.setUpdatePending([this] { return updateOnLaunch.isPending(); });
    cloud.setAccess(cloudStart.access());
    commands.setOpenLater([this](std::int64_t id) { sync.setPendingOpenStyleID(id); });
}

importSurroundings Application::importing() {
    return {.alerts = machine.alerts,
            .dispatcher = machine.dispatcher,
            .center = center,
            .store = styleStore,
            .list = list,
            .making = {.generateUniqueID = [this] { return styleStore.generateUniqueID(); },
                       .compileStyle =
                           [this](styleContainer& s) {
                               if (const auto tell = importingCompiler.compileLoading(s)) tell();
                           }},
            .compileQuietly = [this](styleContainer& s) {
                return importingCompiler.compileLoading(s);
            }};
}

checkSurroundings Application::updateChecks() {
    return {
        .site = site,
        .loader = machine.urls,
        .newCompile = [this] { return importingCompiler.refreshing(); },
    };
}

stylePropSurroundings Application::styleProps() {
    return {styleStore, openProperties, center, machine.alerts, machine.dispatcher};
}

styleEditorSurroundings Application::styleEditor() {
    return {saves,    drafts,   center,  machine.alerts, machine.dispatcher,
            standard, controls, exporter};
}

backupRestoreSurroundings Application::backupRestore() {
    return {machine.files, machine.dispatcher, machine.alerts,           styleStore,
            list,          wholeDatabase,      backupReading.get_token()};
}

void Application::styleListShown() {
    machine.dispatcher.onMain([this] {
        offer.offer();
        launched();
    });
    updateOnLaunch.listShown();
    cloudStart.listShown();
    machine.dispatcher.onMainAfter(launchCheckDelay, [this] { runLaunchChecks(); });
}

void Application::onceLaunched(std::function<void()> task) {
    if (isLaunched)
        machine.dispatcher.onMain(std::move(task));
    else
        afterLaunch.push_back(std::move(task));
}

/// The main thread's tasks go on while a question is open, so these had to wait by themselves.
void Application::launched() {
    isLaunched = true;
    for (auto& task : std::exchange(afterLaunch, {}))
        machine.dispatcher.onMain(std::move(task));
}

void Application::runLaunchChecks() {
    savingCompiler.resume();
    cloudStart.check();
    if (standard.boolean(preferenceKeys::isFirstLaunch)) {
        standard.set(preferenceKeys::isFirstLaunch, false);
        return;
    }
    extensionWarning.check();
}

void Application::openFiles(const std::vector<std::filesystem::path>& files) {
    openedFiles.open(files);
}

void Application::openLink(std::string_view address) {
    links.route(address);
}

void Application::emailSupport() {
    const std::string address = standard.string(preferenceKeys::supportAddress);
    if (machine.externals.composeEmail(address, supportSubject)) return;
    machine.alerts.showAlert("No Email Client Set Up",
                             "However, you can still email me at " + address + " if you need to!");
}

void Application::openWebsite() {
    machine.externals.openAddress(standard.string(preferenceKeys::webSite));
}

void Application::stopLoading() {
    backupReading.request_stop();
    icons.stop();
    urlImporter.stop();
    installLinks.stop();
    rowUpdates.stop();
    sheetUpdates.stop();
    importingCompiler.stop();
    machine.urls.cancelAll();
    machine.iconDecoder.cancelAll();
}

void Application::finish() {
    styleStore.finishSaves();
    sync.finish();
}

} // namespace tessaril
