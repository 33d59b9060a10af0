#include "windows/rule_table_view.h"

#include "windows/rule_delegate.h"
#include "windows/shown_text.h"

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>

namespace tessaril {

RuleTableView::RuleTableView(RuleTableModel& model, QWidget* parent)
    : QTableView(parent), rows(model) {
    setObjectName("rules");
    setAccessibleName("Rules");
    setItemDelegate(new RuleDelegate(rows, this));
    setModel(&rows);
    setSelectionBehavior(SelectRows);
    setSelectionMode(SingleSelection);
    setEditTriggers(NoEditTriggers); // the keys and clicks below
    setShowGrid(false);
    setWordWrap(false);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setCornerButtonEnabled(false);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    horizontalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    horizontalHeader()->setStretchLastSection(true);
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setSectionsClickable(false);
    fitToFont();
    connect(this, &QAbstractItemView::clicked, this, [this](const QModelIndex& index) {
        const bool isAgain = std::exchange(pressedSelection, -1) == index.row();
        if (index.column() == RuleTableModel::typeColumn || isAgain) open(index);
    });
}

void RuleTableView::fitToFont() {
    const QSize type = RuleDelegate::typeSize(*this);
    verticalHeader()->setMinimumSectionSize(0);
    verticalHeader()->setDefaultSectionSize(type.height());
    setColumnWidth(RuleTableModel::typeColumn, type.width());
}

void RuleTableView::changeEvent(QEvent* event) {
    QTableView::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) fitToFont();
}

// Selection

int RuleTableView::selectedRow() const {
    const QItemSelection& selection = selectionModel()->selection();
    return selection.isEmpty() ? -1 : selection.front().top();
}

void RuleTableView::select(int row, RuleTableModel::column column) {
    const QModelIndex index = rows.index(row, column);
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect |
                                                 QItemSelectionModel::Rows);
    scrollTo(index);
}

void RuleTableView::selectionChanged(const QItemSelection& selected,
                                     const QItemSelection& deselected) {
    QTableView::selectionChanged(selected, deselected);
    emit selectionTurned();
}

void RuleTableView::focusInEvent(QFocusEvent* event) {
    QTableView::focusInEvent(event);
    // The row with the focus is the one that keys are for, so it shows.
    const bool isByMouse = event->reason() == Qt::MouseFocusReason;
    if (selectedRow() < 0 && currentIndex().isValid() && !isByMouse)
        select(currentIndex().row(), RuleTableModel::column(currentIndex().column()));
}

// Editing

bool RuleTableView::open(const QModelIndex& index) {
    if (!index.isValid() || rows.isReadOnly()) return false;
    edit(index);
    if (auto* menu = qobject_cast<QComboBox*>(indexWidget(index))) menu->showPopup();
    return true;
}

void RuleTableView::editRule(int row) {
    open(rows.index(row, RuleTableModel::ruleColumn));
}

void RuleTableView::closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) {
    const bool next = hint == QAbstractItemDelegate::EditNextItem;
    const bool isByTab = next || hint == QAbstractItemDelegate::EditPreviousItem;
    QTableView::closeEditor(editor, isByTab ? QAbstractItemDelegate::NoHint : hint);
    if (isByTab) focusNextPrevChild(next);
}

/// Gives whether there is one.
bool RuleTableView::goToNextCell(bool next) {
    const QModelIndex current = currentIndex();
    if (!current.isValid()) return false;
    const int cell = current.row() * RuleTableModel::columns + current.column() + (next ? 1 : -1);
    if (cell < 0 || cell >= rows.rowCount() * RuleTableModel::columns) return false;
    const int row = cell / RuleTableModel::columns;
    const auto column = RuleTableModel::column(cell % RuleTableModel::columns);
    select(row, column);
    // A field is ready to be typed into; a menu that opened would be in the way.
    if (column == RuleTableModel::ruleColumn) editRule(row);
    return true;
}

bool RuleTableView::focusNextPrevChild(bool next) {
    return goToNextCell(next) || QAbstractScrollArea::focusNextPrevChild(next);
}

// Keys and mouse

void RuleTableView::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Copy)) return copyRule();
    const QModelIndex current = currentIndex();
    switch (event->key()) {
    case Qt::Key_Escape:
        // A key that is held down closes a field, and not the window after it.
        if (event->isAutoRepeat()) return;
        break;
    case Qt::Key_Delete:
    case Qt::Key_Backspace:
        if (event->modifiers() == Qt::NoModifier) return emit removeWanted();
        break;
    case Qt::Key_Down:
        if (event->modifiers() != Qt::AltModifier) break;
        open(current.siblingAtColumn(RuleTableModel::typeColumn));
        return;
    case Qt::Key_F2:
    case Qt::Key_Space:
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (event->isAutoRepeat() || open(current)) return;
        break;
    default:
        break;
    }
    QTableView::keyPressEvent(event);
}

void RuleTableView::copyRule() const {
    const int row = selectedRow();
    if (row < 0) return;
    const QModelIndex rule = rows.index(row, RuleTableModel::ruleColumn);
    QApplication::clipboard()->setText(rule.data(Qt::EditRole).toString());
}

void RuleTableView::mousePressEvent(QMouseEvent* event) {
    pressedSelection = selectedRow();
    QTableView::mousePressEvent(event);
}

void RuleTableView::mouseDoubleClickEvent(QMouseEvent* event) {
    pressedSelection = -1;
    QTableView::mouseDoubleClickEvent(event);
    const QModelIndex index = indexAt(event->pos());
    if (event->button() == Qt::LeftButton && index.column() == RuleTableModel::ruleColumn)
        open(index);
}

} // namespace tessaril
