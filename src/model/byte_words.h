#pragma once

#include <cstdint>

// Searching eight bytes at once in a word of them.
namespace tessaril {

constexpr std::uint64_t repeatedByte(unsigned char byte) {
    return 0x0101010101010101U * byte;
}

/// A word whose high bits mark the bytes of `word` that are below `limit`, which is at most 128;
/// exact up to the first one from the low end.
constexpr std::uint64_t bytesBelow(std::uint64_t word, unsigned char limit) {
    return (word - repeatedByte(limit)) & ~word & repeatedByte(0x80);
}

/// The same for the bytes that are equal to `byte`.
constexpr std::uint64_t bytesEqual(std::uint64_t word, unsigned char byte) {
    return bytesBelow(word ^ repeatedByte(byte), 1);
}

} // namespace tessaril
