#pragma once

#include "model/style_container.h"

namespace tessaril {

// The two ways of plain CSS. Both need `userVariables`, write each section's `compiledcode` and
// clear `compSections`.

/// Replaces "/*[[name]]*/" by the variable's text and, for colours, "/*[[name-rgb]]*/" by "R,G,B"
/// (whole numbers of 0 to 255); the latter stays where the colour can't be read.
void compilePlaceholders(styleContainer& style);

/// Puts a :root rule that declares the variables as custom properties before each section's code.
void compileCustomProperties(styleContainer& style);

} // namespace tessaril
