#include "windows/other_windows.h"

#include "events/notification_names.h"
#include "events/observe_on_main.h"
#include "windows/bring_to_front.h"
#include "windows/editor_preview.h"
#include "windows/export_sheet.h"
#include "windows/import_moz_doc_view.h"
#include "windows/import_sheet.h"
#include "windows/new_style_sheet.h"
#include "windows/preferences_window.h"
#include "windows/recovery_panel.h"
#include "windows/restore_sheet.h"
#include "windows/style_editor_window.h"
#include "windows/style_prop_window.h"
#include "windows/update_sheet.h"

namespace tessaril {

namespace {

/// The one window of its kind: the open one, or a new one. One that was closed this moment has yet
/// to go.
template <typename Window, typename Make>
void bringForward(QPointer<Window>& window, Make make) {
    if (window && !window->isVisible()) delete window;
    if (!window) {
        window = make();
        window->setAttribute(Qt::WA_DeleteOnClose);
    }
    window->bringForward();
}

} // namespace

OtherWindows::OtherWindows(Application& ownApplication, WebViewFactory makeWebView,
                           std::filesystem::path editorPage)
    : application(ownApplication)
    , editor{.makeWebView = std::move(makeWebView),
             .page = std::move(editorPage),
             .preferences = application.preferences(),
             .center = application.notificationCenter()} {}

/// What of them is left when the application ends unasked.
OtherWindows::~OtherWindows() {
    for (const QPointer<StyleEditorWindow>& window : styleEditors)
        delete window;
}

void OtherWindows::openPreferences(QWidget& mainWindow) {
    bringForward(preferences, [&] {
        return new PreferencesWindow(
            {.center = application.notificationCenter(),
             .general = {.controls = application.preferenceControls(),
                         .cloud = application.cloudSwitch(),
                         .database = application.databaseCommands(),
                         .removedStyles = removedStyles(mainWindow)},
             .makePreview = [this](QWidget* pane) { return new EditorPreview(editor, pane); },
             .passwords = passwords},
            &mainWindow);
    });
}

removedStylesAccess OtherWindows::removedStyles(QWidget& mainWindow) {
    return {.hasStyles = [this] { return !application.recoveryList().isEmpty(); },
            .openPanel = [this, &mainWindow] { openRecoveryPanel(mainWindow); },
            .observe =
                [this](std::weak_ptr<const void> alive, std::function<void()> changed) {
                    return observeOnMain(application.notificationCenter(), application.dispatcher(),
                                         notifications::deletedStylesChanged, std::move(alive),
                                         [changed](const notification&) { changed(); });
                }};
}

void OtherWindows::openRecoveryPanel(QWidget& mainWindow) {
    bringForward(recoveryPanel, [&] {
        return new RecoveryPanel({.removed = application.recoveryList(),
                                  .listCommands = application.listCommands(),
                                  .center = application.notificationCenter(),
                                  .dispatcher = application.dispatcher()},
                                 &mainWindow);
    });
}

void OtherWindows::openPasteWindow(QWidget& mainWindow) {
    bringForward(pasteWindow, [&] {
        return new ImportMozDocView({.editor = editor, .importer = application.pasteImport()},
                                    &mainWindow);
    });
}

void OtherWindows::openImportSheet(QWidget& mainWindow) {
    if (!application.urlImport().mayBegin()) return;
    auto* sheet = new ImportSheet(application.urlImport(), &mainWindow);
    sheet->open();
}

void OtherWindows::openRestoreSheet(QWidget& mainWindow) {
    auto restore = std::make_unique<BackupRestore>(application.backupRestore());
    if (!restore->mayBegin()) return;
    auto* sheet = new RestoreSheet(std::move(restore), &mainWindow);
    sheet->open();
}

bool OtherWindows::mayClose(std::function<void()> retry) {
    if (pasteWindow && pasteWindow->isVisible()) {
        pasteWindow->closeThen(std::move(retry));
        return false;
    }
    // Each of them, as what was typed a moment ago has yet to arrive.
    for (const QPointer<StyleEditorWindow>& window : styleEditors) {
        if (!window || !window->isVisible()) continue;
        window->closeThen(std::move(retry));
        return false;
    }
    return true;
}

void OtherWindows::openUpdateSheet(QWidget& mainWindow) {
    if (updateSheet && updateSheet->isVisible()) return;
    updateSheet = new UpdateSheet(application.updateRuns().make(), &mainWindow);
    updateSheet->open();
}

QDialog* OtherWindows::openExportSheet(const styleContainer& style, QWidget& over) {
    auto* sheet =
        new ExportSheet(style, {.editor = editor, .exporter = application.styleExport()}, &over);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    sheet->open();
    return sheet;
}

bool OtherWindows::openStyleProps(std::int64_t id, QWidget& mainWindow) {
    const auto style = application.store().findStyle(id);
    if (!style) return false;
    const StyleList& list = application.styleList();
    const auto row = list.rowOf(id);
    auto* window =
        new StylePropWindow(std::make_unique<StylePropView>(application.styleProps(), *style),
                            row ? list.styles()[*row]->faviconImg : nullptr, &mainWindow);
    window->bringForward();
    return true;
}

bool OtherWindows::openStyleEditor(std::int64_t id, QWidget& mainWindow) {
    const auto opened = application.draftOffer().styleForEditing(id);
    if (opened) openStyleEditor(*opened, mainWindow);
    return opened.has_value();
}

void OtherWindows::openStyleEditor(const styleToEdit& opened, QWidget& mainWindow) {
    auto* window = new StyleEditorWindow(
        opened,
        {.editor = editor,
         .session = application.styleEditor(),
         .newStyle =
             [this](QWidget& over) { return openNewStyleSheet(application.newStyle(), over); },
         .exportStyle = [this](const styleContainer& shown,
                               QWidget& over) { return openExportSheet(shown, over); },
         .openPreferences = [this, &mainWindow] { openPreferences(mainWindow); }});
    std::erase(styleEditors, nullptr);
    styleEditors.emplace_back(window);
    bringToFront(*window);
}

void OtherWindows::keepUnsaved() {
    for (const QPointer<StyleEditorWindow>& window : styleEditors)
        if (window) window->keepUnsaved();
}

} // namespace tessaril
