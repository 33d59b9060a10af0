#pragma once

#include "windows/rule_table_model.h"

#include <QTableView>

namespace tessaril {

/// The rules on the screen. One row is selected at a time. The type's menu opens by one click, the
/// rule's field by a click on the selected row or a double click; by key both open with F2, Space
/// and Return, and the menu with Alt+Down. Tab goes from cell to cell, into the fields, and at the
/// end on to the next widget.
class RuleTableView : public QTableView {
    Q_OBJECT

public:
    /// `model` must live longer.
    explicit RuleTableView(RuleTableModel& model, QWidget* parent = nullptr);

    /// The selected row, or -1.
    int selectedRow() const;
    /// Selects the row and scrolls to it.
    void select(int row, RuleTableModel::column column);
    void editRule(int row);

signals:
    /// The selected row is to go.
    void removeWanted();
    void selectionTurned();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    bool focusNextPrevChild(bool next) override;
    void closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) override;
    void selectionChanged(const QItemSelection& selected,
                          const QItemSelection& deselected) override;
    void changeEvent(QEvent* event) override;

private:
    void fitToFont();
    bool open(const QModelIndex& index);
    bool goToNextCell(bool next);
    void copyRule() const;

    RuleTableModel& rows;
    int pressedSelection = -1; ///< the row that was selected when the mouse button went down
};

} // namespace tessaril
