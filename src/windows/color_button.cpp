#include "windows/color_button.h"

#include "windows/color_dialog.h"
#include "windows/shown_text.h"

#include <QPainter>
#include <QPainterPath>
#include <QStyleOptionFocusRect>

#include <algorithm>

namespace tessaril {

namespace {

constexpr QSize buttonSize(56, 24);
constexpr qreal radius = 4;
constexpr int square = 6; // of the pattern

float part(double component) {
    return static_cast<float>(std::clamp(component, 0., 1.));
}

} // namespace

QColor qtColor(const colorComponents& color) {
    return QColor::fromRgbF(part(color.red), part(color.green), part(color.blue),
                            part(color.alpha));
}

void paintSwatch(QPainter& painter, const QRectF& place, const QColor& color) {
    QPainterPath shape;
    shape.addRoundedRect(place, radius, radius);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setClipPath(shape);
    painter.fillRect(place, Qt::white);
    for (int y = 0; y * square < place.height(); ++y)
        for (int x = y % 2; x * square < place.width(); x += 2)
            painter.fillRect(
                QRectF(place.left() + x * square, place.top() + y * square, square, square),
                Qt::lightGray);
    painter.fillRect(place, color);
    painter.restore();
}

ColorButton::ColorButton(QWidget* parent) : QAbstractButton(parent) {
    setFocusPolicy(Qt::StrongFocus);
    setFixedSize(buttonSize);
    connect(this, &QAbstractButton::clicked, this, [this] { askForColor(); });
}

void ColorButton::showColor(const colorComponents& newColor) {
    color = newColor;
    update();
}

QSize ColorButton::sizeHint() const {
    return buttonSize;
}

void ColorButton::askForColor() {
    auto* dialog = new ColorDialog(color, window());
    const QString title = windowTitleText(accessibleName().toStdString());
    dialog->setWindowTitle(title.trimmed().isEmpty() ? "Color" : title);
    connect(dialog, &QDialog::accepted, this, [this, dialog] {
        if (isStored && !dialog->isChanged()) return;
        isStored = true;
        showColor(dialog->color());
        emit colorChosen(color);
    });
    dialog->open();
}

void ColorButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const QRectF place = QRectF(rect()).adjusted(3.5, 3.5, -3.5, -3.5);
    paintSwatch(painter, place, qtColor(color));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(palette().color(QPalette::PlaceholderText));
    painter.drawRoundedRect(place, radius, radius);
    if (!isEnabled()) painter.fillRect(rect(), QColor::fromRgbF(0.5F, 0.5F, 0.5F, 0.5F));
    if (!hasFocus()) return;
    painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
    painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), radius + 2, radius + 2);
}

} // namespace tessaril
