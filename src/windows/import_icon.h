#pragma once

#include <QIcon>

class QPalette;

namespace tessaril {

/// The picture of the import command, an arrow into a tray, in the palette's button text colour.
QIcon importIcon(const QPalette& palette);

} // namespace tessaril
