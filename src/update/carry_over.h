#pragma once

#include "model/style_container.h"

namespace tessaril {

/// The new version of a style with the values that the user set on the variables of the old one. A
/// variable is known again by its label or its name and by its type; the choice of a select-like
/// one by the option's value, else its label, else its name. What is not known again keeps the
/// value that it has. Nothing is compiled: the caller compiles.
styleContainer carryOverVariableValues(const styleContainer& oldVersion, styleContainer newVersion);

} // namespace tessaril
