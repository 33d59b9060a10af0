#pragma once

#include "store/style_object.h"

#include <string>
#include <string_view>
#include <vector>

namespace tessaril {

/// Which rows the list shows: those in whose name, author or sites every word occurs that was
/// typed, whatever its case. An address finds the styles of its site.
class StyleFilter {
public:
    /// `text` is UTF-8; blanks separate its words. Gives whether that changes what is shown.
    bool setText(std::string_view text);

    /// Whether anything was typed that a row may lack.
    bool isActive() const { return !words.empty(); }

    bool shows(const styleObject& row) const;

private:
    std::vector<std::u16string> words;
};

/// What a row is searched by: the style's name, author, home page and what its rules name, with the
/// case folded. Backslashes of regular expressions are left out, so that the site in them is found.
std::u16string searchTextOf(const styleContainer& style);

} // namespace tessaril
