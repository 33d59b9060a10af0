#pragma once

#include "model/style_container.h"

#include <string>

namespace tessaril {

/// The style as the text of a UserCSS file, UTF-8 with "\n" for every line break that is added: the
/// metadata block, then the sections as `joinSectionsForPreprocessor` joins them. Time is linear in
/// the text. `parseUserCSS` reads the style back, except for this:
///
/// - Not written: home page and support address, exclusions, the flags, the names of sections, what
///   was compiled, and the user's choices. A variable comes back with its default.
/// - Values are written as they are. Of one over several lines only a description keeps more than
///   the first; a line that begins with a key of the block is read as that key, and the block's
///   closing marker ends it. A name that holds "@namespace" is lost. Blanks at the ends go.
/// - In a variable's declaration tabs and runs of spaces become one space, blanks before its first
///   line break go, "\/" becomes "/", and a brace directly after a quote gets a space before it,
///   which may become part of a label. A name can't hold blanks or quotes, a label no double quote.
///   A number's default can't be empty or hold brackets, commas or quotes, and its units no comma.
/// - "dropdown" and "image" come back as "select", whose default is the option with a mark, else
///   the first one. An option's value comes back with each backslash doubled and a backslash before
///   each double quote; with a backtick, or with a backslash at its end, it may lose the whole
///   variable. So may an option's name or label with a backslash or double quote; a colon cuts it.
/// - A text with a colon comes back in single quotes, one that stood in quotes without them.
/// - An open end of a range whose other bounds are given comes back as 0 or 100.
/// - Sections: see `joinSectionsForPreprocessor`. Code is trimmed; neighbours without rules become
///   one section, and one that is a lone comment joins the next section.
std::string writeUserCSS(const styleContainer& style);

} // namespace tessaril
