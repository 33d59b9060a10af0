#pragma once

#include "events/notification_center.h"
#include "platform/dispatcher.h"
#include "store/new_style.h"
#include "store/style_list.h"
#include "store/style_list_commands.h"
#include "undo/undo_manager.h"
#include "update/style_updates.h"

#include <QMainWindow>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class QAction;
class QStackedWidget;

namespace tessaril {

class ListToolbar;
class StyleListActions;
class StyleListModel;
class StyleListView;
class SyncOverlay;

/// What the main window shows and where its commands go. The references outlive it.
struct mainWindowCommands {
    StyleList& list;
    StyleListCommands& listCommands;
    NewStyle& newStyle;
    UndoManager& listUndo;
    StyleUpdates& updates;
    NotificationCenter& center;
    Dispatcher& dispatcher;
    std::function<bool()> canImport; ///< whether the import dialog may open now
    std::function<void(const std::vector<std::filesystem::path>&)> importFiles;
    std::function<void(const std::vector<std::filesystem::path>&)> openFiles; ///< dropped ones
    std::function<void()> openPreferences;
    std::function<void()> emailSupport;
    std::function<void()> openWebsite;
    /// The answers to a first sync that failed.
    std::function<void()> retrySync = {};
    std::function<void()> workOffline = {};
    /// Opens the window that takes a style as text; one that is not set is not offered.
    std::function<void()> pasteStyle = {};
    /// Opens the sheet that takes the address of a style; one that is not set is not offered.
    std::function<void()> importFromURL = {};
    /// Opens the sheet that brings styles back from a backup; one that is not set is not offered.
    std::function<void()> restoreFromBackup = {};
    /// Whether nothing in other windows would be lost if this one closed now, which ends the
    /// application. Otherwise those windows ask the user, and `retry` is called once they have
    /// closed; not when one of them stays.
    std::function<bool(std::function<void()> retry)> mayClose = {};
};

/// The application's window: the style list, or how to begin while there is no style.
class MainWindow : public QMainWindow {
public:
    explicit MainWindow(mainWindowCommands commands);
    ~MainWindow() override;

    /// Brings the window before all others, out of the minimised state too. `activationToken` is
    /// the desktop's leave to take the focus; empty where it gave none.
    void bringForward(const std::string& activationToken);

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void makeCommands();
    void makeMenus();
    void makePages();
    void makeSyncOverlay();
    void showSync(bool hadFocus);
    void showPage();
    void showUpdates();
    void quit();
    void importFromFile();
    void showAll();

    mainWindowCommands commands;
    StyleListModel* model;
    StyleListView* styleList;
    StyleListActions* listActions;
    QAction* newAction;
    QAction* importAction;
    QAction* pasteAction;
    QAction* urlAction;
    QAction* checkAllAction;
    QAction* updateSheetAction;
    ListToolbar* toolbar;
    QStackedWidget* pages;
    SyncOverlay* syncOverlay;
    std::shared_ptr<int> alive = std::make_shared<int>();
    NotificationCenter::Subscription iCloudError;
};

} // namespace tessaril
