#include "windows/style_list_actions.h"

#include "windows/shown_text.h"

#include <QAction>
#include <QApplication>
#include <QLineEdit>
#include <QMenu>

#include <algorithm>

namespace tessaril {

namespace {

using direction = StyleListView::direction;

/// The text field of the list's window that has the focus: the name that is being edited, or the
/// filter.
QLineEdit* focusedField(const QWidget& view) {
    return qobject_cast<QLineEdit*>(view.window()->focusWidget());
}

} // namespace

StyleListActions::StyleListActions(const StyleList& styleList, StyleListCommands& listCommands,
                                   StyleListView& listView, UndoManager& listUndo)
    : QObject(&listView)
    , list(styleList)
    , commands(listCommands)
    , view(listView)
    , undoManager(listUndo)
    , contextMenu(new QMenu(&listView))
    , undo(make("&Undo", [this] { undoClicked(); }))
    , redo(make("&Redo", [this] { redoClicked(); }))
    , rename(makeWithKeys("Re&name", {Qt::Key_F2},
                          onOne([this](std::size_t row) { view.rename(row); })))
    , duplicate(makeWithKeys("Dupli&cate", {Qt::CTRL | Qt::Key_D}, [this] { duplicateClicked(); }))
    , deleteSelected(makeWithKeys("&Delete", {QKeySequence::Delete}, [this] { deleteClicked(); }))
    , deleteContext(make("&Delete", [this] { deleteContextClicked(); }))
    , selectAll(
          makeWithKeys("Select &All", {QKeySequence::SelectAll}, [this] { selectAllClicked(); }))
    , open(makeWithKeys("&Open", {Qt::Key_Return, Qt::Key_Enter},
                        [this] { commands.openSelected(view.selectedRows()); }))
    , properties(makeWithKeys("&Properties", {Qt::ALT | Qt::Key_Return, Qt::ALT | Qt::Key_Enter},
                              onOne([this](std::size_t row) { commands.openProperties(row); })))
    , update(make("Check for Upda&te",
                  onOne([this](std::size_t row) { commands.updateIndividualClicked(row); })))
    , exportStyle(
          make("E&xport Style…", onOne([this](std::size_t row) { commands.exportStyle(row); })))
    , enable(make("&Enable", [this] { commands.enableSelected(view.selectedRows()); }))
    , disable(make("D&isable", [this] { commands.disableSelected(view.selectedRows()); }))
    , enableAll(make("Enable &All", [this] { commands.enableAll(); }))
    , disableAll(make("Disab&le All", [this] { commands.disableAll(); }))
    , moveUp(makeWithKeys("Move &Up", {Qt::ALT | Qt::Key_Up},
                          [this] { view.moveSelected(direction::up); }))
    , moveDown(makeWithKeys("Move Do&wn", {Qt::ALT | Qt::Key_Down},
                            [this] { view.moveSelected(direction::down); })) {
    undo->setShortcuts(QKeySequence::Undo);
    redo->setShortcuts(QKeySequence::Redo);
    exportStyle->setShortcut(Qt::CTRL | Qt::Key_E);
    // Shown in the context menu only; the key is the other one's.
    deleteContext->setShortcutContext(Qt::WidgetShortcut);
    deleteContext->setShortcut(QKeySequence::Delete);
    makeContextMenu();

    // Once for many changes in a row.
    refreshTimer.setSingleShot(true);
    connect(&refreshTimer, &QTimer::timeout, this, [this] { refresh(); });
    const auto refreshSoon = [this] {
        if (!refreshTimer.isActive()) refreshTimer.start();
    };
    const QAbstractItemModel* model = view.model();
    connect(&view, &StyleListView::selectionTurned, this, refreshSoon);
    connect(model, &QAbstractItemModel::modelReset, this, refreshSoon);
    connect(model, &QAbstractItemModel::rowsInserted, this, refreshSoon);
    connect(model, &QAbstractItemModel::rowsRemoved, this, refreshSoon);
    connect(model, &QAbstractItemModel::rowsMoved, this, refreshSoon);
    connect(model, &QAbstractItemModel::dataChanged, this, refreshSoon);
    connect(qApp, &QApplication::focusChanged, this, refreshSoon);
    undoManager.setObserver([this] { refreshEditActions(); });
    refresh();
}

StyleListActions::~StyleListActions() {
    undoManager.setObserver({});
}

QAction* StyleListActions::make(const QString& text, Act act) {
    auto* action = new QAction(text, this);
    connect(action, &QAction::triggered, this, act);
    return action;
}

/// A key may come before the action has followed the selection.
StyleListActions::Act StyleListActions::onOne(std::function<void(std::size_t row)> act) {
    return [this, act = std::move(act)] {
        const std::vector<std::size_t> rows = view.selectedRows();
        if (rows.size() == 1) act(rows.front());
    };
}

/// The keys work while the list has the focus, not a field within it.
QAction* StyleListActions::makeWithKeys(const QString& text, const QList<QKeySequence>& keys,
                                        Act act) {
    QAction* action = make(text, std::move(act));
    action->setShortcutContext(Qt::WidgetShortcut);
    action->setShortcuts(keys);
    view.addAction(action);
    return action;
}

void StyleListActions::addEditActions(QMenu& menu) {
    menu.addActions({undo, redo});
    menu.addSeparator();
    menu.addActions({rename, duplicate, deleteSelected, selectAll});
    connect(&menu, &QMenu::aboutToShow, this, [this] { refresh(); });
}

void StyleListActions::addStyleActions(QMenu& menu) {
    menu.addActions({open, properties, update});
    menu.addSeparator();
    menu.addActions({enable, disable, enableAll, disableAll});
    menu.addSeparator();
    menu.addActions({moveUp, moveDown});
    connect(&menu, &QMenu::aboutToShow, this, [this] { refresh(); });
}

void StyleListActions::makeContextMenu() {
    contextMenu->setObjectName("styleMenu");
    contextMenu->addActions({open, properties, update});
    contextMenu->addSeparator();
    contextMenu->addActions({enable, disable});
    contextMenu->addSeparator();
    contextMenu->addActions({rename, duplicate, exportStyle});
    contextMenu->addSeparator();
    contextMenu->addAction(deleteContext);
    connect(&view, &StyleListView::menuWanted, this, [this](const QPoint& place) {
        refresh();
        contextMenu->popup(place);
    });
}

// What is available

void StyleListActions::refresh() {
    refreshTimer.stop();
    refreshRoutes();
    const std::vector<std::size_t> rows = view.selectedRows();
    const auto& styles = list.styles();
    const auto isEnabled = [&](std::size_t row) { return styles[row]->isEnabled; };
    const auto isChecking = [&](std::size_t row) {
        return styles[row]->updateStatus == updateStatuses::checking;
    };
    const auto canTurn = [&](bool on) {
        return std::ranges::any_of(
            rows, [&](std::size_t row) { return isEnabled(row) != on && !isChecking(row); });
    };
    const bool isOne = rows.size() == 1;
    for (QAction* action : {rename, exportStyle})
        action->setEnabled(isOne);
    for (QAction* action : {open, properties})
        action->setEnabled(isOne && !isChecking(rows.front()));
    update->setEnabled(isOne && !styles[rows.front()]->isCustom && !isChecking(rows.front()));
    for (QAction* action : {duplicate, deleteContext})
        action->setEnabled(!std::ranges::all_of(rows, isChecking));
    enable->setEnabled(canTurn(true));
    disable->setEnabled(canTurn(false));
    for (QAction* action : {enableAll, disableAll})
        action->setEnabled(!styles.empty());
    moveUp->setEnabled(view.canMove(rows, direction::up));
    moveDown->setEnabled(view.canMove(rows, direction::down));
    refreshEditActions();
}

void StyleListActions::refreshRoutes() {
    const styleRoutes& routes = commands.availableRoutes();
    open->setVisible(static_cast<bool>(routes.openStyleForEditing));
    properties->setVisible(static_cast<bool>(routes.openStyleProps));
    update->setVisible(static_cast<bool>(routes.updateIndividual));
    exportStyle->setVisible(static_cast<bool>(routes.exportFromStyleList));
}

void StyleListActions::refreshEditActions() {
    if (const QLineEdit* field = focusedField(view)) {
        undo->setText("&Undo");
        redo->setText("&Redo");
        undo->setEnabled(field->isUndoAvailable());
        redo->setEnabled(field->isRedoAvailable());
        deleteSelected->setEnabled(!field->text().isEmpty());
        selectAll->setEnabled(!field->text().isEmpty());
        return;
    }
    const auto named = [](const char* command, const std::string& name) {
        return name.empty() ? QString(command) : QString(command) + ' ' + qtText(name);
    };
    undo->setText(named("&Undo", undoManager.undoName()));
    redo->setText(named("&Redo", undoManager.redoName()));
    undo->setEnabled(undoManager.canUndo());
    redo->setEnabled(undoManager.canRedo());
    deleteSelected->setEnabled(view.selectionModel()->hasSelection());
    selectAll->setEnabled(view.model()->rowCount() > 0);
}

// What the commands do

void StyleListActions::duplicateClicked() {
    commands.duplicateSelected(view.selectedRows());
}

void StyleListActions::deleteClicked() {
    if (QLineEdit* field = focusedField(view)) return field->del();
    commands.deleteSelected(view.selectedRows());
}

void StyleListActions::deleteContextClicked() {
    const std::vector<std::size_t> rows = view.selectedRows();
    if (rows.size() == 1)
        commands.deleteContextAction(rows.front());
    else
        commands.deleteSelected(rows);
}

void StyleListActions::selectAllClicked() {
    if (QLineEdit* field = focusedField(view)) return field->selectAll();
    view.selectAll();
}

void StyleListActions::undoClicked() {
    if (QLineEdit* field = focusedField(view)) return field->undo();
    commands.undo();
}

void StyleListActions::redoClicked() {
    if (QLineEdit* field = focusedField(view)) return field->redo();
    commands.redo();
}

} // namespace tessaril
