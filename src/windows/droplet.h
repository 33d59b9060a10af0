#pragma once

#include <QPixmap>
#include <QRectF>

class QPainter;

namespace tessaril {

/// Draws "droplet24", the picture of a style that has no icon of its own, into the largest square
/// in the middle of `place`.
void paintDroplet(QPainter& painter, const QRectF& place);

/// The droplet as a picture of `size` by `size` logical pixels.
QPixmap dropletPixmap(int size, qreal devicePixelRatio);

} // namespace tessaril
