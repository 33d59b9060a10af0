#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tessaril {

/// One choice of a select-like variable.
struct variableOption {
    std::optional<std::string> name;  ///< identifier of the choice
    std::optional<std::string> label; ///< text shown for it
    std::optional<std::string> value; ///< text substituted when it is chosen

    bool operator==(const variableOption&) const = default;
};

/// Bounds of a "range" or "number" variable.
struct rangeOpts {
    double min = 0;
    double max = 0;
    double step = 0;
    std::optional<std::string> units; ///< shown and written after the value, "px" for example

    bool operator==(const rangeOpts&) const = default;
};

/// One variable that the user can set, as a `@var` line declares it.
struct userVariable {
    /// "text", "color", "checkbox", "select", "dropdown", "image", "range" or "number"
    std::string type;
    std::string name;  ///< identifier used in the code
    std::string label; ///< text shown to the user
    std::string defaultValue;
    std::optional<std::vector<variableOption>> selectOptions;
    std::optional<rangeOpts> rangeOptions;
    /// The user's choice as text: an option's index counted from 0 for select-like variables, "1"
    /// or "0" for a checkbox, a decimal number for a range. Absent: the default applies.
    std::optional<std::string> currentValue;

    bool operator==(const userVariable&) const = default;
};

/// Whether the value is the index of an option.
inline bool isSelectLike(const userVariable& variable) {
    return variable.type == "select" || variable.type == "dropdown" || variable.type == "image";
}

/// Whether the value is a number with bounds.
inline bool isNumeric(const userVariable& variable) {
    return variable.type == "range" || variable.type == "number";
}

} // namespace tessaril
