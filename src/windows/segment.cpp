#include "windows/segment.h"

#include <QStyleOptionToolButton>
#include <QStylePainter>

namespace tessaril {

void Segment::paintEvent(QPaintEvent*) {
    constexpr int beyond = 6;
    const bool isLeft = shared == Qt::RightEdge;
    QStylePainter painter(this);
    QStyleOptionToolButton option;
    initStyleOption(&option);
    QStyleOptionToolButton frame = option;
    frame.text.clear();
    frame.icon = {};
    frame.rect.adjust(isLeft ? 0 : -beyond, 0, isLeft ? beyond : 0, 0);
    frame.state.setFlag(QStyle::State_HasFocus, false);
    painter.drawComplexControl(QStyle::CC_ToolButton, frame);
    painter.drawControl(QStyle::CE_ToolButtonLabel, option);
    if (!isLeft) {
        QColor line = palette().color(QPalette::ButtonText);
        line.setAlphaF(0.25F);
        painter.fillRect(QRect(0, 3, 1, height() - 6), line);
    }
    if (option.state & QStyle::State_HasFocus) {
        QStyleOptionFocusRect focus;
        focus.QStyleOption::operator=(option);
        focus.rect.adjust(3, 3, -3, -3);
        painter.drawPrimitive(QStyle::PE_FrameFocusRect, focus);
    }
}

} // namespace tessaril
