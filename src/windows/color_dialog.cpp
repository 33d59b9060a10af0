#include "windows/color_dialog.h"

#include "settings/value_text.h"
#include "windows/color_button.h"
#include "windows/shown_text.h"

#include <QColorDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include <limits>

namespace tessaril {

namespace {

/// The components as 255ths, as the picker's own numbers show them.
colorComponents componentsOf(const QColor& color) {
    return {.red = color.red() / 255.,
            .green = color.green() / 255.,
            .blue = color.blue() / 255.,
            .alpha = alphaFromByte(color.alpha())};
}

QString textOf(const colorComponents& color) {
    return qtText(colorToText(color).value_or(""));
}

} // namespace

ColorDialog::ColorDialog(const colorComponents& color, QWidget* parent)
    : QDialog(parent), chosen(color), picker(new QColorDialog), textField(new QLineEdit) {
    setObjectName("colorDialog");
    setWindowModality(Qt::WindowModal);
    setAttribute(Qt::WA_DeleteOnClose);

    picker->setWindowFlags(Qt::Widget);
    picker->setOptions(QColorDialog::DontUseNativeDialog | QColorDialog::NoButtons |
                       QColorDialog::ShowAlphaChannel);
    picker->setCurrentColor(qtColor(color));
    connect(picker, &QColorDialog::currentColorChanged, this,
            [this](const QColor& current) { picked(current); });
    picker->installEventFilter(this);
    for (QPushButton* button : picker->findChildren<QPushButton*>())
        button->setAutoDefault(false); // Return is for this dialog's own

    textField->setObjectName("colorText");
    textField->setMaxLength(std::numeric_limits<int>::max());
    textField->setText(textOf(color));
    textField->setPlaceholderText("tomato, #ff6347, rgba(255,99,71,0.5)");
    connect(textField, &QLineEdit::textEdited, this, [this](const QString& text) { typed(text); });

    auto* buttons = new QDialogButtonBox;
    chooseButton = buttons->addButton("C&hoose", QDialogButtonBox::AcceptRole);
    QPushButton* cancel = buttons->addButton("Cancel", QDialogButtonBox::RejectRole);
    chooseButton->setObjectName("chooseButton");
    cancel->setAutoDefault(false);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* form = new QFormLayout;
    form->addRow("As &text:", textField);
    auto* parts = new QVBoxLayout(this);
    parts->addLayout(form);
    parts->addWidget(picker);
    parts->addWidget(buttons);
    chooseButton->setDefault(true);
    textField->setFocus();
    textField->selectAll();
}

void ColorDialog::picked(const QColor& current) {
    chosen = componentsOf(current);
    textField->setText(textOf(chosen));
    chooseButton->setEnabled(true);
}

void ColorDialog::typed(const QString& text) {
    const auto color = colorFromTyped(text.toStdString());
    chooseButton->setEnabled(color.has_value());
    if (!color) return;
    chosen = *color;
    const QSignalBlocker blocker(picker); // it would round what was typed
    picker->setCurrentColor(qtColor(*color));
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
