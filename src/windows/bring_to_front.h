#pragma once

#include <QWidget>

namespace tessaril {

/// Shows the window before all others, out of the minimised state too, and makes it the active one.
inline void bringToFront(QWidget& window) {
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.show();
    window.raise();
    window.activateWindow();
}

} // namespace tessaril
