#pragma once

#include "model/style_container.h"
#include "platform/alerts.h"
#include "settings/variable_row.h"

#include <cstddef>
#include <memory>
#include <string>

namespace tessaril {

/// The variables of a style's working copy, a row each, and the user's changes to their values. An
/// index that is no row's does nothing. Main thread only.
class VariableTable {
public:
    /// Both outlive it.
    VariableTable(styleContainer& style, Alerts& alerts);

    std::size_t rowCount() const;
    variableRow rowAt(std::size_t row) const;

    void textDidChange(std::size_t row, std::string text);
    /// A colour that has no text leaves the value as it was.
    void colorDidChange(std::size_t row, const colorComponents& color);
    void checkboxToggled(std::size_t row, bool isChecked);
    void dropdownChanged(std::size_t row, std::size_t item);
    /// Of a slider or stepper.
    void valueChanged(std::size_t row, double value);

    /// Asks, and gives every variable its default value; gives whether it did. It may be gone
    /// afterwards, as a question lets its window be closed.
    bool setDefaults();

private:
    void setValue(std::size_t row, std::string value);

    styleContainer& style;
    Alerts& alerts;
    std::shared_ptr<int> alive = std::make_shared<int>();
};

} // namespace tessaril
