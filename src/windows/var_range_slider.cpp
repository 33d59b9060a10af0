#include "windows/var_range_slider.h"

#include <QSignalBlocker>

#include <algorithm>
#include <cmath>

namespace tessaril {

namespace {

/// More than there are places for the handle.
constexpr double mostPositions = 10000;
/// Where the scale has no steps.
constexpr double freePositions = 1000;

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
    setTickInterval(1);
    setTickPosition(drawsTicks ? TicksBelow : NoTicks);
}

void VarRangeSlider::showValue(double value) {
    const QSignalBlocker blocker(this);
    setValue(static_cast<int>(std::lround(scale.partOf(value) * maximum())));
}

} // namespace tessaril
