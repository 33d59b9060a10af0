#include "windows/variable_table_cell.h"

#include "windows/color_button.h"
#include "windows/elided_check_box.h"
#include "windows/elided_label.h"
#include "windows/shown_text.h"
#include "windows/value_stepper.h"
#include "windows/var_range_slider.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLineEdit>

#include <limits>

namespace tessaril {

namespace {

constexpr int valueWidth = 72;
constexpr int sideMargin = 10;

} // namespace

VariableTableCell::VariableTableCell(VariableTable& variableTable, std::size_t ownRow,
                                     QWidget* parent)
    : QWidget(parent)
    , table(variableTable)
    , row(ownRow)
    , parts(new QHBoxLayout(this))
    , displayName(new ElidedLabel) {
    setObjectName("variableRow");
    parts->setContentsMargins(sideMargin, 0, sideMargin, 0);
    const variableRow shown = table.rowAt(row);
    displayName->showText(shown.displayName);
    displayName->setObjectName("displayName");
    parts->addWidget(displayName);
    addControl(shown);
    if (showValue) showValue(shown);
}

void VariableTableCell::setNameWidth(int width) {
    displayName->setFixedWidth(width);
}

void VariableTableCell::reload() {
    if (showValue) showValue(table.rowAt(row));
}

void VariableTableCell::addControl(const variableRow& shown) {
    switch (shown.control) {
    case variableControl::field:
        return addField();
    case variableControl::colorWell:
        return addColorWell();
    case variableControl::checkbox:
        return addCheckbox(shown);
    case variableControl::menu:
        return addDropdown(shown);
    case variableControl::slider:
        return addSlider(shown);
    case variableControl::stepper:
        return addStepper(shown);
    case variableControl::none:
        return;
    }
}

void VariableTableCell::place(QWidget* control, const char* name, int stretch) {
    valueControl = control;
    control->setFocusPolicy(Qt::StrongFocus); // not by the wheel, which is for the table
    control->setObjectName(name);
    control->setAccessibleName(oneLine(table.rowAt(row).displayName));
    parts->addWidget(control, stretch);
}

ElidedLabel* VariableTableCell::addValueLabel() {
    auto* label = new ElidedLabel;
    label->setObjectName("valueLabel");
    label->setFixedWidth(valueWidth);
    parts->addWidget(label);
    return label;
}

void VariableTableCell::addField() {
    auto* inputField = new QLineEdit;
    inputField->setMaxLength(std::numeric_limits<int>::max());
    place(inputField, "inputField", 1);
    connect(inputField, &QLineEdit::textEdited, this,
            [this](const QString& text) { table.textDidChange(row, text.toStdString()); });
    showValue = [inputField](const variableRow& shown) { inputField->setText(qtText(shown.text)); };
}

void VariableTableCell::addColorWell() {
    auto* colorWell = new ColorButton;
    place(colorWell, "colorWell", 0);
    auto* stored = new ElidedLabel;
    stored->setObjectName("valueLabel");
    parts->addWidget(stored, 1);
    connect(colorWell, &ColorButton::colorChosen, this, [this](const colorComponents& color) {
        table.colorDidChange(row, color);
        reload();
    });
    showValue = [colorWell, stored](const variableRow& shown) {
        if (shown.color) colorWell->showColor(*shown.color);
        colorWell->setStored(shown.color.has_value());
        stored->showText(shown.text);
    };
}

void VariableTableCell::addCheckbox(const variableRow& shown) {
    displayName->hide();
    auto* checkbox = new ElidedCheckBox;
    checkbox->showTitle(shown.displayName);
    place(checkbox, "checkbox", 1);
    const auto showTitle = [checkbox](bool isWeak) {
        QPalette colors;
        if (isWeak) colors.setColor(QPalette::WindowText, colors.color(QPalette::PlaceholderText));
        checkbox->setPalette(colors);
    };
    connect(checkbox, &QCheckBox::clicked, this, [this, showTitle](bool isChecked) {
        table.checkboxToggled(row, isChecked);
        showTitle(!isChecked);
    });
    showValue = [checkbox, showTitle](const variableRow& now) {
        checkbox->setChecked(now.isChecked.value_or(false));
        showTitle(now.isChecked == false);
    };
}

void VariableTableCell::addDropdown(const variableRow& shown) {
    auto* dropdown = new QComboBox;
    dropdown->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    for (const std::string& item : shown.items)
        dropdown->addItem(oneLine(item));
    place(dropdown, "dropdown", 1);
    connect(dropdown, &QComboBox::activated, this, [this](int item) {
        if (item >= 0) table.dropdownChanged(row, static_cast<std::size_t>(item));
    });
    showValue = [dropdown](const variableRow& now) {
        dropdown->setCurrentIndex(now.chosenItem ? static_cast<int>(*now.chosenItem) : -1);
    };
}

void VariableTableCell::addSlider(const variableRow& shown) {
    auto* rangeSlider = new VarRangeSlider;
    rangeSlider->setScale(shown.scale, shown.drawsTicks);
    place(rangeSlider, "rangeSlider", 1);
    ElidedLabel* rangeLabel = addValueLabel();
    const auto showLabel = [rangeLabel, units = shown.rangeUnits](double value) {
        rangeLabel->showText(valueLabel(value, units));
    };
    connect(rangeSlider, &VarRangeSlider::valueChosen, this, [this, showLabel](double value) {
        table.valueChanged(row, value);
        showLabel(value);
    });
    showValue = [rangeSlider, showLabel](const variableRow& now) {
        rangeSlider->showValue(now.value);
        showLabel(now.value);
    };
}

void VariableTableCell::addStepper(const variableRow& shown) {
    auto* stepper = new ValueStepper;
    stepper->setScale(shown.scale, shown.rangeUnits);
    place(stepper, "stepper", 0);
    parts->addStretch(1);
    connect(stepper, &ValueStepper::valueChosen, this,
            [this](double value) { table.valueChanged(row, value); });
    showValue = [stepper](const variableRow& now) { stepper->showValue(now.value, now.fits); };
}

} // namespace tessaril
