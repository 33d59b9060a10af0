#include "windows/shadow_frame.h"

#include <QImage>
#include <QPainter>
#include <QVBoxLayout>
#include <qdrawutil.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tessaril {

namespace {

constexpr int radius = 10;
constexpr double opacity = 0.75;

/// How much of a Gaussian blur of an edge is on its inner side, `distance` within the edge. As
/// shadows in CSS are drawn, the blur's standard deviation is half its radius.
double coverage(double distance) {
    constexpr double deviation = radius / 2.0;
    return 0.5 * (1 + std::erf(distance / (deviation * std::numbers::sqrt2)));
}

/// The shadow of a rectangle that is just large enough for its corners not to meet. The blur of a
/// rectangle is the product of its edges' blurs.
QPixmap cornersOfShadow(qreal scale) {
    constexpr int side = 4 * radius + 1;
    const int pixels = static_cast<int>(std::ceil(side * scale));
    QImage image(pixels, pixels, QImage::Format_ARGB32);
    const auto along = [&](int pixel) {
        const double place = (pixel + 0.5) / scale;
        return coverage(std::min(place, side - place) - radius);
    };
    for (int y = 0; y < pixels; ++y)
        for (int x = 0; x < pixels; ++x)
            image.setPixel(x, y,
                           qRgba(0, 0, 0, static_cast<int>(255 * opacity * along(x) * along(y))));
    image.setDevicePixelRatio(scale);
    return QPixmap::fromImage(image);
}

} // namespace

ShadowFrame::ShadowFrame(QWidget* content) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(radius, radius, radius, radius);
    layout->addWidget(content);
}

void ShadowFrame::paintEvent(QPaintEvent*) {
    if (shadow.isNull() || shadow.devicePixelRatio() != devicePixelRatioF())
        shadow = cornersOfShadow(devicePixelRatioF());
    constexpr int corner = 2 * radius;
    QPainter painter(this);
    const int onPixmap = static_cast<int>(corner * shadow.devicePixelRatio());
    qDrawBorderPixmap(&painter, rect(), QMargins(corner, corner, corner, corner), shadow,
                      shadow.rect(), QMargins(onPixmap, onPixmap, onPixmap, onPixmap));
}

} // namespace tessaril
