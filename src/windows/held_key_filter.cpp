#include "windows/held_key_filter.h"

#include <QKeyEvent>

namespace tessaril {

namespace {

constexpr quint64 shortestPause = 20; // milliseconds between a release and a press

} // namespace

HeldKeyFilter::HeldKeyFilter(QObject* widget) : QObject(widget) {
    watch(widget);
}

void HeldKeyFilter::watch(QObject* widget) {
    widget->installEventFilter(this);
}

/// Where repeats come as releases and new presses, those follow each other at once, as no finger
/// does.
bool HeldKeyFilter::isHeld(const QKeyEvent& event) {
    if (event.isAutoRepeat()) return true;
    if (event.type() == QEvent::KeyRelease) {
        lastKey = event.key();
        lastRelease = event.timestamp();
        return false;
    }
    return event.key() == lastKey && lastRelease != 0 &&
           event.timestamp() - lastRelease < shortestPause;
}

bool HeldKeyFilter::eventFilter(QObject*, QEvent* event) {
    const bool isKey = event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease ||
                       event->type() == QEvent::ShortcutOverride;
    if (!isKey || !isHeld(static_cast<QKeyEvent&>(*event))) return false;
    event->accept(); // or it would count as a shortcut
    return true;
}

} // namespace tessaril
