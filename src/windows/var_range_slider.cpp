#include "windows/var_range_slider.h"

#include <QPainter>
#include <QSignalBlocker>
#include <QStyleOptionSlider>

#include <algorithm>
#include <cmath>

namespace tessaril {

namespace {

constexpr double mostPositions = 1e9; // that a slider can tell apart
/// Where the scale has no steps.
constexpr double freePositions = 1000;
constexpr int tickLength = 4;

} // namespace

VarRangeSlider::VarRangeSlider(QWidget* parent) : QSlider(Qt::Horizontal, parent) {
    connect(this, &QSlider::valueChanged, this, [this](int position) {
        emit valueChosen(scale.at(static_cast<double>(position) / std::max(1, maximum())));
    });
}

void VarRangeSlider::setScale(const valueScale& newScale, bool drawsTicks) {
    scale = newScale;
    const double positions = scale.tickCount().value_or(freePositions + 1) - 1;
    const QSignalBlocker blocker(this);
    setRange(0, static_cast<int>(std::min(positions, mostPositions)));
    setPageStep(std::max(1, maximum() / 10));
    hasTicks = drawsTicks;
    update();
}

void VarRangeSlider::showValue(double value) {
    const QSignalBlocker blocker(this);
    setValue(static_cast<int>(std::lround(scale.partOf(value) * maximum())));
}

/// With marks of its own: those of the style move the groove, and are hardly seen on dark ground.
void VarRangeSlider::paintEvent(QPaintEvent* event) {
    QSlider::paintEvent(event);
    if (!hasTicks) return;
    QStyleOptionSlider option;
    initStyleOption(&option);
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::PlaceholderText));
    const int handle = style()->pixelMetric(QStyle::PM_SliderLength, &option, this);
    for (int tick = 0; tick <= maximum(); ++tick) {
        const int x =
            handle / 2 + QStyle::sliderPositionFromValue(0, maximum(), tick, width() - handle);
        painter.drawLine(x, height() - tickLength, x, height() - 1);
    }
}

QSize VarRangeSlider::sizeHint() const {
    // The same with marks and without, so that all stand in line.
    return QSlider::sizeHint() + QSize(0, 2 * (tickLength + 1));
}

} // namespace tessaril
