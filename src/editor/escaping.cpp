#include "editor/escaping.h"

namespace tessaril {

namespace {

/// A character that is escaped, as it stands at the beginning of a text.
struct escapedCharacter {
    std::size_t length = 0; ///< in bytes; 0 when the text doesn't begin with one
    std::string_view escape;
};

escapedCharacter escapeAt(std::string_view text) {
    switch (text.front()) {
    case '\\':
        return {1, "\\\\"};
    case '"':
        return {1, "\\\""};
    case '\'':
        return {1, "\\'"};
    case '\n':
        return {1, "\\n"};
    case '\r':
        return {1, "\\r"};
    case '\t':
        return {1, "\\t"};
    case '\xC2':
        if (text.starts_with("\xC2\x85")) return {2, "\\u{0085}"};
        return {};
    case '\xE2':
        if (text.starts_with("\xE2\x80\xA8")) return {3, "\\u{2028}"};
        if (text.starts_with("\xE2\x80\xA9")) return {3, "\\u{2029}"};
        return {};
    default:
        return {};
    }
}

} // namespace

// No escape holds a character that is itself escaped except the backslash, which only its own
// replacement looks for: one pass gives what one replacement after the other gives.
std::string escapedForScript(std::string_view text) {
    std::string result;
    result.reserve(text.size() + text.size() / 8);
    std::size_t done = 0;
    for (std::size_t at = 0; at < text.size();) {
        const escapedCharacter found = escapeAt(text.substr(at));
        if (found.length == 0) {
            ++at;
            continue;
        }
        result.append(text, done, at - done).append(found.escape);
        at += found.length;
        done = at;
    }
    return result.append(text, done);
}

} // namespace tessaril
