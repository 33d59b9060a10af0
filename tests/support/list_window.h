#pragma once

#include "support/sample_styles.h"
#include "support/stand_in_machine.h"
#include "support/user.h"
#include "support/window_commands.h"
#include "windows/other_windows.h"
#include "windows/style_list_view.h"

namespace tessaril::testing {

/// The main window and those that it opens, over an application in memory.
struct ListWindow {
    using Paths = std::vector<std::filesystem::path>;

    mainWindowCommands commands() {
        mainWindowCommands all = windowCommands(application);
        all.canImport = [this] { return canImport; };
        all.importFiles = [this](const Paths& paths) { importedFiles = paths; };
        all.openFiles = [this](const Paths& paths) { openedFiles = paths; };
        all.openPreferences = [this] { others.openPreferences(window); };
        all.pasteStyle = [this] { others.openPasteWindow(window); };
        all.importFromURL = [this] { others.openImportSheet(window); };
        all.restoreFromBackup = [this] { others.openRestoreSheet(window); };
        all.mayClose = [this](auto retry) { return others.mayClose(std::move(retry)); };
        return all;
    }

    static bool isOnDisplay() { return QGuiApplication::platformName() != "offscreen"; }
    void showWindow() {
        application.styleList().refreshTable();
        window.show();
        // A bare display has nobody who makes a window the active one.
        EXPECT_TRUE(isOnDisplay() ? QTest::qWaitForWindowExposed(&window)
                                  : QTest::qWaitForWindowActive(&window));
    }
    /// Styles with the names A, B, C, ... and the identifiers 1, 2, 3, ...
    void show(int count) {
        for (int id = 1; id <= count; ++id)
            application.store().appendStyle(namedStyle(std::string(1, char('A' + id - 1)), id));
        showWindow();
    }
    /// Does what is to be done, and draws it.
    void settle() {
        machine.dispatcher.runAll();
        QCoreApplication::processEvents();
    }
    bool isEnabled(std::int64_t id) { return application.store().findStyle(id)->isEnabled; }

    QModelIndex row(int position) { return view.model()->index(position, 0); }
    QRect rowRect(int position) { return view.visualRect(row(position)); }
    QPoint place(int position, rowControl control) {
        QStyleOptionViewItem option;
        option.initFrom(&view);
        option.rect = rowRect(position);
        return StyleRowDelegate::controlRect(control, option).center();
    }
    void click(int position, rowControl control) {
        QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, place(position, control));
    }
    template <class Widget>
    Widget& part(const char* name) {
        return partOf<Widget>(window, name);
    }

    StandInMachine machine;
    Application application{machine.surroundings()};
    std::function<shownWebView(QWidget*)> makeWebView = [](QWidget*) { return shownWebView(); };
    OtherWindows others{application, [this](QWidget* parent) { return makeWebView(parent); },
                        TESSARIL_RESOURCES "/Ace/index.html"};
    bool canImport = false;
    Paths importedFiles, openedFiles;
    MainWindow window{commands()};
    StyleListView& view = part<StyleListView>("styleList");
};

} // namespace tessaril::testing
