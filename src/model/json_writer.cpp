#include "model/json_writer.h"

#include "model/byte_words.h"
#include "model/text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>

namespace tessaril {

namespace {

/// Marks a quote, a backslash or a control character, exact up to the first one from the low end.
constexpr std::uint64_t escapedBytes(std::uint64_t word) {
    return bytesBelow(word, 0x20) | bytesEqual(word, '"') | bytesEqual(word, '\\');
}

constexpr bool mustEscape(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == '"' || c == '\\';
}

/// Writes the escape of `c` and gives the position behind it.
char* writeEscape(char c, char* to) {
    *to++ = '\\';
    switch (c) {
    case '"':
    case '\\':
        *to++ = c;
        return to;
    case '\n':
        *to++ = 'n';
        return to;
    case '\t':
        *to++ = 't';
        return to;
    case '\r':
        *to++ = 'r';
        return to;
    default:
        break;
    }
    constexpr std::string_view digits = "0123456789abcdef";
    const auto code = static_cast<unsigned char>(c);
    for (const char digit : {'u', '0', '0', digits[code >> 4], digits[code & 0xF]})
        *to++ = digit;
    return to;
}

constexpr std::size_t longestEscape = 6;
constexpr std::size_t wordSize = sizeof(std::uint64_t);

/// Writes `text` escaped and gives the position behind it. `to` has room for the longest outcome
/// and one word more.
char* writeEscaped(std::string_view text, char* to) {
    std::size_t at = 0;
    if constexpr (std::endian::native == std::endian::little) {
        // A word is copied whole, and what lies behind its first escape is written over.
        while (at + wordSize <= text.size()) {
            std::uint64_t word = 0;
            std::memcpy(&word, text.data() + at, wordSize);
            std::memcpy(to, &word, wordSize);
            const std::uint64_t found = escapedBytes(word);
            const std::size_t plain =
                found ? static_cast<std::size_t>(std::countr_zero(found)) / 8 : wordSize;
            at += plain;
            to += plain;
            if (found) to = writeEscape(text[at++], to);
        }
    }
    for (; at < text.size(); ++at) {
        if (mustEscape(text[at]))
            to = writeEscape(text[at], to);
        else
            *to++ = text[at];
    }
    return to;
}

} // namespace

void JsonWriter::string(std::string_view text) {
    if (!isValidUTF8(text)) representable = false;
    constexpr std::size_t chunk = 1024;
    std::array<char, chunk * longestEscape + wordSize> escaped;
    out.push_back('"');
    for (; !text.empty(); text.remove_prefix(std::min(chunk, text.size()))) {
        const char* const end = writeEscaped(text.substr(0, chunk), escaped.data());
        out.append(escaped.data(), static_cast<std::size_t>(end - escaped.data()));
    }
    out.push_back('"');
}

void JsonWriter::integer(std::int64_t value) {
    std::array<char, 20> digits{};
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    out.append(digits.data(), result.ptr);
}

void JsonWriter::real(double value) {
    if (!std::isfinite(value)) {
        representable = false;
        return;
    }
    const std::string text = shortestNumber(value);
    out.append(text);
    // A number without a fraction is an integer to many readers, which lose the sign of zero and
    // refuse more than 64 bits.
    const bool looksLikeInteger = text.find_first_of(".e") == std::string::npos;
    if (looksLikeInteger && (text == "-0" || text.size() > 15)) out.append(".0");
}

} // namespace tessaril
