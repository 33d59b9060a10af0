#pragma once

#include "platform/icon_loader.h"

#include <cstddef>

// What passes between the application and the program that decodes pictures for it.
namespace tessaril {

/// The size of the answer: four bytes a pixel, red, green, blue and alpha, not premultiplied.
inline constexpr std::size_t iconPixelBytes = std::size_t{siteIconSize} * siteIconSize * 4;

} // namespace tessaril
