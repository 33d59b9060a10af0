#pragma once

#include <QPixmap>
#include <QWidget>

namespace tessaril {

/// Shows one widget with a soft black shadow around it. Painted beside the widget, not through it,
/// as a web view does not pass through effects.
class ShadowFrame : public QWidget {
public:
    /// Takes `content` as its child.
    explicit ShadowFrame(QWidget* content);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QPixmap shadow; ///< of a small rectangle, to be stretched between its corners
};

} // namespace tessaril
