#include "windows/drag_picture.h"

#include "windows/droplet.h"

#include <QPainter>
#include <QWidget>

namespace tessaril {

namespace {

constexpr int height = 32;
constexpr int widestText = 220;
constexpr int padding = 8;
constexpr int iconSize = 18;

} // namespace

QPixmap dragPicture(const QWidget& list, const QString& name, std::size_t count) {
    const QFontMetrics metrics(list.font());
    const QString text = count > 1 ? QString("%1 styles").arg(count)
                                   : metrics.elidedText(name, Qt::ElideRight, widestText);
    const int width = 3 * padding + iconSize + metrics.horizontalAdvance(text);
    const qreal scale = list.devicePixelRatioF();
    QPixmap picture((QSizeF(width, height) * scale).toSize());
    picture.setDevicePixelRatio(scale);
    picture.fill(Qt::transparent);

    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setFont(list.font());
    painter.setPen(list.palette().color(QPalette::PlaceholderText));
    painter.setBrush(list.palette().color(QPalette::Base));
    painter.drawRoundedRect(QRectF(0.5, 0.5, width - 1, height - 1), 6, 6);
    paintDroplet(painter, QRectF(padding, (height - iconSize) / 2.0, iconSize, iconSize));
    painter.setPen(list.palette().color(QPalette::Text));
    painter.drawText(QRect(2 * padding + iconSize, 0, width, height), Qt::AlignVCenter, text);
    return picture;
}

} // namespace tessaril
