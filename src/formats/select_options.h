#pragma once

#include "model/user_variable.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The option lists of select and dropdown declarations, given without their outer brackets. An
// option name keeps the "*" that marks the default. Time is linear in the text.
namespace tessaril {

/// `name "label" <<<EOT value EOT;` and so on. A block without its three parts is left out; nothing
/// when the text holds no complete block marker.
std::optional<std::vector<variableOption>> readHeredocOptions(std::string_view inside);

/// `"name:label": "value", ...`, the label optional, with double quotes, single quotes or
/// backticks. Nothing when any entry is not of this form.
std::optional<std::vector<variableOption>> readObjectOptions(std::string_view inside);

/// `"name:label", ...`, the label optional. The value of an option is its name.
std::vector<variableOption> readArrayOptions(std::string_view inside);

/// The position, counted from 0, of the first option whose name ends with "*"; else 0.
std::string markedOption(const std::vector<variableOption>& options);

/// `text` without a pair of equal quote characters around it.
std::string_view unquoted(std::string_view text);

} // namespace tessaril
