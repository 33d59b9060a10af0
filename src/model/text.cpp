#include "model/text.h"

#include <simdjson.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace tessaril {

namespace {

bool isContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

/// The character that starts at `at`, and its length in bytes.
struct decodedCharacter {
    char32_t value;
    std::size_t length;
};

decodedCharacter characterAt(std::string_view text, std::size_t at) {
    const auto lead = static_cast<unsigned char>(text[at]);
    if (lead < 0x80) return {lead, 1};

    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    char32_t value = lead & (0x7F >> length);
    std::size_t read = 1;
    for (; read < length && at + read < text.size() && isContinuation(text[at + read]); ++read)
        value = value << 6 | (static_cast<unsigned char>(text[at + read]) & 0x3F);
    return {value, read};
}

std::size_t lastCharacterStart(std::string_view text) {
    std::size_t start = text.size() - 1;
    while (start > 0 && isContinuation(text[start]))
        --start;
    return start;
}

} // namespace

bool isWhitespaceOrNewline(char32_t c) {
    if (c < 0x80) return c == ' ' || (c >= '\t' && c <= '\r');
    return c == 0x85 || c == 0xA0 || c == 0x1680 || (c >= 0x2000 && c <= 0x200A) || c == 0x2028 ||
           c == 0x2029 || c == 0x202F || c == 0x205F || c == 0x3000;
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty()) {
        const auto [value, length] = characterAt(text, 0);
        if (!isWhitespaceOrNewline(value)) break;
        text.remove_prefix(length);
    }
    while (!text.empty()) {
        const std::size_t start = lastCharacterStart(text);
        if (!isWhitespaceOrNewline(characterAt(text, start).value)) break;
        text.remove_suffix(text.size() - start);
    }
    return text;
}

std::string_view dropFirst(std::string_view text, std::size_t count) {
    for (; count > 0 && !text.empty(); --count)
        text.remove_prefix(characterAt(text, 0).length);
    return text;
}

std::string_view dropLast(std::string_view text, std::size_t count) {
    for (; count > 0 && !text.empty(); --count)
        text.remove_suffix(text.size() - lastCharacterStart(text));
    return text;
}

std::vector<std::string_view> split(std::string_view text, std::string_view separator) {
    std::vector<std::string_view> pieces;
    std::size_t from = 0;
    for (std::size_t at = text.find(separator); at != std::string_view::npos;
         at = text.find(separator, from)) {
        pieces.push_back(text.substr(from, at - from));
        from = at + separator.size();
    }
    pieces.push_back(text.substr(from));
    return pieces;
}

std::string replacingAll(std::string_view text, std::string_view from, std::string_view to) {
    std::string result;
    result.reserve(text.size());
    std::size_t done = 0;
    for (std::size_t at = text.find(from); at != std::string_view::npos;
         at = text.find(from, done)) {
        result.append(text, done, at - done).append(to);
        done = at + from.size();
    }
    return result.append(text, done);
}

std::string lowercasedASCII(std::string_view text) {
    std::string result(text);
    for (char& c : result)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return result;
}

std::optional<std::uint32_t> hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return std::nullopt;
}

bool contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

std::optional<std::string> percentDecoded(std::string_view text) {
    std::string result;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '%') {
            result += text[at];
            continue;
        }
        if (text.size() - at < 3) return std::nullopt;
        const auto high = hexDigit(text[at + 1]);
        const auto low = hexDigit(text[at + 2]);
        if (!high || !low) return std::nullopt;
        result += static_cast<char>(*high << 4 | *low);
        at += 2;
    }
    return result;
}

std::optional<std::int64_t> parseInteger(std::string_view text) {
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

std::vector<std::int64_t> numbersIn(std::string_view text) {
    constexpr std::string_view digits = "0123456789";
    std::vector<std::int64_t> numbers;
    for (std::size_t at = text.find_first_of(digits); at != std::string_view::npos;
         at = text.find_first_of(digits, at)) {
        const std::size_t end = std::min(text.find_first_not_of(digits, at), text.size());
        if (const auto number = parseInteger(text.substr(at, end - at))) numbers.push_back(*number);
        at = end;
    }
    return numbers;
}

std::optional<double> parseDouble(std::string_view text) {
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value))
        return std::nullopt;
    return value;
}

std::string shortestNumber(double value) {
    std::array<char, 32> digits{};
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    return {digits.data(), result.ptr};
}

bool isValidUTF8(std::string_view bytes) {
    return simdjson::validate_utf8(bytes.data(), bytes.size());
}

std::string validUTF8(std::string_view bytes) {
    if (isValidUTF8(bytes)) return std::string(bytes);
    constexpr std::size_t longestCharacter = 4;
    std::string text;
    while (!bytes.empty()) {
        std::size_t length = std::min(longestCharacter, bytes.size());
        while (length > 0 &&
               !(characterAt(bytes, 0).length == length && isValidUTF8(bytes.substr(0, length))))
            --length;
        text += length > 0 ? bytes.substr(0, length) : "\uFFFD";
        bytes.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return text;
}

std::string forLog(std::string_view text) {
    constexpr std::size_t longest = 300;
    constexpr std::string_view more = "...";
    const auto isInside = [&](std::size_t at) { return (text[at] & 0xC0) == 0x80; };
    std::size_t end = text.size();
    if (end > longest)
        for (end = longest; end > 0 && isInside(end);)
            --end;
    std::string shown = validUTF8(text.substr(0, end));
    for (std::size_t at = 0; at < shown.size(); ++at) {
        const auto byte = static_cast<unsigned char>(shown[at]);
        if (byte < 0x20 || byte == 0x7F) shown[at] = '?';
        // U+0080 to U+009F
        if (byte == 0xC2 && static_cast<unsigned char>(shown[at + 1]) < 0xA0)
            shown[at] = shown[at + 1] = '?';
    }
    return end < text.size() ? shown.append(more) : shown;
}

std::optional<std::string> textFromUTF8(std::string bytes) {
    if (!isValidUTF8(bytes)) return std::nullopt;
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (bytes.starts_with(byteOrderMark)) bytes.erase(0, byteOrderMark.size());
    return bytes;
}

} // namespace tessaril
