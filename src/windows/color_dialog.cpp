#include "windows/color_dialog.h"

#include "settings/value_text.h"
#include "windows/color_button.h"
#include "windows/dialog_buttons.h"
#include "windows/held_key_filter.h"
#include "windows/shown_text.h"

#include <QColorDialog>
#include <QFormLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSlider>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <limits>

namespace tessaril {

namespace {

constexpr int wholeOpacity = 100; // percent
constexpr int groupGap = 6;

QString textOf(const colorComponents& color) {
    return qtText(colorToText(color).value_or(""));
}

} // namespace

ColorDialog::ColorDialog(const colorComponents& color, QWidget* parent)
    : QDialog(parent)
    , chosen(color)
    , picker(new QColorDialog)
    , textField(new QLineEdit)
    , opacitySlider(new QSlider(Qt::Horizontal))
    , opacityLabel(new QLabel) {
    setObjectName("colorDialog");
    setWindowModality(Qt::WindowModal);
    setAttribute(Qt::WA_DeleteOnClose);

    picker->setWindowFlags(Qt::Widget);
    // Its own opacity is lost when a colour is picked from the screen.
    picker->setOptions(QColorDialog::DontUseNativeDialog | QColorDialog::NoButtons);
    connect(picker, &QColorDialog::currentColorChanged, this,
            [this](const QColor& current) { picked(current); });
    picker->installEventFilter(this);
    for (QPushButton* button : picker->findChildren<QPushButton*>())
        button->setAutoDefault(false); // Return is for this dialog's own

    textField->setObjectName("colorText");
    textField->setMaxLength(std::numeric_limits<int>::max());
    textField->setPlaceholderText("tomato, #ff6347, rgba(255,99,71,0.5)");
    connect(textField, &QLineEdit::textEdited, this, [this](const QString& text) { typed(text); });

    opacitySlider->setObjectName("opacitySlider");
    opacitySlider->setAccessibleName("Opacity");
    opacitySlider->setRange(0, wholeOpacity);
    opacitySlider->setPageStep(wholeOpacity / 10);
    opacityLabel->setMinimumWidth(fontMetrics().horizontalAdvance("100%"));
    opacityLabel->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    connect(opacitySlider, &QSlider::valueChanged, this, [this](int percent) {
        chosen.alpha = percent / double(wholeOpacity);
        choose();
    });

    auto* form = new QFormLayout;
    form->addRow("As &text:", textField);
    auto* opacityParts = new QHBoxLayout;
    opacityParts->addWidget(opacitySlider, 1);
    opacityParts->addWidget(opacityLabel);
    auto* opacityTitle = new QLabel("Opacit&y:");
    opacityTitle->setBuddy(opacitySlider);
    opacityParts->insertWidget(0, opacityTitle);
    auto* parts = new QVBoxLayout(this);
    parts->addLayout(form);
    parts->addWidget(picker);
    parts->addLayout(opacityParts);
    parts->addSpacing(groupGap);
    // With the keys that the picker leaves.
    chooseButton = addDialogButtons(*this, *parts, "chooseButton", "Ch&oose", "Ca&ncel");
    new HeldKeyFilter(this);
    showColor();
    textField->setText(textOf(color));
    textField->setFocus();
    textField->selectAll();
}

void ColorDialog::picked(const QColor& current) {
    // As 255ths, as the picker's own numbers show them.
    chosen.red = current.red() / 255.;
    chosen.green = current.green() / 255.;
    chosen.blue = current.blue() / 255.;
    choose();
}

void ColorDialog::choose() {
    changed = true;
    textField->setText(textOf(chosen));
    chooseButton->setEnabled(true);
    showOpacity();
}

/// Without the controls' answer, which would round what was typed.
void ColorDialog::showColor() {
    const QSignalBlocker blocker(picker);
    QColor opaque = qtColor(chosen);
    opaque.setAlpha(255);
    picker->setCurrentColor(opaque);
    showOpacity();
}

void ColorDialog::showOpacity() {
    const QSignalBlocker blocker(opacitySlider);
    const int percent =
        static_cast<int>(std::lround(std::clamp(chosen.alpha, 0., 1.) * wholeOpacity));
    opacitySlider->setValue(percent);
    opacityLabel->setText(QString::number(percent) + '%');
}

void ColorDialog::typed(const QString& text) {
    const auto color = colorFromTyped(text.toStdString());
    chooseButton->setEnabled(color.has_value());
    if (!color) return;
    chosen = *color;
    changed = true;
    showColor();
}

/// A dialog within a dialog would take Return and Escape for itself and hide.
bool ColorDialog::eventFilter(QObject* object, QEvent* event) {
    if (event->type() != QEvent::KeyPress) return QDialog::eventFilter(object, event);
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (key != Qt::Key_Return && key != Qt::Key_Enter && key != Qt::Key_Escape) return false;
    event->ignore(); // and so on to this dialog
    return true;
}

} // namespace tessaril
