#pragma once

#include <optional>
#include <string_view>

namespace tessaril {

/// Red, green and blue from 0 to 1 (beyond when the text says so), alpha as written.
struct colorComponents {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;

    bool operator==(const colorComponents&) const = default;
};

/// The colour that `text` spells as "#rgb", "#rrggbb", "rgb(r,g,b)", "rgba(r,g,b,a)" or by name,
/// white space around it and any ";" aside; nothing for any other text. Numbers of rgb() and rgba()
/// run from 0 to 255, alpha from 0 to 1; percentages are not understood, and "rgb" and "rgba" must
/// be in lower case. Anything after "#" is read: "#zz" is black.
std::optional<colorComponents> colorFromString(std::string_view text);

} // namespace tessaril
