#include "windows/style_row_delegate.h"

#include "windows/droplet.h"
#include "windows/style_list_model.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

namespace tessaril {

namespace {

// In logical pixels.
constexpr int margin = 12;
constexpr int spacing = 12;
constexpr int iconSize = 32;
constexpr int dropletSize = 24;
constexpr int verticalPadding = 9;
constexpr int lineGap = 2;

constexpr qreal disabledIconOpacity = 0.3;
// How much of the text's colour the weaker ones keep; on a selection more, for the same contrast.
struct strengths {
    qreal secondary;
    qreal tertiary;
};
constexpr strengths onBase{0.7, 0.55};
constexpr strengths onSelection{0.92, 0.78};

QStyle* styleOf(const QStyleOptionViewItem& option) {
    return option.widget ? option.widget->style() : QApplication::style();
}

QFont sourceFont(const QFont& nameFont) {
    QFont smaller = nameFont;
    smaller.setPointSizeF(nameFont.pointSizeF() * 0.9);
    return smaller;
}

/// The text's colour, weakened towards its background.
QColor weakened(const QColor& text, const QColor& background, qreal strength) {
    const auto mix = [strength](int a, int b) {
        return static_cast<int>(a * strength + b * (1 - strength));
    };
    return QColor(mix(text.red(), background.red()), mix(text.green(), background.green()),
                  mix(text.blue(), background.blue()));
}

struct rowColors {
    QColor name;
    QColor source;
};

rowColors colorsOf(const QStyleOptionViewItem& option, bool isEnabled) {
    const bool selected = option.state & QStyle::State_Selected;
    const QPalette::ColorGroup group =
        option.state & QStyle::State_Active ? QPalette::Active : QPalette::Inactive;
    const QColor text =
        option.palette.color(group, selected ? QPalette::HighlightedText : QPalette::Text);
    const QColor background =
        option.palette.color(group, selected ? QPalette::Highlight : QPalette::Base);
    const strengths& strength = selected ? onSelection : onBase;
    const QColor tertiary = weakened(text, background, strength.tertiary);
    if (!isEnabled) return {tertiary, tertiary};
    return {text, weakened(text, background, strength.secondary)};
}

void paintLine(QPainter& painter, const QRect& place, const QFont& font, const QColor& color,
               const QString& text) {
    painter.setFont(font);
    painter.setPen(color);
    painter.drawText(place, Qt::AlignLeading | Qt::AlignVCenter | Qt::TextSingleLine,
                     QFontMetrics(font).elidedText(text, Qt::ElideRight, place.width()));
}

bool isToggleKey(const QEvent& event) {
    if (event.type() != QEvent::KeyPress) return false;
    const auto& key = static_cast<const QKeyEvent&>(event);
    return !key.isAutoRepeat() && (key.key() == Qt::Key_Space || key.key() == Qt::Key_Select);
}

} // namespace

void StyleRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& given,
                             const QModelIndex& index) const {
    QStyleOptionViewItem option = given;
    const bool isEnabled = index.data(Qt::CheckStateRole) == Qt::Checked;
    QStyle* style = styleOf(option);
    painter->save();
    style->drawPrimitive(QStyle::PE_PanelItemViewItem, &option, painter, option.widget);

    QStyleOptionViewItem box = option;
    box.rect = checkBoxRect(option);
    box.state.setFlag(QStyle::State_HasFocus, false);
    box.state.setFlag(isEnabled ? QStyle::State_On : QStyle::State_Off);
    style->drawPrimitive(QStyle::PE_IndicatorItemViewItemCheck, &box, painter, option.widget);

    const auto visual = [&](const QRect& logical) {
        return QStyle::visualRect(option.direction, option.rect, logical);
    };
    const int iconLeft = option.rect.left() + margin +
                         style->pixelMetric(QStyle::PM_IndicatorWidth, &option, option.widget) +
                         spacing;
    const QRect icon =
        visual(QRect(iconLeft, option.rect.center().y() - iconSize / 2 + 1, iconSize, iconSize));
    QRect droplet(0, 0, dropletSize, dropletSize);
    droplet.moveCenter(icon.center());
    painter->setOpacity(isEnabled ? 1 : disabledIconOpacity);
    paintDroplet(*painter, droplet);
    painter->setOpacity(1);

    const QFont smaller = sourceFont(option.font);
    const int nameHeight = QFontMetrics(option.font).height();
    const int sourceHeight = QFontMetrics(smaller).height();
    const int left = iconLeft + iconSize + spacing;
    const int width = std::max(0, option.rect.right() - margin - left);
    const int top =
        option.rect.top() + (option.rect.height() - nameHeight - lineGap - sourceHeight) / 2;
    const rowColors colors = colorsOf(option, isEnabled);
    paintLine(*painter, visual(QRect(left, top, width, nameHeight)), option.font, colors.name,
              index.data(Qt::DisplayRole).toString());
    paintLine(*painter, visual(QRect(left, top + nameHeight + lineGap, width, sourceHeight)),
              smaller, colors.source, index.data(StyleListModel::sourceRole).toString());

    // A frame of its own: the style's is lost on a selected row.
    if (option.state & QStyle::State_HasFocus) {
        painter->setPen(colors.source);
        painter->drawRect(option.rect.adjusted(2, 2, -3, -3));
    }
    painter->restore();
}

QSize StyleRowDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const {
    const int text = QFontMetrics(option.font).height() + lineGap +
                     QFontMetrics(sourceFont(option.font)).height();
    return {0, std::max(iconSize, text) + 2 * verticalPadding};
}

QRect StyleRowDelegate::checkBoxRect(const QStyleOptionViewItem& option) {
    QStyle* style = styleOf(option);
    const QSize size(style->pixelMetric(QStyle::PM_IndicatorWidth, &option, option.widget),
                     style->pixelMetric(QStyle::PM_IndicatorHeight, &option, option.widget));
    const QPoint corner(option.rect.left() + margin,
                        option.rect.top() + (option.rect.height() - size.height()) / 2);
    return QStyle::visualRect(option.direction, option.rect, QRect(corner, size));
}

bool StyleRowDelegate::editorEvent(QEvent* event, QAbstractItemModel* model,
                                   const QStyleOptionViewItem& option, const QModelIndex& index) {
    const auto toggle = [&] {
        const bool isEnabled = index.data(Qt::CheckStateRole) == Qt::Checked;
        model->setData(index, isEnabled ? Qt::Unchecked : Qt::Checked, Qt::CheckStateRole);
        return true;
    };
    if (isToggleKey(*event)) return toggle();

    const bool isPress =
        event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonDblClick;
    if (!isPress && event->type() != QEvent::MouseButtonRelease) return false;
    const auto* mouse = static_cast<QMouseEvent*>(event);
    if (mouse->button() != Qt::LeftButton) return false;

    // A little more than the box itself, which is small to hit.
    constexpr int reach = 6;
    const bool isOnBox =
        checkBoxRect(option).adjusted(-reach, -reach, reach, reach).contains(mouse->pos());
    const bool completesClick = !isPress && isOnBox && pressed == index;
    pressed = isPress && isOnBox ? QPersistentModelIndex(index) : QPersistentModelIndex();
    return completesClick && toggle();
}

} // namespace tessaril
