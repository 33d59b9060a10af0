#pragma once

#include "model/user_variable.h"

#include <string>

namespace tessaril {

/// Who reads the text of a variable: they differ in what stands for a value that is not there.
enum class variableReader {
    page,     ///< the style's CSS itself: the empty text
    compiler, ///< Less or Stylus: "null"
};

/// The text that `variable` has in the code: the chosen option's value, the value with its units,
/// or the value as stored. A choice that does not exist counts as the default, then as the first
/// option; with units, a value that is no number as the default. Any other missing value is the
/// default to a page and "null" to a compiler.
std::string variableText(const userVariable& variable, variableReader reader);

} // namespace tessaril
