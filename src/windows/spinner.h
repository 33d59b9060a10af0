#pragma once

#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>

namespace tessaril {

/// Turns while something goes on, and leaves its place empty otherwise.
class Spinner : public QWidget {
public:
    explicit Spinner(QWidget* parent = nullptr);

    void setSpinning(bool spins);
    bool isSpinning() const { return nextFrame.isActive(); }

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QTimer nextFrame;
    QElapsedTimer clock;
};

} // namespace tessaril
