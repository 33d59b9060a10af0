#pragma once

#include "windows/style_list_view.h"

#include <QKeySequence>
#include <QObject>

#include <functional>

class QAction;
class QLineEdit;
class QMenu;

namespace tessaril {

/// The commands on the style list as actions for menus and keys, enabled as the selection allows.
/// While a text field has the focus, undoing, deleting and selecting all mean its text, and the
/// keys of the list are its own. A command whose route is not available is not shown.
class StyleListActions : public QObject {
public:
    /// All outlive it. Observes `undoManager` for as long as it lives.
    StyleListActions(const StyleList& list, StyleListCommands& commands, StyleListView& view,
                     UndoManager& undoManager);
    ~StyleListActions() override;

    QAction* exportAction() const { return exportStyle; }
    void addEditActions(QMenu& menu);
    void addStyleActions(QMenu& menu);

private:
    using Act = std::function<void()>;

    Act onOne(std::function<void(std::size_t row)> act);
    QAction* make(const QString& text, Act act);
    QAction* makeWithKeys(const QString& text, const QList<QKeySequence>& keys, Act act);
    void makeContextMenu();
    void refresh();
    void refreshRoutes();
    void refreshEditActions();

    void duplicateClicked();
    void deleteClicked();
    void deleteContextClicked();
    void selectAllClicked();
    void undoClicked();
    void redoClicked();

    const StyleList& list;
    StyleListCommands& commands;
    StyleListView& view;
    UndoManager& undoManager;
    QTimer refreshTimer;
    QMenu* contextMenu;

    QAction* undo;
    QAction* redo;
    QAction* rename;
    QAction* duplicate;
    QAction* deleteSelected;
    QAction* deleteContext;
    QAction* selectAll;
    QAction* open;
    QAction* properties;
    QAction* update;
    QAction* exportStyle;
    QAction* enable;
    QAction* disable;
    QAction* enableAll;
    QAction* disableAll;
    QAction* moveUp;
    QAction* moveDown;
};

} // namespace tessaril
