#include "windows/row_motion.h"

#include "store/style_object.h"
#include "windows/shown_text.h"
#include "windows/spinner.h"

#include <QWidget>

namespace tessaril {

namespace {

constexpr qint64 fadeIn = 1000; // milliseconds

} // namespace

RowMotion::RowMotion(QWidget& rows) {
    clock.start();
    nextFrame.setSingleShot(true);
    nextFrame.setInterval(spinnerFrameTime);
    QObject::connect(&nextFrame, &QTimer::timeout, &rows, qOverload<>(&QWidget::update));
}

void RowMotion::noteStatus(qint64 id, const QString& status) {
    if (status == qtText(updateStatuses::checking))
        checking.insert(id);
    else if (checking.remove(id) && status == qtText(updateStatuses::updated))
        fading[id].start();
}

qint64 RowMotion::spinnerTime() {
    nextFrame.start();
    return clock.elapsed();
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
