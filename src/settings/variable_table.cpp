#include "settings/variable_table.h"

#include <utility>

namespace tessaril {

namespace {

constexpr const char* resetQuestion =
    "Are you sure you want to set all variables for this style to their default values?";
constexpr const char* resetWarning = "This action cannot be undone.";
constexpr int resetYes = 1;

} // namespace

VariableTable::VariableTable(styleContainer& ownStyle, Alerts& ownAlerts)
    : style(ownStyle), alerts(ownAlerts) {}

std::size_t VariableTable::rowCount() const {
    return style.userVariables ? style.userVariables->size() : 0;
}

variableRow VariableTable::rowAt(std::size_t row) const {
    if (row >= rowCount()) return {.displayName = "ERROR"};
    return variableRowOf((*style.userVariables)[row]);
}

void VariableTable::setValue(std::size_t row, std::string value) {
    if (row < rowCount()) (*style.userVariables)[row].currentValue = std::move(value);
}

void VariableTable::textDidChange(std::size_t row, std::string text) {
    setValue(row, std::move(text));
}

void VariableTable::colorDidChange(std::size_t row, const colorComponents& color) {
    if (auto text = colorToText(color)) setValue(row, std::move(*text));
}

void VariableTable::checkboxToggled(std::size_t row, bool isChecked) {
    setValue(row, isChecked ? "1" : "0");
}

void VariableTable::dropdownChanged(std::size_t row, std::size_t item) {
    setValue(row, std::to_string(item));
}

void VariableTable::valueChanged(std::size_t row, double value) {
    setValue(row, doubleText(value));
}

bool VariableTable::setDefaults() {
    const std::weak_ptr watched(alive);
    const auto answer = alerts.ask({.title = resetQuestion,
                                    .text = resetWarning,
                                    .buttons = {"No", "Yes"},
                                    .destructiveButton = resetYes});
    if (watched.expired() || answer.button != resetYes) return false;
    if (!style.userVariables) return true;
    for (userVariable& variable : *style.userVariables)
        variable.currentValue = variable.defaultValue;
    return true;
}

} // namespace tessaril
