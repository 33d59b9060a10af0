#include "windows/row_slide.h"

#include <QPainter>
#include <QStyle>

#include <algorithm>
#include <utility>

namespace tessaril {

namespace {

constexpr int longest = 150; // milliseconds

} // namespace

RowSlide::RowSlide(QWidget& tableRows) : QWidget(&tableRows), rows(tableRows) {
    hide();
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    progress.setStartValue(0.0);
    progress.setEndValue(1.0);
    progress.setEasingCurve(QEasingCurve::OutCubic);
    connect(&progress, &QVariantAnimation::valueChanged, this, qOverload<>(&QWidget::update));
    connect(&progress, &QVariantAnimation::finished, this, &RowSlide::stop);
}

void RowSlide::stop() {
    progress.stop();
    hide();
    place = {};
    leaving = {};
    staying = {};
}

void RowSlide::slideIn(const QRect& row) {
    stop();
    start(row);
}

void RowSlide::keep(const QRect& row) {
    stop();
    place = row;
    if (rows.isVisible() && rows.rect().intersects(row)) leaving = rows.grab(row);
}

void RowSlide::slideOut() {
    if (!leaving.isNull()) start(std::exchange(place, {}));
}

void RowSlide::start(const QRect& from) {
    const int duration =
        std::min(longest, style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this));
    if (duration <= 0 || !rows.isVisible() || !rows.rect().intersects(from)) return stop();
    place = from;
    const QRect moving(0, from.top(), rows.width(), rows.height() - from.top());
    staying = rows.grab(moving);
    setGeometry(moving);
    progress.setDuration(duration);
    progress.start();
    raise();
    show();
}

void RowSlide::paintEvent(QPaintEvent*) {
    const double come = progress.currentValue().toDouble();
    const double height = place.height();
    QPainter painter(this);
    painter.fillRect(rect(), rows.palette().base());
    painter.drawPixmap(QPointF(0, leaving.isNull() ? height * (come - 1) : height * (1 - come)),
                       staying);
    painter.setOpacity(1 - come);
    painter.drawPixmap(QPointF(place.left(), -height * come), leaving);
}

} // namespace tessaril
