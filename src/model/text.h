#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Text tools for the whole core. All text is UTF-8; a "character" is a Unicode scalar value.
// Cutting never splits a character, so valid UTF-8 stays valid. Views returned point into the
// argument.
namespace tessaril {

/// Whether `c` is white space or a line break: general category Zs, U+0009 to U+000D, U+0085,
/// U+2028 and U+2029 of the Unicode Character Database.
bool isWhitespaceOrNewline(char32_t c);

/// `text` without white space and line breaks at both ends.
std::string_view trimmed(std::string_view text);

/// `text` without its first `count` characters; empty when it has no more than that.
std::string_view dropFirst(std::string_view text, std::size_t count = 1);

/// `text` without its last `count` characters; empty when it has no more than that.
std::string_view dropLast(std::string_view text, std::size_t count = 1);

/// The pieces between the separators, empty ones included; one piece when there is no separator.
/// `separator` must not be empty.
std::vector<std::string_view> split(std::string_view text, std::string_view separator);

/// `text` with every occurrence of `from` replaced, left to right without overlap. `from` must not
/// be empty.
std::string replacingAll(std::string_view text, std::string_view from, std::string_view to);

/// `text` with A to Z in lower case and everything else as it is.
std::string lowercasedASCII(std::string_view text);

/// What the hexadecimal digit `c` stands for; nothing for any other character.
std::optional<std::uint32_t> hexDigit(char c);

bool contains(std::string_view text, std::string_view part);

/// The bytes that `text` stands for, with every "%" and its two hexadecimal digits replaced (RFC
/// 3986); nothing when a "%" has no such digits.
std::optional<std::string> percentDecoded(std::string_view text);

/// A whole text of decimal digits with an optional sign; nothing for any other text or a number
/// outside 64 bits.
std::optional<std::int64_t> parseInteger(std::string_view text);

/// The runs of decimal digits in `text` as numbers, in order; those outside 64 bits are left out.
std::vector<std::int64_t> numbersIn(std::string_view text);

/// A whole text that is a finite decimal floating-point number of the C locale, with an optional
/// sign and exponent; nothing for any other text.
std::optional<double> parseDouble(std::string_view text);

/// The shortest text that `parseDouble` reads back to the same, finite `value`.
std::string shortestNumber(double value);

bool isValidUTF8(std::string_view bytes);

/// `bytes` as UTF-8: every byte that belongs to no character becomes U+FFFD.
std::string validUTF8(std::string_view bytes);

/// A stranger's text, fit for a line of the log: whole characters without control characters, and
/// not too many.
std::string forLog(std::string_view text);

/// `bytes` as UTF-8 text without a leading byte-order mark; nothing when they are not UTF-8.
std::optional<std::string> textFromUTF8(std::string bytes);

} // namespace tessaril
