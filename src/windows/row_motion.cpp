#include "windows/row_motion.h"

#include <QWidget>

#include <chrono>

namespace tessaril {

namespace {

using namespace std::chrono_literals;

constexpr auto frameTime = 33ms;
constexpr qint64 fadeIn = 1000;    // milliseconds
constexpr qint64 revolution = 900; // milliseconds

} // namespace

RowMotion::RowMotion(QWidget& rows) {
    clock.start();
    nextFrame.setSingleShot(true);
    nextFrame.setInterval(frameTime);
    QObject::connect(&nextFrame, &QTimer::timeout, &rows, qOverload<>(&QWidget::update));
}

void RowMotion::noteStatus(qint64 id, const QString& status) {
    if (status == "checking")
        checking.insert(id);
    else if (checking.remove(id) && status == "updated")
        fading[id].start();
}

qreal RowMotion::spinnerAngle() {
    nextFrame.start();
    return 360.0 * static_cast<qreal>(clock.elapsed() % revolution) / revolution;
}

qreal RowMotion::secondLineOpacity(qint64 id) {
    const auto found = fading.constFind(id);
    if (found == fading.constEnd()) return 1;
    const qint64 elapsed = found->elapsed();
    if (elapsed >= fadeIn) {
        fading.erase(found);
        return 1;
    }
    nextFrame.start();
    return static_cast<qreal>(elapsed) / fadeIn;
}

} // namespace tessaril
