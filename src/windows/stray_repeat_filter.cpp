#include "windows/stray_repeat_filter.h"

#include <QKeyEvent>

namespace tessaril {

StrayRepeatFilter::StrayRepeatFilter(QObject* widget) : QObject(widget) {
    widget->installEventFilter(this);
}

bool StrayRepeatFilter::eventFilter(QObject*, QEvent* event) {
    if (event->type() == QEvent::FocusOut) pressed.clear();
    if (event->type() != QEvent::KeyPress && event->type() != QEvent::KeyRelease) return false;
    const auto& key = static_cast<const QKeyEvent&>(*event);
    if (key.isAutoRepeat()) return !pressed.contains(key.key());
    if (event->type() == QEvent::KeyPress)
        pressed.insert(key.key());
    else
        pressed.erase(key.key());
    return false;
}

} // namespace tessaril
