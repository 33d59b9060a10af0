#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tessaril::bench {

/// 200 KB of code: the piece over and over.
inline std::string sampleCode(std::string_view piece) {
    constexpr std::size_t size = 200'000;
    std::string code;
    while (code.size() < size)
        code += piece;
    return code;
}

} // namespace tessaril::bench
