#pragma once

#include "store/style_list_commands.h"
#include "windows/row_motion.h"

#include <QPersistentModelIndex>
#include <QStyledItemDelegate>

namespace tessaril {

/// What can be clicked in a row.
enum class rowControl { none, checkBox, update, properties };

/// Draws a row of the style list: check box, icon, name with the second line below it, and the
/// buttons of what can be done to it; edits its name. The mouse is the view's. All rows are equally
/// high.
class StyleRowDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    /// All outlive it. A button whose route is not available is not drawn.
    StyleRowDelegate(const StyleListCommands& commands, RowMotion& motion, QObject* parent);

    /// Draws the rows weaker, as they cannot be used.
    void setDimmed(bool on) { isDimmed = on; }

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    /// Where a control of the row is drawn, `option.rect` being the row.
    static QRect controlRect(rowControl control, const QStyleOptionViewItem& option);

    /// The control at the place, of those that can be clicked now.
    rowControl controlAt(const QPoint& place, const QStyleOptionViewItem& option,
                         const QModelIndex& index) const;

    /// The control that the mouse is on, and whether its button is down. Of no row: none.
    void setPointedAt(const QModelIndex& index, rowControl control, bool isPressed);

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override;
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    void setModelData(QWidget* editor, QAbstractItemModel* model,
                      const QModelIndex& index) const override;
    void updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const override;
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;

signals:
    /// In-place editing of the row's name has ended with another text.
    void nameEdited(const QModelIndex& index, const QString& name) const;

protected:
    bool editorEvent(QEvent*, QAbstractItemModel*, const QStyleOptionViewItem&,
                     const QModelIndex&) override {
        return false;
    }

private:
    bool has(rowControl control, const QModelIndex& index) const;
    QRect nameRect(const QStyleOptionViewItem& option, const QModelIndex& index) const;
    void paintCheckBox(QPainter& painter, const QStyleOptionViewItem& option,
                       const QModelIndex& index) const;
    void paintButton(QPainter& painter, const QStyleOptionViewItem& option,
                     const QModelIndex& index, rowControl control, const QColor& color) const;

    const StyleListCommands& commands;
    RowMotion& motion;
    QPersistentModelIndex pointedRow;
    rowControl pointed = rowControl::none;
    bool isPressed = false;
    bool isDimmed = false;
};

} // namespace tessaril
