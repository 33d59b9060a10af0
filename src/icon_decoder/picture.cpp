#include "icon_decoder/picture.h"

#include "icon_decoder/svg_guard.h"

#include <QBuffer>
#include <QImageReader>
#include <QPainter>
#include <QSvgRenderer>

#include <algorithm>

namespace tessaril {

namespace {

constexpr int largestEdge = 2048;
constexpr int mostPictures = 64;
constexpr int largestAllocation = 64; // megabytes

bool isSane(const QSize& size) {
    return !size.isEmpty() && size.width() <= largestEdge && size.height() <= largestEdge;
}

/// The smallest that is large enough, else the largest; -1 where none is sane.
int bestPicture(QImageReader& reader, int size) {
    int best = -1;
    int bestEdge = 0;
    for (int i = 0; i < std::clamp(reader.imageCount(), 1, mostPictures); ++i) {
        if (i > 0 && !reader.jumpToImage(i)) break;
        if (!isSane(reader.size())) continue;
        const int edge = std::max(reader.size().width(), reader.size().height());
        const bool isBetter = bestEdge < size ? edge > bestEdge : edge >= size && edge < bestEdge;
        if (!isBetter) continue;
        best = i;
        bestEdge = edge;
    }
    return best;
}

QImage scaledDown(const QImage& image, int size) {
    if (image.width() <= size && image.height() <= size) return image;
    // Extremely long ones keep a pixel of breadth.
    const QSize fitting = image.size().scaled(size, size, Qt::KeepAspectRatio).expandedTo({1, 1});
    return image.scaled(fitting, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

QImage bitmapIn(const QByteArray& bytes, int size) {
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);
    // Formats that are programs have their own way in.
    constexpr const char* formats[] = {"png", "ico", "jpeg", "gif"};
    const bool isKnown =
        std::ranges::any_of(formats, [&](const char* format) { return reader.format() == format; });
    if (!isKnown) return {};
    const int best = bestPicture(reader, size);
    if (best < 0) return {};
    // An animation is read from its start only, where it still stands.
    if (!reader.jumpToImage(best) && best > 0) return {};
    return scaledDown(reader.read(), size);
}

QImage drawingIn(const QByteArray& bytes, int size) {
    if (!isSelfContainedSVG(bytes)) return {};
    QSvgRenderer renderer(bytes);
    if (!renderer.isValid()) return {};
    const QSizeF extent = renderer.viewBoxF().size();
    if (extent.isEmpty()) return {};
    const QSize fitting =
        extent.scaled(size, size, Qt::KeepAspectRatio).toSize().expandedTo({1, 1});
    QImage image(fitting, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    renderer.render(&painter, image.rect());
    return image;
}

} // namespace

QImage pictureIn(const QByteArray& bytes, int size) {
    QImageReader::setAllocationLimit(largestAllocation);
    return bytes.trimmed().startsWith('<') || bytes.startsWith("\xEF\xBB\xBF")
               ? drawingIn(bytes, size)
               : bitmapIn(bytes, size);
}

} // namespace tessaril
