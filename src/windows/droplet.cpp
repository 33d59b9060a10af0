#include "windows/droplet.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace tessaril {

namespace {

// The outlines on a square of 24 by 24.
constexpr qreal unit = 24;

QPainterPath dropOutline() {
    QPainterPath drop;
    drop.moveTo(12, 2);
    drop.cubicTo(14.5, 6, 19, 10.2, 19, 15);
    drop.cubicTo(19, 19, 15.9, 22, 12, 22);
    drop.cubicTo(8.1, 22, 5, 19, 5, 15);
    drop.cubicTo(5, 10.2, 9.5, 6, 12, 2);
    return drop;
}

QPainterPath gleam() {
    QPainterPath line;
    line.moveTo(8, 15);
    line.cubicTo(8, 17.2, 9.6, 19, 11.8, 19.2);
    return line;
}

} // namespace

void paintDroplet(QPainter& painter, const QRectF& place) {
    const qreal scale = std::min(place.width(), place.height()) / unit;
    // Blues that stand out against light and dark backgrounds alike.
    QLinearGradient water(0, 2, 0, 22);
    water.setColorAt(0, QColor(0x6c, 0xb8, 0xf5));
    water.setColorAt(1, QColor(0x2b, 0x76, 0xd2));

    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(place.center());
    painter.scale(scale, scale);
    painter.translate(-unit / 2, -unit / 2);
    painter.fillPath(dropOutline(), water);
    painter.strokePath(gleam(), QPen(QColor(255, 255, 255, 200), 1.4, Qt::SolidLine, Qt::RoundCap));
    painter.restore();
}

QPixmap dropletPixmap(int size, qreal devicePixelRatio) {
    QPixmap picture(QSize(size, size) * devicePixelRatio);
    picture.setDevicePixelRatio(devicePixelRatio);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    paintDroplet(painter, QRectF(0, 0, size, size));
    return picture;
}

} // namespace tessaril
