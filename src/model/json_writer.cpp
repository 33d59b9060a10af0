#include "model/json_writer.h"

#include "model/text.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>

namespace tessaril {

namespace {

constexpr std::uint64_t repeated(unsigned char byte) {
    return 0x0101010101010101U * byte;
}

/// A word whose byte has its high bit set where `word`'s byte is zero, exact up to the first one.
constexpr std::uint64_t zeroBytes(std::uint64_t word) {
    return (word - repeated(0x01)) & ~word & repeated(0x80);
}

/// The same where a byte must be escaped: a quote, a backslash or a control character.
constexpr std::uint64_t escapedBytes(std::uint64_t word) {
    const std::uint64_t control = (word - repeated(0x20)) & ~word & repeated(0x80);
    return control | zeroBytes(word ^ repeated('"')) | zeroBytes(word ^ repeated('\\'));
}

constexpr bool mustEscape(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == '"' || c == '\\';
}

/// The length of the run from `at` that needs no escaping.
std::size_t plainRun(std::string_view text, std::size_t at) {
    const std::size_t start = at;
    if constexpr (std::endian::native == std::endian::little) {
        for (; at + sizeof(std::uint64_t) <= text.size(); at += sizeof(std::uint64_t)) {
            std::uint64_t word = 0;
            std::memcpy(&word, text.data() + at, sizeof word);
            if (const std::uint64_t found = escapedBytes(word))
                return at - start + static_cast<std::size_t>(std::countr_zero(found)) / 8;
        }
    }
    while (at < text.size() && !mustEscape(text[at]))
        ++at;
    return at - start;
}

void appendEscaped(std::string& out, char c) {
    switch (c) {
    case '"':
        out.append("\\\"");
        return;
    case '\\':
        out.append("\\\\");
        return;
    case '\n':
        out.append("\\n");
        return;
    case '\t':
        out.append("\\t");
        return;
    case '\r':
        out.append("\\r");
        return;
    default:
        break;
    }
    constexpr std::string_view digits = "0123456789abcdef";
    const auto code = static_cast<unsigned char>(c);
    out.append("\\u00").append(1, digits[code >> 4]).append(1, digits[code & 0xF]);
}

} // namespace

void JsonWriter::string(std::string_view text) {
    if (!isValidUTF8(text)) representable = false;
    out.push_back('"');
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t run = plainRun(text, at);
        out.append(text, at, run);
        at += run;
        if (at < text.size()) appendEscaped(out, text[at++]);
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
    std::array<char, 32> digits{};
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    const std::string_view text(digits.data(),
                                static_cast<std::size_t>(result.ptr - digits.data()));
    out.append(text);
    // A number without a fraction is an integer to many readers, which lose the sign of zero and
    // refuse more than 64 bits.
    const bool looksLikeInteger = text.find_first_of(".e") == std::string_view::npos;
    if (looksLikeInteger && (text == "-0" || text.size() > 15)) out.append(".0");
}

std::size_t jsonStringSize(std::string_view text) {
    std::size_t escapes = 0;
    for (const char c : text)
        escapes += mustEscape(c) ? 1 : 0;
    return text.size() + escapes + 2;
}

} // namespace tessaril
