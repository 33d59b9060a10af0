#include "windows/main_window.h"

#include "import/file_import.h"
#include "windows/empty_list_page.h"
#include "windows/import_icon.h"
#include "windows/shown_text.h"
#include "windows/style_list_model.h"
#include "windows/style_row_delegate.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFile>
#include <QFileDialog>
#include <QListView>
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

QString importFilter() {
    QStringList patterns;
    for (const std::string_view type : importFileTypes)
        patterns.append("*." + qtText(type));
    return "Style files (" + patterns.join(' ') + ")";
}

} // namespace

MainWindow::MainWindow(StyleList& list, mainWindowCommands windowCommands)
    : commands(std::move(windowCommands))
    , model(new StyleListModel(list, this))
    , styleList(new QListView)
    , pages(new QStackedWidget)
    , importAction(new QAction("Import User CSS File…", this)) {
    setWindowTitle("Tessaril");
    setAcceptDrops(true);
    makeMenusAndToolbar();
    makeList();
    pages->addWidget(styleList);
    pages->addWidget(new EmptyListPage(*importAction));
    setCentralWidget(pages);
    resize(520, 600);
    showListOrAdvice();
}

void MainWindow::bringForward(const std::string& activationToken) {
    // Where Qt looks for it when it asks a Wayland desktop for the focus.
    if (!activationToken.empty())
        qputenv("XDG_ACTIVATION_TOKEN", QByteArray::fromStdString(activationToken));
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
}

void MainWindow::makeMenusAndToolbar() {
    importAction->setIconText("Import");
    importAction->setToolTip("Import User CSS files");
    importAction->setIcon(importIcon(palette()));
    importAction->setShortcut(QKeySequence::Open);
    connect(importAction, &QAction::triggered, this, [this] { importFromFile(); });

    QMenu* file = menuBar()->addMenu("&File");
    file->addAction(importAction);
    file->addSeparator();
    QAction* quit = file->addAction("&Quit");
    quit->setShortcut(QKeySequence("Ctrl+Q"));
    quit->setShortcutContext(Qt::ApplicationShortcut);
    connect(quit, &QAction::triggered, this, [] { QApplication::quit(); });

    QMenu* edit = menuBar()->addMenu("&Edit");
    QAction* preferences = edit->addAction("&Preferences…");
    preferences->setShortcut(QKeySequence("Ctrl+,"));
    connect(preferences, &QAction::triggered, this, [this] { commands.openPreferences(); });

    QMenu* help = menuBar()->addMenu("&Help");
    connect(help->addAction("Tessaril &Support…"), &QAction::triggered, this,
            [this] { commands.emailSupport(); });
    connect(help->addAction("Tessaril &Web Site"), &QAction::triggered, this,
            [this] { commands.openWebsite(); });

    QToolBar* toolbar = addToolBar("Toolbar");
    toolbar->setMovable(false);
    toolbar->setContextMenuPolicy(Qt::PreventContextMenu);
    toolbar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    toolbar->addAction(importAction);
    // The keyboard reaches the toolbar as it does the list.
    toolbar->widgetForAction(importAction)->setFocusPolicy(Qt::TabFocus);
}

void MainWindow::makeList() {
    styleList->setObjectName("styleList");
    styleList->setAccessibleName("Styles");
    styleList->setFrameShape(QFrame::NoFrame);
    styleList->setUniformItemSizes(true);
    styleList->setSelectionMode(QAbstractItemView::ExtendedSelection);
    styleList->setEditTriggers(QAbstractItemView::NoEditTriggers);
    styleList->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    styleList->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    styleList->setItemDelegate(new StyleRowDelegate(styleList));
    styleList->setModel(model);
    connect(model, &QAbstractItemModel::modelReset, this, [this] { showListOrAdvice(); });
    connect(model, &QAbstractItemModel::rowsInserted, this, [this] { showListOrAdvice(); });
    connect(model, &StyleListModel::rowWanted, this, [this](int row) { selectRow(row); });
}

void MainWindow::showListOrAdvice() {
    QWidget* wanted = pages->widget(model->rowCount() > 0 ? 0 : 1);
    const bool movesFocus = pages->currentWidget()->isAncestorOf(focusWidget());
    pages->setCurrentWidget(wanted);
    if (movesFocus || !focusWidget()) wanted->setFocus();
}

void MainWindow::selectRow(int row) {
    const QModelIndex wanted = model->index(row);
    styleList->setCurrentIndex(wanted);
    styleList->scrollTo(wanted);
}

void MainWindow::importFromFile() {
    if (!commands.canImport()) return;
    auto* dialog =
        new QFileDialog(this, qtText(importDialogTitle), QDir::homePath(), importFilter());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
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
