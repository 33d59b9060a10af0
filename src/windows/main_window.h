#pragma once

#include "store/style_list.h"

#include <QMainWindow>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

class QAction;
class QListView;
class QStackedWidget;

namespace tessaril {

class StyleListModel;

/// Where the main window's commands go. All are to be set.
struct mainWindowCommands {
    std::function<bool()> canImport; ///< whether the import dialog may open now
    std::function<void(const std::vector<std::filesystem::path>&)> importFiles;
    std::function<void(const std::vector<std::filesystem::path>&)> openFiles; ///< dropped ones
    std::function<void()> openPreferences;
    std::function<void()> emailSupport;
    std::function<void()> openWebsite;
};

/// The application's window: the style list, or how to begin while there is no style.
class MainWindow : public QMainWindow {
public:
    /// `list` must live longer.
    MainWindow(StyleList& list, mainWindowCommands commands);

    /// Brings the window before all others, out of the minimised state too. `activationToken` is
    /// the desktop's leave to take the focus; empty where it gave none.
    void bringForward(const std::string& activationToken);

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void makeMenusAndToolbar();
    void makeList();
    void showListOrAdvice();
    void selectRow(int row);
    void importFromFile();

    mainWindowCommands commands;
    StyleListModel* model;
    QListView* styleList;
    QStackedWidget* pages;
    QAction* importAction;
};

} // namespace tessaril
