#include "windows/spinner.h"

#include <QPainter>

namespace tessaril {

namespace {

constexpr qint64 revolution = 900; // milliseconds
constexpr int side = 18;           // logical pixels

} // namespace

void paintSpinner(QPainter& painter, const QRect& place, int size, qint64 time,
                  const QColor& color) {
    const qreal turned = 360.0 * static_cast<qreal>(time % revolution) / revolution;
    QRectF ring(0, 0, size - 4, size - 4);
    ring.moveCenter(QRectF(place).center());
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color, 2, Qt::SolidLine, Qt::RoundCap));
    painter.drawArc(ring, static_cast<int>(-turned * 16), 270 * 16); // three quarters
    painter.restore();
}

Spinner::Spinner(QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    nextFrame.setInterval(spinnerFrameTime);
    connect(&nextFrame, &QTimer::timeout, this, qOverload<>(&QWidget::update));
    clock.start();
}

void Spinner::setSpinning(bool on) {
    if (on == spins) return;
    spins = on;
    runFrames();
    update();
}

void Spinner::runFrames() {
    if (spins && isVisible())
        nextFrame.start();
    else
        nextFrame.stop();
}

void Spinner::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    runFrames();
}

void Spinner::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    nextFrame.stop(); // the window may be minimised, and the widget visible nonetheless
}

QSize Spinner::sizeHint() const {
    return {side, side};
}

void Spinner::paintEvent(QPaintEvent*) {
    if (!isSpinning()) return;
    QColor color = palette().color(QPalette::WindowText);
    color.setAlphaF(0.7F);
    QPainter painter(this);
    paintSpinner(painter, rect(), side, clock.elapsed(), color);
}

} // namespace tessaril
