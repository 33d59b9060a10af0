#include "windows/line_icons.h"

#include <QPainter>
#include <QPainterPath>
#include <QPalette>
#include <QPixmap>

#include <initializer_list>

namespace tessaril {

namespace {

constexpr int unit = 24; // the outlines are on a square of 24 by 24
constexpr qreal stroke = 1.8;

void addLine(QPainterPath& path, std::initializer_list<QPointF> points) {
    const QPointF* point = points.begin();
    path.moveTo(*point);
    while (++point != points.end())
        path.lineTo(*point);
}

QPainterPath plus() {
    QPainterPath path;
    addLine(path, {{12, 5}, {12, 19}});
    addLine(path, {{5, 12}, {19, 12}});
    return path;
}

QPainterPath arrowIntoTray() {
    QPainterPath path;
    addLine(path, {{12, 4}, {12, 14.5}});
    addLine(path, {{7.5, 10.2}, {12, 14.7}, {16.5, 10.2}});
    addLine(path, {{4.5, 15.5}, {4.5, 19.5}, {19.5, 19.5}, {19.5, 15.5}});
    return path;
}

QPainterPath clipboard() {
    QPainterPath path;
    addLine(path, {{9, 5.5}, {5.5, 5.5}, {5.5, 20}, {18.5, 20}, {18.5, 5.5}, {15, 5.5}});
    path.addRoundedRect(QRectF(9, 3.5, 6, 4), 1, 1);
    addLine(path, {{9, 12}, {15, 12}});
    addLine(path, {{9, 15.5}, {13, 15.5}});
    return path;
}

QPainterPath globe() {
    QPainterPath path;
    path.addEllipse(QPointF(12, 12), 8, 8);
    path.addEllipse(QPointF(12, 12), 3.4, 8);
    addLine(path, {{4.6, 9.2}, {19.4, 9.2}});
    addLine(path, {{4.6, 14.8}, {19.4, 14.8}});
    return path;
}

QPainterPath circlingArrow() {
    QPainterPath path;
    const QRectF circle(5, 5, 14, 14);
    path.arcMoveTo(circle, 20);
    path.arcTo(circle, 20, 300);
    addLine(path, {{18.9, 4.6}, {18.9, 9.6}, {13.9, 9.6}});
    return path;
}

QPainterPath sliders() {
    QPainterPath path;
    addLine(path, {{4.5, 8}, {11.6, 8}});
    addLine(path, {{16.4, 8}, {19.5, 8}});
    path.addEllipse(QPointF(14, 8), 2.4, 2.4);
    addLine(path, {{4.5, 16}, {7.6, 16}});
    addLine(path, {{12.4, 16}, {19.5, 16}});
    path.addEllipse(QPointF(10, 16), 2.4, 2.4);
    return path;
}

QPainterPath minus() {
    QPainterPath path;
    addLine(path, {{5, 12}, {19, 12}});
    return path;
}

QPainterPath twoSheets() {
    QPainterPath path;
    path.addRoundedRect(QRectF(8.5, 8.5, 11, 11), 2, 2);
    addLine(path, {{15.5, 4.5}, {6.5, 4.5}, {4.5, 6.5}, {4.5, 15.5}});
    return path;
}

QPainterPath arrowOutOfTray() {
    QPainterPath path;
    addLine(path, {{12, 15}, {12, 4.5}});
    addLine(path, {{7.5, 8.8}, {12, 4.3}, {16.5, 8.8}});
    addLine(path, {{4.5, 13.5}, {4.5, 19.5}, {19.5, 19.5}, {19.5, 13.5}});
    return path;
}

QPainterPath funnel() {
    QPainterPath path;
    addLine(path, {{4.5, 5.5}, {19.5, 5.5}, {14, 12.2}, {14, 17}, {10, 19.5}, {10, 12.2}});
    path.closeSubpath();
    return path;
}

QPainterPath letterI() {
    QPainterPath path;
    path.addEllipse(QPointF(12, 12), 8, 8);
    addLine(path, {{12, 11.5}, {12, 16}});
    addLine(path, {{12, 8.2}, {12, 8.3}});
    return path;
}

/// A star whose four sides bend inwards.
void addStar(QPainterPath& path, const QPointF& middle, qreal size) {
    const QPointF corners[] = {middle + QPointF(0, -size), middle + QPointF(size, 0),
                               middle + QPointF(0, size), middle + QPointF(-size, 0)};
    path.moveTo(corners[3]);
    for (const QPointF& corner : corners)
        path.quadTo(middle, corner);
    path.closeSubpath();
}

QPainterPath stars() {
    QPainterPath path;
    addStar(path, {10, 13.5}, 6.5);
    addStar(path, {18, 6}, 3);
    return path;
}

QPainterPath outlineOf(lineIcon which) {
    switch (which) {
    case lineIcon::create:
        return plus();
    case lineIcon::import:
        return arrowIntoTray();
    case lineIcon::paste:
        return clipboard();
    case lineIcon::web:
        return globe();
    case lineIcon::update:
        return circlingArrow();
    case lineIcon::properties:
        return sliders();
    case lineIcon::remove:
        return minus();
    case lineIcon::duplicate:
        return twoSheets();
    case lineIcon::share:
        return arrowOutOfTray();
    case lineIcon::rules:
        return funnel();
    case lineIcon::details:
        return letterI();
    case lineIcon::beautify:
        return stars();
    }
    return {};
}

QPixmap picture(lineIcon which, const QColor& color, int scale) {
    QPixmap pixmap(unit * scale, unit * scale);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    paintLineIcon(painter, pixmap.rect(), which, color);
    return pixmap;
}

} // namespace

void paintLineIcon(QPainter& painter, const QRectF& place, lineIcon which, const QColor& color) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(place.topLeft());
    painter.scale(place.width() / unit, place.height() / unit);
    painter.setPen(QPen(color, stroke, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(outlineOf(which));
    painter.restore();
}

QIcon lineIconFor(lineIcon which, const QPalette& palette) {
    QIcon icon;
    for (const int scale : {1, 2, 3}) {
        for (const auto& [group, mode] : {std::pair(QPalette::Active, QIcon::Normal),
                                          std::pair(QPalette::Disabled, QIcon::Disabled)})
            icon.addPixmap(picture(which, palette.color(group, QPalette::ButtonText), scale), mode);
    }
    return icon;
}

} // namespace tessaril
