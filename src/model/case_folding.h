#pragma once

#include <string>
#include <string_view>

namespace tessaril {

/// UTF-8 text as UTF-16.
std::u16string utf16Text(std::string_view text);

/// `text` with every character replaced by its simple case folding (status C and S in the Unicode
/// Character Database's CaseFolding.txt), which makes texts equal that differ in case only. Keeps
/// every character's place.
void foldCase(std::u16string& text);

} // namespace tessaril
