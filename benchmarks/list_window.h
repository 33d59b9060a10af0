#pragma once

#include "desktop/folder_message_channel.h"
#include "desktop/posix_file_system.h"
#include "import/style_site.h"
#include "quiet_machine.h"
#include "store/new_style.h"
#include "store/style_list_commands.h"
#include "update/style_updates.h"
#include "windows/main_window.h"
#include "windows/style_list_view.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTemporaryDir>
#include <QWindow>

#include <filesystem>

namespace tessaril::bench {

class NoIcons : public IconLoader {
    void setFoundHandler(Found) override {}
    std::shared_ptr<const siteIcon> known(const styleContainer&) const override { return nullptr; }
    void fetch(std::span<const std::int64_t>, iconRequest) override {}
    void setOnScreen(std::vector<std::int64_t>) override {}
};

/// A container of its own, which is gone at the end.
struct Container {
    QTemporaryDir folder;
    std::filesystem::path container = folder.path().toStdString();
    PosixFileSystem files;
};

/// The style list's window over the styles of a container, on the given threads and network.
struct ListWindow {
    /// All outlive it.
    ListWindow(Container& home, Dispatcher& tasks, UrlLoader& network)
        : files(home.files), container(home.container), dispatcher(tasks), loader(network) {}

    void show() {
        window.show();
        // Nothing is drawn before the display has shown the window.
        while (!window.windowHandle()->isExposed())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    FileSystem& files;
    const std::filesystem::path container;
    Dispatcher& dispatcher;
    UrlLoader& loader;
    FolderMessageChannel channel{files, container};
    NoAlerts alerts;
    NotificationCenter center;
    NoPreferences stored;
    Preferences preferences{stored};
    QuietCompile compile = [](styleContainer&) { return [] {}; };
    StyleStore store{{files, channel, alerts, dispatcher, center, preferences, compile}, container};
    NoIcons icons;
    StyleList list{store, center, dispatcher, icons};
    UndoManager undoManager;
    OpenStyles openStyles{center};
    StyleIDs updatingStyles, openProperties;
    StyleListCommands commands{{store, list, center, dispatcher, alerts, undoManager, openStyles,
                                updatingStyles, openProperties}};
    NewStyle newStyle{store, list, preferences, center, alerts};
    StyleSite site{loader, preferences};
    StyleUpdates updates{
        {store, list, center, dispatcher, alerts, updatingStyles, {site, loader, [this] {
                                                                       return compile;
                                                                   }}}};
    MainWindow window{{.list = list,
                       .listCommands = commands,
                       .newStyle = newStyle,
                       .listUndo = undoManager,
                       .updates = updates,
                       .center = center,
                       .dispatcher = dispatcher,
                       .canImport = [] { return false; },
                       .importFiles = [](const auto&) {},
                       .openFiles = [](const auto&) {},
                       .openPreferences = [] {},
                       .emailSupport = [] {},
                       .openWebsite = [] {}}};
    StyleListView* view = window.findChild<StyleListView*>("styleList");
};

} // namespace tessaril::bench
