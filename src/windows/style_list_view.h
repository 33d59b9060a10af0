#pragma once

#include "windows/row_motion.h"
#include "windows/style_list_model.h"
#include "windows/style_row_delegate.h"

#include <QListView>
#include <QTimer>

#include <cstdint>
#include <optional>
#include <unordered_set>
#include <vector>

namespace tessaril {

/// The pasteboard type of dragged rows: their indexes in decimal, separated by blanks.
inline constexpr const char* rowsMimeType = "StyleTableRow";

/// The style list on the screen: selection, keys, mouse, in-place renaming, and dragging rows to
/// another place. What that means for the styles is for `StyleListCommands`. Rows made anew keep
/// the selection, by the styles' identifiers.
class StyleListView : public QListView {
    Q_OBJECT

public:
    /// All outlive it.
    StyleListView(StyleList& list, StyleListCommands& commands, StyleListModel& model);

    /// Ascending.
    std::vector<std::size_t> selectedRows() const;

    /// Edits the name of the row, if it may be.
    void rename(std::size_t row);

    /// Enables the selected styles, or disables them where all are enabled.
    void toggleSelected();

    enum class direction { up, down };
    /// - rows: ascending
    bool canMove(const std::vector<std::size_t>& rows, direction where) const;
    /// Moves the selected rows by one.
    void moveSelected(direction where);

    /// Whether the user is typing a name.
    bool isRenaming() const { return state() == EditingState; }

    /// Draws the rows as locked.
    void setDimmed(bool isDimmed);

    /// Gives the list the focus and selects a row if there is none.
    void enter();

signals:
    /// The context menu of the selected rows is wanted at a place on the screen.
    void menuWanted(const QPoint& place);
    void selectionTurned();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void startDrag(Qt::DropActions actions) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                     const QList<int>& roles = {}) override;
    void selectionChanged(const QItemSelection& selected,
                          const QItemSelection& deselected) override;
    void closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) override;

private:
    /// What a reset would lose.
    struct keptState {
        std::unordered_set<std::int64_t> selected;
        std::optional<std::int64_t> current;
        std::optional<QString> typedName; ///< while the current row's name is edited
    };
    /// A place in the list that reacts to the mouse.
    struct target {
        QPersistentModelIndex row;
        rowControl control = rowControl::none;
    };

    std::int64_t idAt(int position) const;
    void keep();
    QItemSelection selectionOf(const QList<int>& positions) const;
    void restore();
    void selectOnly(int position);
    void moveTo(const std::vector<std::size_t>& moved, std::size_t row);
    QStyleOptionViewItem optionOf(const QModelIndex& index) const;
    target targetAt(const QPoint& place) const;
    void pointAt(const QPoint& place);
    void click(const target& clicked);
    bool takes(const QDropEvent& event) const;
    int dropPositionAt(const QPoint& place) const;
    int rowHeight() const;
    void scrollAtEdge();
    void showDropAt(std::optional<int> position);
    void tellOnScreen();

    StyleList& list;
    StyleListCommands& commands;
    StyleListModel& rows;
    RowMotion motion;
    StyleRowDelegate* delegate;
    keptState kept;
    bool hadSelection = false; ///< before rows were removed
    target pressed;
    target hovered;
    std::vector<std::int64_t> dragged; ///< the styles of the rows that are being dragged
    std::optional<int> dropPosition;   ///< where they would go: before the row at this position
    QPoint dragPlace;                  ///< where the pointer is then, in the viewport
    QTimer scrollTimer;
    QTimer onScreenTimer;
};

} // namespace tessaril
