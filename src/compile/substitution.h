#pragma once

#include "model/style_container.h"

namespace tessaril {

// The two ways of plain CSS. Both need `userVariables`, write each section's `compiledcode` and
// clear `compSections`.

/// Replaces "/*[[name]]*/" by the variable's text and, for colours, "/*[[name-rgb]]*/" by "R,G,B"
/// (whole numbers, 0 to 255 for colours of any display); the latter stays where the colour can't be
/// read. A style whose values blow its code up beyond all use is left as it is, with a line in the
/// log.
void compilePlaceholders(styleContainer& style);

/// Puts a :root rule that declares the variables as custom properties before each section's code.
/// Leaves a style that this makes too large as it is, too.
void compileCustomProperties(styleContainer& style);

} // namespace tessaril
