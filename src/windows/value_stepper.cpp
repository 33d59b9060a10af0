#include "windows/value_stepper.h"

#include "model/text.h"
#include "windows/shown_text.h"

#include <QFontMetrics>
#include <QLineEdit>

#include <algorithm>

namespace tessaril {

namespace {

/// The number as it was typed, with or without the units, with a comma or a point.
std::string withoutUnits(const std::string& text, const std::string& units) {
    std::string_view number = trimmed(text);
    const std::string_view ending = trimmed(units);
    if (!ending.empty() && number.ends_with(ending)) number.remove_suffix(ending.size());
    return replacingAll(trimmed(number), ",", ".");
}

} // namespace

ValueStepper::ValueStepper(QWidget* parent) : QAbstractSpinBox(parent) {
    setAccelerated(true);
    connect(lineEdit(), &QLineEdit::textEdited, this, [this](const QString& text) { typed(text); });
    connect(this, &QAbstractSpinBox::editingFinished, this, [this] { showText(); });
}

void ValueStepper::setScale(const valueScale& newScale, std::string newUnits) {
    scale = newScale;
    units = std::move(newUnits);
    updateGeometry();
}

void ValueStepper::showValue(double newValue, bool isStored) {
    value = newValue;
    isChosen = isStored;
    showText();
}

void ValueStepper::stepBy(int steps) {
    const valueScale stepping{scale.min, scale.max, scale.step > 0 ? scale.step : 1};
    const double stepped = stepping.stepped(value, steps);
    if (stepped == value) return;
    showValue(stepped, true);
    emit valueChosen(value);
}

QAbstractSpinBox::StepEnabled ValueStepper::stepEnabled() const {
    StepEnabled possible = StepNone;
    if (value > scale.min) possible |= StepDownEnabled;
    if (value < scale.max) possible |= StepUpEnabled;
    return possible;
}

/// Counts at once, so that nothing typed is lost; the text is put in order when it is finished.
void ValueStepper::typed(const QString& text) {
    const std::string number = withoutUnits(text.toStdString(), units);
    // A value with more decimals than it shows must not lose them.
    const bool isAsShown = number == withoutUnits(valueLabel(shownValue, units), units);
    const auto newValue = isAsShown ? shownValue : parseDouble(number);
    if (!newValue || (isChosen && scale.clamped(*newValue) == value)) return;
    value = scale.clamped(*newValue);
    isChosen = true;
    emit valueChosen(value);
}

void ValueStepper::showText() {
    shownValue = value;
    const QString text = qtText(valueLabel(value, units));
    if (lineEdit()->text() != text) lineEdit()->setText(text);
    update(); // the arrows
}

QSize ValueStepper::sizeHint() const {
    constexpr int mostCharacters = 12;
    const QString longest = qtText(valueLabel(scale.min, units)).left(mostCharacters) + "00.00";
    const QSize base = QAbstractSpinBox::sizeHint();
    const int arrows = 40;
    return {std::max(base.width(), fontMetrics().horizontalAdvance(longest) + arrows),
            base.height()};
}

} // namespace tessaril
