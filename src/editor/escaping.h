#pragma once

#include <string>
#include <string_view>

namespace tessaril {

/// `text` for between the quotes of a script's string literal. A backslash goes before backslashes
/// and quotes of both kinds; LF, CR and tab become "\n", "\r" and "\t"; U+0085, U+2028 and U+2029,
/// which end lines in some scripts' grammars, become "\u{...}". No other character is escaped.
/// UTF-8 in and out, in one pass.
std::string escapedForScript(std::string_view text);

} // namespace tessaril
