#pragma once

#include <array>
#include <string>

namespace tessaril {

/// Writes the bytes of `c`, at most four, to `to`, and gives the place behind them. A surrogate is
/// written as any other character of three bytes, which is no valid UTF-8.
inline char* writeUTF8(char32_t c, char* to) {
    const auto put = [&to](char32_t byte) { *to++ = static_cast<char>(byte); };
    if (c < 0x80) {
        put(c);
    } else if (c < 0x800) {
        put(0xC0 | c >> 6);
        put(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        put(0xE0 | c >> 12);
        put(0x80 | (c >> 6 & 0x3F));
        put(0x80 | (c & 0x3F));
    } else {
        put(0xF0 | c >> 18);
        put(0x80 | (c >> 12 & 0x3F));
        put(0x80 | (c >> 6 & 0x3F));
        put(0x80 | (c & 0x3F));
    }
    return to;
}

inline void appendUTF8(std::string& text, char32_t c) {
    std::array<char, 4> bytes{};
    text.append(bytes.data(), writeUTF8(c, bytes.data()));
}

} // namespace tessaril
