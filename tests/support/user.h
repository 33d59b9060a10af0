#pragma once

#include "support/event_loop.h"

#include <QtWidgets>

namespace tessaril::testing {

/// What a user does by the keyboard, where the focus is: keys by names like "Ctrl+S", and texts in
/// single quotes.
/// - slowly: what is posted is done after each
/// - control: where they go instead
inline void press(const QString& words, bool slowly = false, QWidget* control = nullptr) {
    static const QRegularExpression word("'([^']*)'|\\S+");
    for (const QRegularExpressionMatch& each : word.globalMatch(words)) {
        QWidget* target = control ? control : QApplication::focusWidget();
        if (QWidget* popup = QApplication::activePopupWidget())
            target = popup->focusWidget() ? popup->focusWidget() : popup;
        const QKeyCombination key = QKeySequence(each.captured())[0];
        if (each.hasCaptured(1))
            QTest::keyClicks(target, each.captured(1));
        else
            QTest::keyClick(target, key.key(), key.keyboardModifiers());
        if (slowly) QCoreApplication::processEvents();
    }
}

inline void pressIn(QWidget& control, const QString& words) {
    control.setFocus();
    press(words, false, &control);
}

inline void clickOn(QWidget& control) {
    QTest::mouseClick(&control, Qt::LeftButton);
}
inline void clickRow(QAbstractItemView& list, const QModelIndex& row,
                     Qt::KeyboardModifiers with = {}) {
    QTest::mouseClick(list.viewport(), Qt::LeftButton, with, list.visualRect(row).center());
}

template <class Widget>
Widget& partOf(const QWidget& window, const char* name) {
    return *window.findChild<Widget*>(name);
}

} // namespace tessaril::testing
