#pragma once

#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>

#include <chrono>

class QPainter;

namespace tessaril {

inline constexpr std::chrono::milliseconds spinnerFrameTime{33};

/// A ring that turns in the middle of `place`.
/// - side: in logical pixels
/// - time: for how long it has turned, in milliseconds
void paintSpinner(QPainter& painter, const QRect& place, int side, qint64 time,
                  const QColor& color);

/// Turns while something goes on, and leaves its place empty otherwise.
class Spinner : public QWidget {
public:
    explicit Spinner(QWidget* parent = nullptr);

    void setSpinning(bool on);
    bool isSpinning() const { return spins; }

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void runFrames();

    bool spins = false;
    QTimer nextFrame; ///< only while it is on the screen
    QElapsedTimer clock;
};

} // namespace tessaril
