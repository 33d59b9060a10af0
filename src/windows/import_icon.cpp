#include "windows/import_icon.h"

#include <QPainter>
#include <QPainterPath>
#include <QPalette>
#include <QPixmap>

namespace tessaril {

namespace {

constexpr int unit = 24; // the outlines are on a square of 24 by 24

QPainterPath arrowIntoTray() {
    QPainterPath path;
    path.moveTo(12, 4);
    path.lineTo(12, 14.5);
    path.moveTo(7.5, 10.2);
    path.lineTo(12, 14.7);
    path.lineTo(16.5, 10.2);
    path.moveTo(4.5, 15.5);
    path.lineTo(4.5, 19.5);
    path.lineTo(19.5, 19.5);
    path.lineTo(19.5, 15.5);
    return path;
}

QPixmap picture(const QColor& color, int scale) {
    QPixmap pixmap(unit * scale, unit * scale);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(scale, scale);
    painter.setPen(QPen(color, 1.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(arrowIntoTray());
    return pixmap;
}

} // namespace

QIcon importIcon(const QPalette& palette) {
    QIcon icon;
    for (const int scale : {1, 2, 3}) {
        icon.addPixmap(picture(palette.color(QPalette::Active, QPalette::ButtonText), scale));
        icon.addPixmap(picture(palette.color(QPalette::Disabled, QPalette::ButtonText), scale),
                       QIcon::Disabled);
    }
    return icon;
}

} // namespace tessaril
