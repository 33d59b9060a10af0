#pragma once

#include <QPixmap>
#include <QString>

#include <cstddef>

class QWidget;

namespace tessaril {

/// What hangs on the pointer while styles are dragged: the name of one, the number of several. In
/// the colours of `list`.
QPixmap dragPicture(const QWidget& list, const QString& name, std::size_t count);

} // namespace tessaril
