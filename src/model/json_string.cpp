#include "model/json_string.h"

#include "model/byte_words.h"
#include "model/utf8.h"

#include <bit>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <optional>

namespace tessaril {

namespace {

/// Four hexadecimal digits.
std::optional<char32_t> codeUnit(std::string_view digits) {
    unsigned value = 0;
    if (digits.size() < 4) return std::nullopt;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + 4, value, 16);
    if (error != std::errc() || end != digits.data() + 4) return std::nullopt;
    return value;
}

/// Reads the escape whose backslash stands at `from`, moves `from` behind it and writes its
/// character; null when it is none.
char* readEscape(const char*& from, const char* end, char* to) {
    if (end - from < 2) return nullptr;
    const char kind = from[1];
    from += 2;
    switch (kind) {
    case '"':
    case '\\':
    case '/':
        *to++ = kind;
        return to;
    case 'b':
        *to++ = '\b';
        return to;
    case 'f':
        *to++ = '\f';
        return to;
    case 'n':
        *to++ = '\n';
        return to;
    case 'r':
        *to++ = '\r';
        return to;
    case 't':
        *to++ = '\t';
        return to;
    case 'u':
        break;
    default:
        return nullptr;
    }

    const auto rest = [&] { return std::string_view(from, static_cast<std::size_t>(end - from)); };
    const auto first = codeUnit(rest());
    if (!first) return nullptr;
    from += 4;
    const bool isHigh = *first >= 0xD800 && *first < 0xDC00;
    const bool isLow = *first >= 0xDC00 && *first < 0xE000;
    if (isLow) return nullptr;
    if (!isHigh) return writeUTF8(*first, to);
    if (!rest().starts_with("\\u")) return nullptr;
    const auto second = codeUnit(rest().substr(2));
    if (!second || *second < 0xDC00 || *second >= 0xE000) return nullptr;
    from += 6;
    return writeUTF8(0x10000 + ((*first - 0xD800) << 10) + (*second - 0xDC00), to);
}

constexpr std::size_t wordSize = sizeof(std::uint64_t);

/// Copies a word whole and gives how many of its bytes stand before a backslash; 0 also near the
/// end, where no whole word is left.
std::size_t copyWord(const char* from, const char* end, char* to) {
    if constexpr (std::endian::native != std::endian::little) return 0;
    if (static_cast<std::size_t>(end - from) < wordSize) return 0;
    std::uint64_t word = 0;
    std::memcpy(&word, from, wordSize);
    std::memcpy(to, &word, wordSize);
    const std::uint64_t backslashes = bytesEqual(word, '\\');
    if (backslashes == 0) return wordSize;
    return static_cast<std::size_t>(std::countr_zero(backslashes)) / 8;
}

} // namespace

bool decodeJSONString(std::string_view token, std::string& out) {
    if (token.size() < 2 || token.front() != '"' || token.back() != '"') return false;
    const char* from = token.data() + 1;
    const char* const end = token.data() + token.size() - 1;
    // No escape is shorter than what it stands for.
    out.resize(token.size());
    char* to = out.data();
    while (from < end) {
        if (const std::size_t plain = copyWord(from, end, to)) {
            from += plain;
            to += plain;
        } else if (*from != '\\') {
            *to++ = *from++;
        } else if (!(to = readEscape(from, end, to))) {
            return false;
        }
    }
    out.resize(static_cast<std::size_t>(to - out.data()));
    return true;
}

} // namespace tessaril
