#pragma once

#include "settings/variable_table.h"

#include <QScrollArea>

#include <vector>

namespace tessaril {

class VariableTableCell;

/// The rows of a style's variables. Rows are made when they come into sight, so that a style with
/// very many opens at once. The wheel scrolls and never changes a value. Its own keyboard focus
/// goes to the first control.
class VariableTableView : public QScrollArea {
public:
    /// `table` must live longer.
    VariableTableView(VariableTable& table, QWidget* parent = nullptr);

    /// Shows all values as they stand.
    void reload();

    QSize sizeHint() const override;

protected:
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    void makeRowsInSight();
    void placeRow(std::size_t row);
    int nameWidth() const;

    VariableTable& table;
    int rowHeight = 0;
    QWidget* content;
    std::vector<VariableTableCell*> rows; ///< the first ones; children of `content`
    QWidget* lastControl = nullptr;       ///< of `rows`
};

} // namespace tessaril
