#include "compile/color_from_string.h"

#include "compile/named_colors.h"
#include "model/text.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tessaril {

namespace {

std::string without(std::string_view text, std::string_view part) {
    return replacingAll(text, part, "");
}

colorComponents fromRGB(std::uint32_t rgb) {
    return {((rgb >> 16) & 255) / 255.0, ((rgb >> 8) & 255) / 255.0, (rgb & 255) / 255.0, 1};
}

colorComponents fromHex(std::string_view text) {
    const std::string digits = without(without(text, "#"), ";");
    const bool isShort = !dropFirst(digits, 2).empty() && dropFirst(digits, 3).empty();

    std::uint32_t rgb = 0; // longer numbers keep their last digits: only 24 bits count
    for (const char c : digits) {
        const auto digit = hexDigit(c);
        if (!digit) break;
        rgb = (rgb << 4) | *digit;
        if (isShort) rgb = (rgb << 4) | *digit;
    }
    return fromRGB(rgb);
}

std::optional<colorComponents> fromFunction(std::string_view text, std::string_view opening,
                                            std::size_t count) {
    const std::string list = without(without(without(text, opening), ")"), ";");
    std::vector<double> numbers;
    for (const std::string_view part : split(list, ",")) {
        const auto number = parseDouble(trimmed(part));
        if (!number) return std::nullopt;
        numbers.push_back(*number);
    }
    if (numbers.size() != count) return std::nullopt;
    return colorComponents{numbers[0] / 255, numbers[1] / 255, numbers[2] / 255,
                           count == 4 ? numbers[3] : 1};
}

} // namespace

std::optional<colorComponents> colorFromString(std::string_view text) {
    text = trimmed(text);
    if (text.starts_with("#")) return fromHex(text);
    if (text.starts_with("rgba(")) return fromFunction(text, "rgba(", 4);
    if (text.starts_with("rgb(")) return fromFunction(text, "rgb(", 3);

    const auto rgb = namedColorRGB(lowercasedASCII(without(text, ";")));
    if (!rgb) return std::nullopt;
    return fromRGB(*rgb);
}

} // namespace tessaril
