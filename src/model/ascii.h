#pragma once

#include <string>

// Characters and bytes of US-ASCII, whatever the locale.
namespace tessaril {

constexpr bool isASCIIDigit(char c) {
    return c >= '0' && c <= '9';
}

constexpr bool isASCIILetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// Appends "%" and the two hexadecimal digits of the byte (RFC 3986).
inline void appendPercentEncoded(std::string& text, char c) {
    constexpr char digits[] = "0123456789ABCDEF";
    const auto byte = static_cast<unsigned char>(c);
    text += {'%', digits[byte >> 4], digits[byte & 15]};
}

} // namespace tessaril
