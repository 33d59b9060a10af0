#pragma once

#include <cstddef>
#include <string_view>

namespace tessaril {

/// Whether a walk over a text is inside a block comment. Comments do not nest, and "/*/" opens and
/// closes one.
class BlockComment {
public:
    explicit BlockComment(std::string_view walked) : text(walked) {}

    /// To be called at every "/" of the text, in order.
    void passSlash(std::size_t slash) {
        const bool closes = slash > 0 && text[slash - 1] == '*';
        const bool opens = slash + 1 < text.size() && text[slash + 1] == '*';
        open = opens || (open && !closes);
    }

    bool isOpen() const { return open; }

private:
    std::string_view text;
    bool open = false;
};

} // namespace tessaril
