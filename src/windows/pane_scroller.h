#pragma once

#include <QScrollArea>

namespace tessaril {

/// Shows a pane whole where there is room, and lets it be scrolled where there is not. The wheel
/// scrolls; it changes a menu or a number only while that has the focus.
class PaneScroller : public QScrollArea {
public:
    /// Takes `pane`.
    explicit PaneScroller(QWidget* pane);

    QSize sizeHint() const override;

protected:
    bool eventFilter(QObject* object, QEvent* event) override;
};

} // namespace tessaril
