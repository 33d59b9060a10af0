#include "windows/elided_label.h"

#include "windows/shown_text.h"

#include <QFontMetricsF>
#include <QResizeEvent>

namespace tessaril {

void ElidedLabel::showText(std::string_view text) {
    whole = oneLine(text);
    setTextFormat(Qt::PlainText);
    setToolTip(toolTipText(whole));
    setText(fontMetrics().elidedText(whole, Qt::ElideRight, width()));
    updateGeometry();
}

QSize ElidedLabel::sizeHint() const {
    // Rounded up: less than its exact width would be cut.
    return {qCeil(QFontMetricsF(font()).horizontalAdvance(whole)), QLabel::sizeHint().height()};
}

QSize ElidedLabel::minimumSizeHint() const {
    return {0, QLabel::minimumSizeHint().height()};
}

void ElidedLabel::resizeEvent(QResizeEvent* event) {
    QLabel::resizeEvent(event);
    setText(fontMetrics().elidedText(whole, Qt::ElideRight, width()));
}

} // namespace tessaril
