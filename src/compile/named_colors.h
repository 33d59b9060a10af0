#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace tessaril {

/// The colour `name` (lower case) as 0xRRGGBB; nothing for any other text. The named colours of CSS
/// Color Module Level 4 in one spelling each: "gray" in all names but "lightgrey".
std::optional<std::uint32_t> namedColorRGB(std::string_view name);

} // namespace tessaril
