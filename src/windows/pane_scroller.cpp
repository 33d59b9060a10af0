#include "windows/pane_scroller.h"

#include <QAbstractSpinBox>
#include <QComboBox>
#include <QEvent>

namespace tessaril {

PaneScroller::PaneScroller(QWidget* pane) {
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus); // the pane's controls have it, and are scrolled to
    setWidgetResizable(true);
    setWidget(pane);
    pane->setAutoFillBackground(false);
    viewport()->setAutoFillBackground(false);
    for (auto* control : pane->findChildren<QWidget*>()) {
        if (!qobject_cast<QComboBox*>(control) && !qobject_cast<QAbstractSpinBox*>(control))
            continue;
        control->setFocusPolicy(Qt::StrongFocus);
        control->installEventFilter(this);
    }
}

QSize PaneScroller::sizeHint() const {
    return widget()->sizeHint();
}

bool PaneScroller::eventFilter(QObject* object, QEvent* event) {
    if (event->type() != QEvent::Wheel || static_cast<QWidget*>(object)->hasFocus())
        return QScrollArea::eventFilter(object, event);
    event->ignore();
    return true;
}

} // namespace tessaril
