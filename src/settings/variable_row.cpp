#include "settings/variable_row.h"

#include "model/text.h"

#include <algorithm>

namespace tessaril {

namespace {

constexpr double mostDrawnTicks = 30;
constexpr const char* missingLabel = "ERROR";

void fillMenu(variableRow& row, const userVariable& variable) {
    if (!variable.selectOptions) return;
    for (const variableOption& option : *variable.selectOptions) {
        if (std::to_string(row.items.size()) == variable.currentValue)
            row.chosenItem = row.items.size();
        row.items.push_back(option.label.value_or(missingLabel));
    }
}

void fillNumber(variableRow& row, const userVariable& variable) {
    row.scale = scaleOf(variable.rangeOptions);
    const auto value = parseDouble(variable.currentValue.value_or(""));
    row.value = row.scale.clamped(value.value_or(row.scale.min));
    row.fits = value == row.value;
    if (variable.rangeOptions) row.rangeUnits = variable.rangeOptions->units.value_or("");
    const auto ticks = row.scale.tickCount();
    row.drawsTicks = row.control == variableControl::slider && ticks && *ticks <= mostDrawnTicks;
}

variableControl controlFor(const userVariable& variable) {
    if (isSelectLike(variable)) return variableControl::menu;
    if (variable.type == "range") return variableControl::slider;
    if (variable.type == "number") return variableControl::stepper;
    if (variable.type == "text") return variableControl::field;
    if (variable.type == "color") return variableControl::colorWell;
    if (variable.type == "checkbox") return variableControl::checkbox;
    return variableControl::none;
}

} // namespace

variableRow variableRowOf(const userVariable& variable) {
    variableRow row{.control = controlFor(variable), .displayName = variable.label};
    const std::string value = variable.currentValue.value_or("");
    switch (row.control) {
    case variableControl::field:
        row.text = value;
        break;
    case variableControl::colorWell:
        row.text = value;
        row.color = colorFromString(value);
        break;
    case variableControl::checkbox:
        if (value == "0" || value == "1") row.isChecked = value == "1";
        break;
    case variableControl::menu:
        fillMenu(row, variable);
        break;
    case variableControl::slider:
    case variableControl::stepper:
        fillNumber(row, variable);
        break;
    case variableControl::none:
        break;
    }
    return row;
}

} // namespace tessaril
