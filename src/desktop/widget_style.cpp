#include "desktop/widget_style.h"

#include <QPainter>
#include <QPainterPath>
#include <QStyleOption>

namespace tessaril {

namespace {

/// The check mark on a square of 14 by 14.
QPainterPath checkMark() {
    QPainterPath mark;
    mark.moveTo(3.5, 7.2);
    mark.lineTo(6, 9.8);
    mark.lineTo(10.6, 4.4);
    return mark;
}

void paintCheckBox(const QStyleOption& option, bool isOnSelection, QPainter& painter) {
    const bool isChecked = option.state & QStyle::State_On;
    const bool isEnabled = option.state & QStyle::State_Enabled;
    const QPalette::ColorGroup group = isEnabled ? QPalette::Active : QPalette::Disabled;
    const QPalette& palette = option.palette;
    const QColor text =
        palette.color(group, isOnSelection ? QPalette::HighlightedText : QPalette::Text);
    // On a selection the box takes the colours the other way round.
    const QColor filling =
        palette.color(group, isOnSelection ? QPalette::HighlightedText : QPalette::Highlight);
    const QColor mark =
        palette.color(group, isOnSelection ? QPalette::Highlight : QPalette::HighlightedText);
    QColor outline = text;
    outline.setAlphaF(option.state & QStyle::State_MouseOver ? 0.9f : 0.6f);

    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF box = QRectF(option.rect).adjusted(0.5, 0.5, -0.5, -0.5);
    painter.setPen(isChecked ? filling : outline);
    painter.setBrush(isChecked ? QBrush(filling) : QBrush(Qt::NoBrush));
    painter.drawRoundedRect(box, 3, 3);
    if (isChecked) {
        painter.translate(option.rect.topLeft());
        painter.scale(option.rect.width() / 14.0, option.rect.height() / 14.0);
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(mark, 1.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.drawPath(checkMark());
    }
    painter.restore();
}

} // namespace

WidgetStyle::WidgetStyle() : QProxyStyle("Fusion") {}

void WidgetStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                                QPainter* painter, const QWidget* widget) const {
    const bool isPartly = option->state & QStyle::State_NoChange;
    if (element == PE_IndicatorCheckBox && !isPartly)
        return paintCheckBox(*option, false, *painter);
    if (element == PE_IndicatorItemViewItemCheck && !isPartly)
        return paintCheckBox(*option, option->state & QStyle::State_Selected, *painter);
    QProxyStyle::drawPrimitive(element, option, painter, widget);
}

} // namespace tessaril
