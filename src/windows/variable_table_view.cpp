#include "windows/variable_table_view.h"

#include "windows/var_range_slider.h"
#include "windows/variable_table_cell.h"

#include <QComboBox>
#include <QEvent>
#include <QFocusEvent>
#include <QResizeEvent>
#include <QScrollBar>

#include <algorithm>

namespace tessaril {

namespace {

constexpr int rowPadding = 8;
constexpr std::size_t rowsAhead = 8; ///< so that the Tab key finds the next one
constexpr int comfortableRows = 8;

} // namespace

VariableTableView::VariableTableView(VariableTable& variableTable, QWidget* parent)
    : QScrollArea(parent), table(variableTable), content(new QWidget) {
    setObjectName("variableTable");
    setAccessibleName("Variables");
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::StrongFocus); // for the mnemonic of the title
    setWidget(content);
    rowHeight = std::max(QComboBox().sizeHint().height(), VarRangeSlider().sizeHint().height()) +
                rowPadding;
    verticalScrollBar()->setSingleStep(rowHeight);
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this, [this] { makeRowsInSight(); });
    makeRowsInSight();
}

void VariableTableView::reload() {
    for (VariableTableCell* row : rows)
        row->reload();
}

QSize VariableTableView::sizeHint() const {
    const int most = std::min(static_cast<int>(table.rowCount()), comfortableRows);
    return {QScrollArea::sizeHint().width(), most * rowHeight + 2 * frameWidth()};
}

void VariableTableView::resizeEvent(QResizeEvent* event) {
    QScrollArea::resizeEvent(event);
    const int height = static_cast<int>(table.rowCount()) * rowHeight;
    content->resize(viewport()->width(), std::max(height, viewport()->height()));
    for (std::size_t row = 0; row < rows.size(); ++row)
        placeRow(row);
    makeRowsInSight();
}

void VariableTableView::makeRowsInSight() {
    const int bottom = verticalScrollBar()->value() + viewport()->height();
    const std::size_t wanted = static_cast<std::size_t>(bottom / rowHeight) + 1 + rowsAhead;
    while (rows.size() < std::min(wanted, table.rowCount())) {
        auto* row = new VariableTableCell(table, rows.size(), content);
        for (QWidget* part : row->findChildren<QWidget*>())
            part->installEventFilter(this);
        rows.push_back(row);
        if (QWidget* control = row->control()) {
            if (lastControl)
                setTabOrder(lastControl, control); // not after the window's last one
            else
                setFocusProxy(control);
            lastControl = control;
        }
        placeRow(rows.size() - 1);
        row->show();
    }
}

void VariableTableView::placeRow(std::size_t row) {
    rows[row]->setGeometry(0, static_cast<int>(row) * rowHeight, content->width(), rowHeight);
    rows[row]->setNameWidth(nameWidth());
}

int VariableTableView::nameWidth() const {
    return viewport()->width() * 2 / 5;
}

bool VariableTableView::eventFilter(QObject* object, QEvent* event) {
    // By the title's mnemonic, it may be out of sight; the Tab key looks for that itself.
    const bool isByKey = event->type() == QEvent::FocusIn &&
                         static_cast<QFocusEvent*>(event)->reason() == Qt::ShortcutFocusReason;
    if (isByKey) ensureWidgetVisible(static_cast<QWidget*>(object));
    const bool isInRow = content->isAncestorOf(qobject_cast<QWidget*>(object));
    if (event->type() != QEvent::Wheel || !isInRow) return QScrollArea::eventFilter(object, event);
    event->ignore();
    return true;
}

} // namespace tessaril
