#pragma once

#include "editor/text_range.h"

#include <string>
#include <string_view>
#include <vector>

// Places in a text that is kept as UTF-8 and counted in UTF-16 units, as the editor page counts.
namespace tessaril {

/// The length of UTF-8 text in UTF-16 units.
std::size_t utf16Length(std::string_view text);

/// A place as the editor counts it: the column in UTF-16 units from the row's beginning.
struct textPlace {
    std::size_t row = 0;
    std::size_t column = 0;

    bool operator==(const textPlace&) const = default;
};

struct textPlaces {
    textPlace start;
    textPlace end;
};

/// The rows and columns of a range of `text`. A line includes its terminator; a place belongs to
/// the first line whose end, the offset past its terminator, is at or after it. So the place just
/// past a terminator is the last column of the line before. Places beyond the text move to its end.
///
/// Terminators are LF, CR, and CR LF as one: the editor splits its text at these and at no other
/// character, and rows must count as it counts them.
textPlaces placesOf(std::string_view text, const textRange& range);

/// `range` within a text of `length` units; what lies beyond the text's end is cut off.
textRange clamped(const textRange& range, std::size_t length);

/// A range and what is to stand in its place.
struct textReplacement {
    textRange range;
    std::string_view text;
};

/// `text` with all replacements made, in one pass. They are in ascending order and don't overlap;
/// what lies beyond the text's end is cut off. A range's end within a character of two units moves
/// to the character's start, so the result is UTF-8 again.
std::string replacing(std::string_view text, const std::vector<textReplacement>& replacements);

/// The part of `text` in `range`, with the same treatment of its ends.
std::string_view textIn(std::string_view text, const textRange& range);

} // namespace tessaril
