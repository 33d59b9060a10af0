#pragma once

#include "app/application.h"
#include "platform/password_store.h"
#include "platform/web_view_factory.h"
#include "windows/editor_parts.h"

#include <QPointer>

#include <filesystem>
#include <functional>
#include <vector>

class QDialog;
class QWidget;

namespace tessaril {

class ImportMozDocView;
class PreferencesWindow;
class RecoveryPanel;
class StyleEditorWindow;
class UpdateSheet;
struct removedStylesAccess;

/// The windows that the main window opens. Each is made when it is asked for, over the main window,
/// and goes when it is closed; of those that there is one of, the open one comes forward instead.
class OtherWindows {
public:
    /// `application` must live longer.
    /// - editorPage: an absolute path
    OtherWindows(Application& application, WebViewFactory makeWebView,
                 std::filesystem::path editorPage);
    ~OtherWindows();
    OtherWindows(const OtherWindows&) = delete;
    OtherWindows& operator=(const OtherWindows&) = delete;

    /// The keychain that the preferences offer; must live longer.
    void setPasswords(PasswordStore& store) { passwords = &store; }

    void openPreferences(QWidget& mainWindow);
    void openRecoveryPanel(QWidget& mainWindow);
    void openPasteWindow(QWidget& mainWindow);
    /// Beeps instead while the list is locked for sync.
    void openImportSheet(QWidget& mainWindow);
    /// The same.
    void openRestoreSheet(QWidget& mainWindow);
    /// Whether no window holds what would be lost if the application ended now. Otherwise those
    /// that do ask the user, and `retry` is called once they have closed; not when one stays.
    bool mayClose(std::function<void()> retry);

    void openUpdateSheet(QWidget& mainWindow);
    QDialog* openExportSheet(const styleContainer& style, QWidget& over);

    /// Opens a window for the style, whose identifier is among the open properties; false when
    /// there is no such style.
    bool openStyleProps(std::int64_t id, QWidget& mainWindow);

    /// Opens a Style Editor, which stands on its own, for the style, whose identifier is among the
    /// open styles; false when there is no such style. May ask about what was not saved of it.
    bool openStyleEditor(std::int64_t id, QWidget& mainWindow);
    void openStyleEditor(const styleToEdit& opened, QWidget& mainWindow);

    /// Keeps what is unsaved in Style Editors for the next start; for an application that ends
    /// unasked.
    void keepUnsaved();

private:
    removedStylesAccess removedStyles(QWidget& mainWindow);

    Application& application;
    editorParts editor;
    PasswordStore* passwords = nullptr;
    QPointer<PreferencesWindow> preferences;
    QPointer<RecoveryPanel> recoveryPanel;
    QPointer<ImportMozDocView> pasteWindow;
    QPointer<UpdateSheet> updateSheet;
    std::vector<QPointer<StyleEditorWindow>> styleEditors; ///< also those that have closed
};

} // namespace tessaril
