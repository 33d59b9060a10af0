#pragma once

#include "compile/color_from_string.h"
#include "model/user_variable.h"
#include "settings/value_text.h"

#include <optional>
#include <string>
#include <vector>

namespace tessaril {

/// The control that fits a variable's type.
enum class variableControl { none, field, colorWell, checkbox, menu, slider, stepper };

/// What the row of a variable shows. Only what its control needs is filled in.
struct variableRow {
    variableControl control = variableControl::none;
    std::string displayName; ///< of a check box: its title
    std::string text;        ///< the field's; of a colour, the value itself
    /// Nothing where the value cannot be read: the well keeps what it shows.
    std::optional<colorComponents> color;
    std::optional<bool> isChecked;         ///< nothing: as a new check box
    std::vector<std::string> items;        ///< of the menu
    std::optional<std::size_t> chosenItem; ///< nothing: no item is the value
    valueScale scale;                      ///< of slider and stepper
    double value = 0;                      ///< within the scale
    bool fits = true;                      ///< whether `value` is what is stored
    bool drawsTicks = false;               ///< the slider
    std::string rangeUnits;                ///< behind the value

    bool operator==(const variableRow&) const = default;
};

variableRow variableRowOf(const userVariable& variable);

} // namespace tessaril
