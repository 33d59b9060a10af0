#include "windows/filter_field.h"

#include <QKeyEvent>

namespace tessaril {

FilterField::FilterField(QWidget* parent) : QLineEdit(parent) {
    setObjectName("filterField");
    setPlaceholderText("Filter by name, site or author");
    setAccessibleName("Filter");
    setClearButtonEnabled(true);
}

void FilterField::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Escape:
        clear();
        emit left();
        return;
    case Qt::Key_Down:
    case Qt::Key_PageDown:
    case Qt::Key_Return:
    case Qt::Key_Enter:
        emit left();
        return;
    default:
        QLineEdit::keyPressEvent(event);
    }
}

} // namespace tessaril
