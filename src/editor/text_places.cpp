#include "editor/text_places.h"

#include <algorithm>

namespace tessaril {

namespace {

/// How many UTF-16 units a character has that this byte of it stands for: none for its later ones.
std::size_t unitsOf(char byte) {
    const auto value = static_cast<unsigned char>(byte);
    if ((value & 0xC0) == 0x80) return 0;
    return value >= 0xF0 ? 2 : 1;
}

/// Finds byte offsets for ascending UTF-16 offsets in one pass.
class ByteWalk {
public:
    explicit ByteWalk(std::string_view walkedText) : text(walkedText) {}

    /// The start of the character that the unit `unit` belongs to; the text's end when it has no
    /// such unit.
    std::size_t byteAt(std::size_t unit) {
        while (byte < text.size()) {
            const std::size_t next = units + unitsOf(text[byte]);
            if (next > unit) break;
            units = next;
            ++byte;
            // The bytes that follow belong to the character just counted.
            while (byte < text.size() && unitsOf(text[byte]) == 0)
                ++byte;
        }
        return byte;
    }

private:
    std::string_view text;
    std::size_t byte = 0;
    std::size_t units = 0; ///< before `byte`
};

} // namespace

std::size_t utf16Length(std::string_view text) {
    std::size_t units = 0;
    for (const char byte : text)
        units += unitsOf(byte);
    return units;
}

textRange clamped(const textRange& range, std::size_t length) {
    const std::size_t start = std::min(range.location, length);
    return {start, std::min(range.length, length - start)};
}

textPlaces placesOf(std::string_view text, const textRange& range) {
    const textRange inside = clamped(range, utf16Length(text));
    textPlaces found;
    bool hasStart = false;
    std::size_t row = 0;
    std::size_t lineStart = 0; // in units, as all that follows
    std::size_t units = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        units += unitsOf(text[at]);
        const std::string_view rest = text.substr(at + 1);
        const bool endsLine = text[at] == '\n' || (text[at] == '\r' && !rest.starts_with('\n'));
        if (!endsLine && !rest.empty()) continue;

        if (!hasStart && units >= inside.location) {
            found.start = {row, inside.location - lineStart};
            hasStart = true;
        }
        if (units >= inside.end()) {
            found.end = {row, inside.end() - lineStart};
            break;
        }
        ++row;
        lineStart = units;
    }
    return found;
}

std::string replacing(std::string_view text, const std::vector<textReplacement>& replacements) {
    std::string result;
    result.reserve(text.size());
    ByteWalk walk(text);
    std::size_t done = 0;
    for (const textReplacement& replacement : replacements) {
        const std::size_t start = walk.byteAt(replacement.range.location);
        result.append(text, done, start - done).append(replacement.text);
        done = walk.byteAt(replacement.range.end());
    }
    return result.append(text, done);
}

std::string_view textIn(std::string_view text, const textRange& range) {
    ByteWalk walk(text);
    const std::size_t start = walk.byteAt(range.location);
    return text.substr(start, walk.byteAt(range.end()) - start);
}

} // namespace tessaril
