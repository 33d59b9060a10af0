#pragma once

#include "model/user_variable.h"

#include <optional>
#include <string_view>

namespace tessaril {

/// The bounds of a "range", or of a "number", whose declaration gives none.
rangeOpts defaultBounds(std::string_view type);

/// The variable that one `@var` or `@advanced` declaration makes: `declaration` is the text after
/// the keyword, UTF-8, continuation lines joined by "\n": type, name, label and default, separated
/// by spaces. `currentValue` equals `defaultValue`. Nothing when the declaration can't be read; an
/// unknown type word writes one log line. Takes time linear in the text.
std::optional<userVariable> parseVariableDeclaration(std::string_view declaration);

} // namespace tessaril
