#pragma once

#include <QPersistentModelIndex>
#include <QStyledItemDelegate>

namespace tessaril {

/// Draws a row of the style list: check box, icon, name, and the source below it. The check box
/// works by mouse and, on the current row, by the space key. All rows are equally high.
class StyleRowDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    /// Where the check box of a row is drawn, `option.rect` being the row.
    static QRect checkBoxRect(const QStyleOptionViewItem& option);

protected:
    bool editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
                     const QModelIndex& index) override;

private:
    QPersistentModelIndex pressed; ///< the row whose check box the mouse button went down on
};

} // namespace tessaril
