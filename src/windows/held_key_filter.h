#pragma once

#include <QObject>

class QKeyEvent;

namespace tessaril {

/// Keeps the repeats of a key that is held down from a widget: of one press that closes what is
/// above a dialog the dialog must get nothing, nor may it count for several.
class HeldKeyFilter : public QObject {
public:
    /// For the key events that reach `widget`, whose child it becomes. In a dialog those are the
    /// ones that its controls do not use.
    explicit HeldKeyFilter(QObject* widget);

    /// For another widget besides.
    void watch(QObject* widget);

protected:
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    bool isHeld(const QKeyEvent& event);

    int lastKey = 0; ///< that was released, and when, by the desktop's clock, in milliseconds
    quint64 lastRelease = 0;
};

} // namespace tessaril
