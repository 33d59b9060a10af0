#pragma once

#include <QToolButton>

namespace tessaril {

/// One of two buttons that share a side: its frame goes on behind that side, cut off, and a line
/// parts the two.
class Segment : public QToolButton {
public:
    explicit Segment(Qt::Edge sharedSide) : shared(sharedSide) {}

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    Qt::Edge shared; ///< left or right
};

} // namespace tessaril
