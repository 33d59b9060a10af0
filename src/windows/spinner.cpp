#include "windows/spinner.h"

#include <QPainter>

#include <chrono>

namespace tessaril {

namespace {

using namespace std::chrono_literals;

constexpr auto frameTime = 33ms;
constexpr qint64 revolution = 900; // milliseconds
constexpr int side = 18;           // logical pixels

} // namespace

Spinner::Spinner(QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    nextFrame.setInterval(frameTime);
    connect(&nextFrame, &QTimer::timeout, this, qOverload<>(&QWidget::update));
    clock.start();
}

void Spinner::setSpinning(bool spins) {
    if (spins == isSpinning()) return;
    if (spins)
        nextFrame.start();
    else
        nextFrame.stop();
    update();
}

QSize Spinner::sizeHint() const {
    return {side, side};
}

void Spinner::paintEvent(QPaintEvent*) {
    if (!isSpinning()) return;
    const qreal turned = 360.0 * static_cast<qreal>(clock.elapsed() % revolution) / revolution;
    QColor color = palette().color(QPalette::WindowText);
    color.setAlphaF(0.7F);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color, 2, Qt::SolidLine, Qt::RoundCap));
    painter.drawArc(QRectF(rect()).adjusted(2, 2, -2, -2), static_cast<int>(-turned * 16),
                    270 * 16); // three quarters of a ring
}

} // namespace tessaril
