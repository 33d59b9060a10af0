#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace tessaril {

/// Finds the places of some bytes, none of them 0, from positions that only grow. It looks at 64
/// bytes at once: style texts hold a brace or line break every few dozen bytes, too close for a
/// call per place.
template <char... wanted>
class BytePlaces {
public:
    explicit BytePlaces(std::string_view searched) : text(searched) {}

    /// The first place at or after `position`; npos when there is none.
    std::size_t from(std::size_t position) {
        if (position >= blockEnd) load(position);
        std::uint64_t places = blockPlaces >> (position % blockSize) << (position % blockSize);
        while (places == 0) {
            if (blockEnd >= text.size()) return std::string_view::npos;
            load(blockEnd);
            places = blockPlaces;
        }
        return blockEnd - blockSize + static_cast<std::size_t>(std::countr_zero(places));
    }

private:
    static constexpr std::size_t blockSize = 64;

    std::string_view text;
    std::size_t blockEnd = 0;      ///< a multiple of the block size, past the text's end at last
    std::uint64_t blockPlaces = 0; ///< bit i: whether byte i of the block is wanted

    void load(std::size_t position) {
        const std::size_t start = position - position % blockSize;
        blockEnd = start + blockSize;
        if (blockEnd <= text.size()) {
            blockPlaces = placesIn(text.data() + start);
            return;
        }
        char padded[blockSize] = {};
        if (start < text.size()) std::memcpy(padded, text.data() + start, text.size() - start);
        blockPlaces = placesIn(padded);
    }

    static std::uint64_t placesIn(const char* block) {
        std::uint64_t places = 0;
#ifdef __SSE2__
        for (std::size_t at = 0; at < blockSize; at += sizeof(__m128i)) {
            const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(block + at));
            __m128i found = _mm_setzero_si128();
            ((found = _mm_or_si128(found, _mm_cmpeq_epi8(bytes, _mm_set1_epi8(wanted)))), ...);
            places |= static_cast<std::uint64_t>(_mm_movemask_epi8(found)) << at;
        }
#else
        for (std::size_t at = 0; at < blockSize; ++at)
            places |= static_cast<std::uint64_t>(((block[at] == wanted) || ...)) << at;
#endif
        return places;
    }
};

} // namespace tessaril
