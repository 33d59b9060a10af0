#include "windows/main_window.h"

#include "events/notification_names.h"
#include "events/observe_on_main.h"
#include "import/file_import.h"
#include "windows/bring_to_front.h"
#include "windows/empty_list_page.h"
#include "windows/file_panel.h"
#include "windows/filter_field.h"
#include "windows/line_icons.h"
#include "windows/list_toolbar.h"
#include "windows/new_style_sheet.h"
#include "windows/shown_text.h"
#include "windows/style_list_actions.h"
#include "windows/sync_overlay.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFile>
#include <QFileDialog>
#include <QMenuBar>
#include <QMimeData>
#include <QStackedWidget>
#include <QToolBar>

#include <utility>

namespace tessaril {

namespace {

std::vector<std::filesystem::path> localFiles(const QMimeData& data) {
    std::vector<std::filesystem::path> files;
    for (const QUrl& url : data.urls())
        if (url.isLocalFile()) files.push_back(pathOf(url.toLocalFile()));
    return files;
}

} // namespace

MainWindow::MainWindow(mainWindowCommands windowCommands)
    : commands(std::move(windowCommands))
    , model(new StyleListModel(commands.list, this))
    , styleList(new StyleListView(commands.list, commands.listCommands, *model))
    , listActions(
          new StyleListActions(commands.list, commands.listCommands, *styleList, commands.listUndo))
    , newAction(new QAction("&New Style…", this))
    , importAction(new QAction("&Import User CSS File…", this))
    , pasteAction(new QAction("&Paste Style…", this))
    , urlAction(new QAction("Import from &URL…", this))
    , checkAllAction(new QAction("Chec&k All for Updates", this))
    , updateSheetAction(new QAction("Update All &Styles…", this))
    , pages(new QStackedWidget)
    , syncOverlay(new SyncOverlay(pages)) {
    setWindowTitle("Tessaril");
    setAcceptDrops(true);
    makeCommands();
    makeMenus();
    std::vector<QAction*> buttons = {newAction, importAction};
    if (commands.pasteStyle) buttons.push_back(pasteAction);
    if (commands.importFromURL) buttons.push_back(urlAction);
    buttons.push_back(checkAllAction);
    toolbar = new ListToolbar(buttons, commands.listCommands, this);
    addToolBar(toolbar);
    makePages();
    setCentralWidget(pages);
    resize(820, 640);
    showPage();
    pages->currentWidget()->setFocus(); // not the toolbar, which comes first
    makeSyncOverlay();
}

/// The list goes before what it looks at.
MainWindow::~MainWindow() {
    commands.updates.setObserver({});
    delete takeCentralWidget();
}

void MainWindow::bringForward(const std::string& activationToken) {
    // Where Qt looks for it when it asks a Wayland desktop for the focus.
    if (!activationToken.empty())
        qputenv("XDG_ACTIVATION_TOKEN", QByteArray::fromStdString(activationToken));
    bringToFront(*this);
    // A question that waits for its answer must not lie below.
    if (QWidget* modal = QApplication::activeModalWidget()) {
        modal->raise();
        modal->activateWindow();
    }
}

void MainWindow::makeCommands() {
    newAction->setIconText("New");
    newAction->setToolTip("Write a new style");
    newAction->setIcon(lineIconFor(lineIcon::create, palette()));
    newAction->setShortcut(QKeySequence::New);
    connect(newAction, &QAction::triggered, this,
            [this] { openNewStyleSheet(commands.newStyle, *this); });
    importAction->setIconText("Import");
    importAction->setToolTip("Import User CSS files");
    importAction->setIcon(lineIconFor(lineIcon::import, palette()));
    importAction->setShortcut(QKeySequence::Open);
    connect(importAction, &QAction::triggered, this, [this] { importFromFile(); });
    pasteAction->setIconText("Paste");
    pasteAction->setToolTip("Paste the text of a style");
    pasteAction->setIcon(lineIconFor(lineIcon::paste, palette()));
    pasteAction->setShortcut(Qt::CTRL | Qt::SHIFT | Qt::Key_V);
    connect(pasteAction, &QAction::triggered, this, [this] { commands.pasteStyle(); });
    urlAction->setIconText("URL");
    urlAction->setToolTip("Import a style from its address");
    urlAction->setIcon(lineIconFor(lineIcon::web, palette()));
    urlAction->setShortcut(Qt::CTRL | Qt::Key_L);
    connect(urlAction, &QAction::triggered, this, [this] { commands.importFromURL(); });
    checkAllAction->setIconText("Update");
    checkAllAction->setToolTip("Check all styles for updates");
    checkAllAction->setIcon(lineIconFor(lineIcon::update, palette()));
    checkAllAction->setIconVisibleInMenu(false); // alone in its menu
    checkAllAction->setShortcut(Qt::CTRL | Qt::Key_U);
    connect(checkAllAction, &QAction::triggered, this,
            [this] { commands.updates.updateAllClicked(); });
    connect(updateSheetAction, &QAction::triggered, this,
            [this] { commands.updates.updateAllStyles(); });
    commands.updates.setObserver([this] { showUpdates(); });
}

void MainWindow::makeMenus() {
    QMenu* file = menuBar()->addMenu("&File");
    file->addActions({newAction, importAction});
    if (commands.pasteStyle) file->addAction(pasteAction);
    if (commands.importFromURL) file->addAction(urlAction);
    file->addAction(listActions->exportAction());
    file->addSeparator();
    if (commands.restoreFromBackup) {
        connect(file->addAction("&Restore from Backup…"), &QAction::triggered, this,
                [this] { commands.restoreFromBackup(); });
        file->addSeparator();
    }
    QAction* quit = file->addAction("&Quit");
    quit->setShortcut(QKeySequence("Ctrl+Q"));
    quit->setShortcutContext(Qt::ApplicationShortcut);
    connect(quit, &QAction::triggered, this, [this] { this->quit(); });

    QMenu* edit = menuBar()->addMenu("&Edit");
    listActions->addEditActions(*edit);
    edit->addSeparator();
    QAction* find = edit->addAction("&Find");
    find->setShortcut(QKeySequence::Find);
    connect(find, &QAction::triggered, this, [this] {
        toolbar->filterField().setFocus(Qt::ShortcutFocusReason);
        toolbar->filterField().selectAll();
    });
    edit->addSeparator();
    QAction* preferences = edit->addAction("&Preferences…");
    preferences->setShortcut(QKeySequence("Ctrl+,"));
    connect(preferences, &QAction::triggered, this, [this] { commands.openPreferences(); });

    QMenu* style = menuBar()->addMenu("&Style");
    listActions->addStyleActions(*style);
    style->addSeparator();
    style->addActions({checkAllAction, updateSheetAction});

    QMenu* help = menuBar()->addMenu("&Help");
    connect(help->addAction("Tessaril &Support…"), &QAction::triggered, this,
            [this] { commands.emailSupport(); });
    connect(help->addAction("Tessaril &Web Site"), &QAction::triggered, this,
            [this] { commands.openWebsite(); });
}

void MainWindow::makePages() {
    auto* noMatch = new NoMatchPage;
    pages->addWidget(styleList);
    pages->addWidget(
        new EmptyListPage(*newAction, *importAction, commands.importFromURL ? urlAction : nullptr));
    pages->addWidget(noMatch);
    connect(noMatch, &NoMatchPage::showAllWanted, this, [this] {
        showAll();
        styleList->enter();
    });
    connect(model, &QAbstractItemModel::modelReset, this, [this] { showPage(); });
    connect(model, &QAbstractItemModel::rowsInserted, this, [this] { showPage(); });
    connect(model, &QAbstractItemModel::rowsRemoved, this, [this] { showPage(); });
    connect(model, &StyleListModel::hiddenRowWanted, this, [this] { showAll(); });
    const FilterField& filter = toolbar->filterField();
    connect(&filter, &QLineEdit::textChanged, this,
            [this](const QString& text) { model->setFilter(text); });
    connect(&filter, &FilterField::left, this, [this] {
        if (pages->currentWidget() == styleList) styleList->enter();
    });
}

void MainWindow::makeSyncOverlay() {
    connect(syncOverlay, &SyncOverlay::turned, this, [this](bool hadFocus) { showSync(hadFocus); });
    connect(syncOverlay, &SyncOverlay::retryWanted, this, [this] { commands.retrySync(); });
    connect(syncOverlay, &SyncOverlay::offlineWanted, this, [this] { commands.workOffline(); });
    connect(model, &StyleListModel::lockTurned, this,
            [this] { syncOverlay->setLocked(commands.list.isLockedForSync()); });
    iCloudError = observeOnMain(commands.center, commands.dispatcher, notifications::iCloudError,
                                alive, [this](const notification&) { syncOverlay->showFailure(); });
    syncOverlay->setLocked(commands.list.isLockedForSync());
}

/// What of the sync is to be seen has changed.
void MainWindow::showSync(bool hadFocus) {
    styleList->setDimmed(syncOverlay->isUp());
    showPage();
    // Who is typing a name goes on doing so.
    if (syncOverlay->asks() && !styleList->isRenaming())
        syncOverlay->setFocus();
    else if (hadFocus)
        pages->currentWidget()->setFocus();
}

void MainWindow::showPage() {
    const bool hasStyles = !commands.list.styles().empty();
    toolbar->setHasStyles(hasStyles);
    showUpdates();
    QWidget* wanted = pages->widget(!hasStyles ? 1 : model->rowCount() == 0 ? 2 : 0);
    // That there is no style is not known before the sync has ended.
    if (syncOverlay->isUp()) wanted = styleList;
    if (wanted == pages->currentWidget()) return;
    // The filter keeps the focus, unless there is nothing left to filter.
    const bool movesFocus =
        !focusWidget() || !hasStyles || pages->currentWidget()->isAncestorOf(focusWidget());
    pages->setCurrentWidget(wanted);
    if (movesFocus) wanted->setFocus();
}

void MainWindow::showUpdates() {
    checkAllAction->setEnabled(commands.updates.hasStylesToCheck() &&
                               !commands.updates.isRunning());
}

void MainWindow::showAll() {
    toolbar->filterField().clear();
}

void MainWindow::quit() {
    if (!commands.mayClose || commands.mayClose([this] { quit(); })) QApplication::quit();
}

void MainWindow::closeEvent(QCloseEvent* event) {
    // The windows over this one go with it.
    if (commands.mayClose && !commands.mayClose([this] { close(); })) event->ignore();
}

void MainWindow::importFromFile() {
    if (!commands.canImport()) return;
    QFileDialog* dialog = makeFilePanel(this, importDialogTitle, "Style files", importFileTypes);
    dialog->setFileMode(QFileDialog::ExistingFiles);
    connect(dialog, &QFileDialog::filesSelected, this, [this](const QStringList& chosen) {
        std::vector<std::filesystem::path> files;
        for (const QString& file : chosen)
            files.push_back(pathOf(file));
        commands.importFiles(files);
    });
    dialog->open();
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (!localFiles(*event->mimeData()).empty()) event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event) {
    event->acceptProposedAction();
    // Later, as an opened file may ask a question and the program that it came from waits.
    const auto openDropped = [this, files = localFiles(*event->mimeData())] {
        commands.openFiles(files);
    };
    QMetaObject::invokeMethod(this, openDropped, Qt::QueuedConnection);
}

} // namespace tessaril
