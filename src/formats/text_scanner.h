#pragma once

#include <cstddef>
#include <string_view>

namespace tessaril {

/// Finds the next place of one needle from positions that only grow. It remembers the last place,
/// so that a whole walk over the text costs one pass however often it asks.
class NextPlace {
public:
    NextPlace(std::string_view searched, std::string_view wanted)
        : text(searched), needle(wanted), place(searched.find(wanted)) {}

    /// The first place at or after `position`; npos when there is none.
    std::size_t from(std::size_t position) {
        if (place < position) place = text.find(needle, position);
        return place;
    }

private:
    std::string_view text;
    std::string_view needle;
    std::size_t place;
};

/// Whether a walk over a text is inside a block comment. Comments do not nest, and "/*/" opens and
/// closes one.
class BlockComment {
public:
    explicit BlockComment(std::string_view walked) : text(walked) {}

    /// To be called at every "/" of the text, in order.
    void passSlash(std::size_t slash) {
        if (slash > 0 && text[slash - 1] == '*') open = false;
        if (slash + 1 < text.size() && text[slash + 1] == '*') open = true;
    }

    bool isOpen() const { return open; }

private:
    std::string_view text;
    bool open = false;
};

} // namespace tessaril
