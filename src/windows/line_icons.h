#pragma once

#include <QIcon>

class QColor;
class QPainter;
class QPalette;
class QRectF;

namespace tessaril {

/// The pictures of commands, drawn in lines.
enum class lineIcon {
    create,
    import,
    paste,
    web,
    update,
    properties,
    remove,
    duplicate,
    share,
    rules,
    details,
    beautify,
};

/// Draws the picture into `place`, which is square.
void paintLineIcon(QPainter& painter, const QRectF& place, lineIcon which, const QColor& color);

/// The picture in the palette's button text colour.
QIcon lineIconFor(lineIcon which, const QPalette& palette);

} // namespace tessaril
