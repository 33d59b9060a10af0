#pragma once

#include <QByteArray>
#include <QImage>

namespace tessaril {

/// The picture in the bytes, in the format that they have: of several the best for an icon of
/// `size` pixels, at most that large itself. A null image where there is none, or where it says
/// that it is larger than any icon.
QImage pictureIn(const QByteArray& bytes, int size);

} // namespace tessaril
