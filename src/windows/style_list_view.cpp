#include "windows/style_list_view.h"

#include "windows/drag_picture.h"

#include <QApplication>
#include <QDrag>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>

#include <algorithm>
#include <chrono>

namespace tessaril {

namespace {

using namespace std::chrono_literals;

constexpr auto scrollPace = 30ms;
constexpr auto onScreenDelay = 40ms; // while scrolling nobody looks at an icon

QByteArray encodedRows(const std::vector<std::size_t>& rows) {
    QByteArrayList numbers;
    for (const std::size_t row : rows)
        numbers.append(QByteArray::number(static_cast<qulonglong>(row)));
    return numbers.join(' ');
}

std::vector<std::size_t> decodedRows(const QByteArray& text) {
    std::vector<std::size_t> rows;
    for (const QByteArray& number : text.split(' '))
        rows.push_back(static_cast<std::size_t>(number.toULongLong()));
    return rows;
}

} // namespace

StyleListView::StyleListView(StyleList& styleList, StyleListCommands& listCommands,
                             StyleListModel& model)
    : list(styleList)
    , commands(listCommands)
    , rows(model)
    , motion(*viewport())
    , delegate(new StyleRowDelegate(commands, motion, this)) {
    setObjectName("styleList");
    setAccessibleName("Styles");
    setFrameShape(QFrame::NoFrame);
    setUniformItemSizes(true);
    setSelectionMode(ExtendedSelection);
    setEditTriggers(NoEditTriggers);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setMouseTracking(true);
    setDragDropMode(DragDrop);
    setDefaultDropAction(Qt::MoveAction);
    setItemDelegate(delegate);
    // Before the selection hears of it.
    connect(&rows, &QAbstractItemModel::rowsAboutToBeRemoved, this,
            [this] { hadSelection = selectionModel()->hasSelection(); });
    setModel(&rows);
    // Where all that was selected has gone, the next key goes on from there.
    connect(&rows, &QAbstractItemModel::rowsRemoved, this, [this] {
        if (hadSelection && !selectionModel()->hasSelection() && currentIndex().isValid())
            selectOnly(currentIndex().row());
    });
    connect(delegate, &StyleRowDelegate::nameEdited, this,
            [this](const QModelIndex& index, const QString& name) {
                commands.endEditingName(rows.rowAt(index.row()), name.toStdString());
            });
    // After the view's own answers to a reset, which drop what is kept here.
    connect(&rows, &QAbstractItemModel::modelAboutToBeReset, this, [this] { keep(); });
    connect(&rows, &QAbstractItemModel::modelReset, this, [this] { restore(); });
    connect(&rows, &StyleListModel::positionsWanted, this, [this](const QList<int>& positions) {
        // Who is typing a name goes on doing so, whatever comes in meanwhile.
        if (currentIndex().isValid() && indexWidget(currentIndex())) return;
        selectOnly(positions.front());
        selectionModel()->select(selectionOf(positions), QItemSelectionModel::Select);
        scrollTo(rows.index(positions.front()));
    });
    connect(&rows, &StyleListModel::filterTurned, this, [this] {
        if (selectionModel()->isSelected(currentIndex()))
            scrollTo(currentIndex());
        else
            scrollToTop();
    });

    scrollTimer.setInterval(scrollPace);
    connect(&scrollTimer, &QTimer::timeout, this, [this] { scrollAtEdge(); });
    onScreenTimer.setSingleShot(true);
    onScreenTimer.setInterval(onScreenDelay);
    connect(&onScreenTimer, &QTimer::timeout, this, [this] { tellOnScreen(); });
    const auto lookSoon = [this] {
        if (!onScreenTimer.isActive()) onScreenTimer.start();
    };
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this, lookSoon);
    connect(verticalScrollBar(), &QScrollBar::rangeChanged, this, lookSoon);
    connect(&rows, &QAbstractItemModel::modelReset, this, lookSoon);
    connect(&rows, &QAbstractItemModel::rowsInserted, this, lookSoon);
    connect(&rows, &QAbstractItemModel::rowsRemoved, this, lookSoon);
    connect(&rows, &QAbstractItemModel::rowsMoved, this, lookSoon);
}

std::int64_t StyleListView::idAt(int position) const {
    return list.styles()[rows.rowAt(position)]->uniqueID;
}

std::vector<std::size_t> StyleListView::selectedRows() const {
    std::vector<std::size_t> selected;
    for (const QItemSelectionRange& range : selectionModel()->selection())
        for (int position = range.top(); position <= range.bottom(); ++position)
            selected.push_back(rows.rowAt(position));
    std::ranges::sort(selected);
    return selected;
}

// What a reset would lose

void StyleListView::keep() {
    kept = {};
    for (const QItemSelectionRange& range : selectionModel()->selection())
        for (int position = range.top(); position <= range.bottom(); ++position)
            kept.selected.insert(idAt(position));
    if (const QModelIndex current = currentIndex(); current.isValid()) {
        kept.current = idAt(current.row());
        if (const auto* editor = qobject_cast<QLineEdit*>(indexWidget(current)))
            kept.typedName = editor->text();
    }
}

/// Ascending positions, with one range for those that stand together.
QItemSelection StyleListView::selectionOf(const QList<int>& positions) const {
    QItemSelection selection;
    for (qsizetype first = 0, next = 0; first < positions.size(); first = next) {
        for (next = first + 1; next < positions.size(); ++next)
            if (positions[next] != positions[next - 1] + 1) break;
        selection.append({rows.index(positions[first]), rows.index(positions[next - 1])});
    }
    return selection;
}

void StyleListView::restore() {
    QList<int> selected;
    QModelIndex current;
    for (int position = 0; position < rows.rowCount(); ++position) {
        if (kept.selected.contains(idAt(position))) selected.append(position);
        if (kept.current == idAt(position)) current = rows.index(position);
    }
    if (current.isValid())
        selectionModel()->setCurrentIndex(current, QItemSelectionModel::NoUpdate);
    selectionModel()->select(selectionOf(selected), QItemSelectionModel::ClearAndSelect);
    emit selectionTurned();
    if (!kept.typedName || !current.isValid()) return;
    edit(current);
    auto* editor = qobject_cast<QLineEdit*>(indexWidget(current));
    if (!editor || editor->text() == kept.typedName) return;
    editor->setText(*kept.typedName);
    editor->setModified(true);
}

// Commands

/// Whatever keys are down, which the view itself would heed.
void StyleListView::selectOnly(int position) {
    selectionModel()->setCurrentIndex(rows.index(position), QItemSelectionModel::ClearAndSelect);
}

void StyleListView::rename(std::size_t row) {
    const auto position = rows.positionOf(row);
    if (!position || !commands.renameMenu(row)) return;
    setFocus();
    selectOnly(*position);
    edit(rows.index(*position));
}

void StyleListView::toggleSelected() {
    const std::vector<std::size_t> selected = selectedRows();
    // One that is being updated stays as it is, so what the others need decides.
    const auto needsNothing = [this](std::size_t row) {
        const styleObject& style = *list.styles()[row];
        return style.isEnabled || style.updateStatus == updateStatuses::checking;
    };
    if (std::ranges::all_of(selected, needsNothing))
        commands.disableSelected(selected);
    else
        commands.enableSelected(selected);
}

bool StyleListView::canMove(const std::vector<std::size_t>& moved, direction where) const {
    if (moved.empty() || rows.isFiltered()) return false;
    // Rows that don't stand together are brought together by a move, also at the end.
    const bool areTogether = moved.back() - moved.front() + 1 == moved.size();
    const bool areAtEnd =
        where == direction::up ? moved.front() == 0 : moved.back() + 1 == list.styles().size();
    return !(areTogether && areAtEnd);
}

void StyleListView::moveSelected(direction where) {
    const std::vector<std::size_t> selected = selectedRows();
    if (!canMove(selected, where)) return;
    if (where == direction::up)
        moveTo(selected, selected.front() - std::min<std::size_t>(selected.front(), 1));
    else
        moveTo(selected, std::min(selected.back() + 2, list.styles().size()));
    scrollTo(currentIndex());
}

void StyleListView::moveTo(const std::vector<std::size_t>& moved, std::size_t row) {
    // Nothing is saved for rows that are there already.
    const bool areTogether = moved.back() - moved.front() + 1 == moved.size();
    if (areTogether && row >= moved.front() && row <= moved.back() + 1) return;
    commands.dropRows(moved, row);
}

void StyleListView::setDimmed(bool isDimmed) {
    delegate->setDimmed(isDimmed);
    viewport()->update();
}

void StyleListView::enter() {
    setFocus();
    if (!selectionModel()->hasSelection() && rows.rowCount() > 0) selectOnly(0);
}

// Keys and mouse

void StyleListView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Space || event->key() == Qt::Key_Select) {
        if (!event->isAutoRepeat()) toggleSelected();
        return;
    }
    // Rows that can move no further stay selected.
    const bool isUpOrDown = event->key() == Qt::Key_Up || event->key() == Qt::Key_Down;
    if (isUpOrDown && event->modifiers() & Qt::AltModifier) return;
    QListView::keyPressEvent(event);
}

QStyleOptionViewItem StyleListView::optionOf(const QModelIndex& index) const {
    QStyleOptionViewItem option;
    initViewItemOption(&option);
    option.rect = visualRect(index);
    return option;
}

StyleListView::target StyleListView::targetAt(const QPoint& place) const {
    const QModelIndex index = indexAt(place);
    if (!index.isValid()) return {};
    return {index, delegate->controlAt(place, optionOf(index), index)};
}

void StyleListView::pointAt(const QPoint& place) {
    const target before = hovered;
    hovered = targetAt(place);
    const bool isHeld = pressed.control != rowControl::none;
    const bool isOnPressed = hovered.row == pressed.row && hovered.control == pressed.control;
    // While the button is down nothing but what it went down on reacts.
    if (isHeld && !isOnPressed) hovered = {};
    delegate->setPointedAt(hovered.row, hovered.control, isHeld);
    update(before.row);
    update(hovered.row);
}

void StyleListView::mousePressEvent(QMouseEvent* event) {
    const target under = targetAt(event->pos());
    if (event->button() != Qt::LeftButton || under.control == rowControl::none)
        return QListView::mousePressEvent(event);
    pressed = under;
    pointAt(event->pos());
}

void StyleListView::mouseMoveEvent(QMouseEvent* event) {
    pointAt(event->pos());
    if (pressed.control == rowControl::none) QListView::mouseMoveEvent(event);
}

void StyleListView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || pressed.control == rowControl::none)
        return QListView::mouseReleaseEvent(event);
    const target under = targetAt(event->pos());
    const target released = std::exchange(pressed, {});
    pointAt(event->pos());
    if (under.control == released.control && under.row == released.row) click(released);
}

void StyleListView::mouseDoubleClickEvent(QMouseEvent* event) {
    const target under = targetAt(event->pos());
    if (under.control != rowControl::none) return mousePressEvent(event);
    QListView::mouseDoubleClickEvent(event);
    if (event->button() == Qt::LeftButton && under.row.isValid())
        commands.openSelected({rows.rowAt(under.row.row())});
}

void StyleListView::click(const target& clicked) {
    if (!clicked.row.isValid()) return;
    const std::size_t row = rows.rowAt(clicked.row.row());
    switch (clicked.control) {
    case rowControl::checkBox:
        return commands.onToggle(row);
    case rowControl::update:
        return commands.updateIndividualClicked(row);
    case rowControl::properties:
        return commands.openProperties(row);
    case rowControl::none:
        return;
    }
}

bool StyleListView::viewportEvent(QEvent* event) {
    if (event->type() == QEvent::Leave) pointAt({-1, -1});
    return QListView::viewportEvent(event);
}

void StyleListView::contextMenuEvent(QContextMenuEvent* event) {
    QPoint place = event->globalPos();
    if (event->reason() == QContextMenuEvent::Keyboard) {
        scrollTo(currentIndex());
        place = viewport()->mapToGlobal(visualRect(currentIndex()).center());
    } else if (!indexAt(event->pos()).isValid()) {
        return;
    }
    if (selectionModel()->hasSelection()) emit menuWanted(place);
}

void StyleListView::selectionChanged(const QItemSelection& selected,
                                     const QItemSelection& deselected) {
    QListView::selectionChanged(selected, deselected);
    emit selectionTurned();
}

void StyleListView::closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) {
    // The Tab key ends the editing and does not go on to the next name.
    const bool goesOn = hint == QAbstractItemDelegate::EditNextItem ||
                        hint == QAbstractItemDelegate::EditPreviousItem;
    QListView::closeEditor(editor, goesOn ? QAbstractItemDelegate::NoHint : hint);
}

// Dragging rows

void StyleListView::startDrag(Qt::DropActions) {
    const std::vector<std::size_t> selected = selectedRows();
    if (selected.empty() || rows.isFiltered() || list.isLockedForSync()) return;
    dragged.clear();
    for (const std::size_t row : selected)
        dragged.push_back(list.styles()[row]->uniqueID);
    auto* payload = new QMimeData;
    payload->setData(rowsMimeType, encodedRows(selected));
    auto* drag = new QDrag(this);
    drag->setMimeData(payload);
    const QString name = rows.index(*rows.positionOf(selected.front())).data().toString();
    drag->setPixmap(dragPicture(*this, name, selected.size()));
    drag->setHotSpot({-12, -8}); // below the pointer, which shows the place
    drag->exec(Qt::MoveAction);
    dragged.clear();
    showDropAt(std::nullopt);
}

/// Rows of this list, which are as they were when the drag began.
bool StyleListView::takes(const QDropEvent& event) const {
    if (event.source() != this || !event.mimeData()->hasFormat(rowsMimeType)) return false;
    if (rows.isFiltered() || list.isLockedForSync()) return false;
    const std::vector<std::size_t> wanted = decodedRows(event.mimeData()->data(rowsMimeType));
    return std::ranges::equal(wanted, dragged, [this](std::size_t row, std::int64_t id) {
        return row < list.styles().size() && list.styles()[row]->uniqueID == id;
    });
}

int StyleListView::dropPositionAt(const QPoint& place) const {
    const QModelIndex under = indexAt(place);
    if (!under.isValid()) return place.y() < 0 ? 0 : rows.rowCount();
    return under.row() + (place.y() > visualRect(under).center().y() ? 1 : 0);
}

void StyleListView::showDropAt(std::optional<int> position) {
    if (dropPosition == position) return;
    dropPosition = position;
    viewport()->update();
}

// What is not a row of this list, a file for instance, is left to the window.

void StyleListView::dragEnterEvent(QDragEnterEvent* event) {
    if (!takes(*event)) return event->ignore();
    event->setDropAction(Qt::MoveAction);
    event->accept();
}

void StyleListView::dragMoveEvent(QDragMoveEvent* event) {
    if (!takes(*event)) {
        showDropAt(std::nullopt);
        return event->ignore();
    }
    dragPlace = event->position().toPoint();
    showDropAt(dropPositionAt(dragPlace));
    event->setDropAction(Qt::MoveAction);
    event->accept();
    if (!scrollTimer.isActive()) scrollTimer.start();
}

/// While rows are held near the edge, where no event comes.
void StyleListView::scrollAtEdge() {
    const int edge = rowHeight() / 2;
    const int above = edge - dragPlace.y();
    const int below = dragPlace.y() - (viewport()->height() - edge);
    if (!dropPosition || (above <= 0 && below <= 0)) return scrollTimer.stop();
    const int step = above > 0 ? -above : below; // the closer to the edge the faster
    verticalScrollBar()->setValue(verticalScrollBar()->value() + step);
    showDropAt(dropPositionAt(dragPlace));
    viewport()->update(); // scrolling takes the old line along
}

int StyleListView::rowHeight() const {
    return rows.rowCount() > 0 ? visualRect(rows.index(0)).height() : 0;
}

void StyleListView::dragLeaveEvent(QDragLeaveEvent*) {
    showDropAt(std::nullopt);
}

void StyleListView::dropEvent(QDropEvent* event) {
    showDropAt(std::nullopt);
    if (!takes(*event)) return event->ignore();
    event->setDropAction(Qt::MoveAction);
    event->accept();
    moveTo(decodedRows(event->mimeData()->data(rowsMimeType)),
           static_cast<std::size_t>(dropPositionAt(event->position().toPoint())));
}

// Drawing

void StyleListView::paintEvent(QPaintEvent* event) {
    QListView::paintEvent(event);
    if (!dropPosition || rows.rowCount() == 0) return;
    const bool isBehind = *dropPosition >= rows.rowCount();
    const QRect row = visualRect(rows.index(isBehind ? rows.rowCount() - 1 : *dropPosition));
    const int lowest = std::max(3, viewport()->height() - 4);
    const int y = std::clamp(isBehind ? row.bottom() + 1 : row.top(), 3, lowest);
    constexpr int inset = 8;
    constexpr int ring = 6;
    QPainter painter(viewport());
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
    painter.drawEllipse(QRectF(inset, y - ring / 2.0, ring, ring));
    painter.drawLine(QPointF(inset + ring, y), QPointF(viewport()->width() - inset, y));
}

void StyleListView::resizeEvent(QResizeEvent* event) {
    QListView::resizeEvent(event);
    if (!onScreenTimer.isActive()) onScreenTimer.start();
}

void StyleListView::dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                                const QList<int>& roles) {
    for (int position = topLeft.row(); position <= bottomRight.row(); ++position) {
        const QModelIndex index = rows.index(position);
        motion.noteStatus(idAt(position), index.data(StyleListModel::updateStatusRole).toString());
    }
    QListView::dataChanged(topLeft, bottomRight, roles);
}

void StyleListView::tellOnScreen() {
    std::vector<std::int64_t> ids;
    const QRect screen = viewport()->rect();
    const QModelIndex first = indexAt(screen.topLeft());
    if (isVisible() && first.isValid())
        for (int position = first.row(); position < rows.rowCount(); ++position) {
            if (!visualRect(rows.index(position)).intersects(screen)) break;
            ids.push_back(idAt(position));
        }
    list.setOnScreen(std::move(ids));
}

} // namespace tessaril
