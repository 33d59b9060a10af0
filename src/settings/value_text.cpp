#include "settings/value_text.h"

#include "model/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <vector>

namespace tessaril {

namespace {

/// Of a slider or stepper whose style does not say.
constexpr rangeOpts defaultRange{.min = 0, .max = 100, .step = 1, .units = std::nullopt};

std::string inFixedNotation(double value, std::optional<int> decimals) {
    std::array<char, 1100> digits{}; // the smallest double has more than 1,000 decimals
    char* const end = digits.data() + digits.size();
    const auto result =
        decimals ? std::to_chars(digits.data(), end, value, std::chars_format::fixed, *decimals)
                 : std::to_chars(digits.data(), end, value, std::chars_format::fixed);
    return {digits.data(), result.ptr};
}

/// How many decimals tell the number; no more than matter beside 15 digits in all.
int decimalsOf(double value) {
    const std::string text = inFixedNotation(value, std::nullopt);
    const std::size_t point = text.find('.');
    if (point == std::string::npos) return 0;
    return static_cast<int>(std::min<std::size_t>(text.size() - point - 1, 15));
}

/// Without the error that counting in binary fractions brings: 0.30000000000000004 is 0.3.
double rounded(double value, int decimals) {
    return parseDouble(inFixedNotation(value, decimals)).value_or(value);
}

double finite(double value) {
    return std::isfinite(value) ? value : 0;
}

} // namespace

std::string doubleText(double value) {
    std::string text = inFixedNotation(value == 0 ? 0 : value, std::nullopt); // no "-0"
    if (!contains(text, ".")) text += ".0";
    return text;
}

std::string valueLabel(double value, std::string_view units) {
    const int decimals = std::trunc(value) == value ? 0 : 2;
    return inFixedNotation(value == 0 ? 0 : value, decimals).append(units);
}

std::optional<colorComponents> colorFromTyped(std::string_view text) {
    text = trimmed(text);
    if (!text.starts_with("#")) return colorFromString(text);
    const std::string_view digits = text.substr(1);
    const bool isShort = digits.size() == 3 || digits.size() == 4;
    if (!isShort && digits.size() != 6 && digits.size() != 8) return std::nullopt;
    std::vector<double> parts;
    for (std::size_t i = 0; i < digits.size(); i += isShort ? 1 : 2) {
        const auto high = hexDigit(digits[i]);
        const auto low = hexDigit(digits[isShort ? i : i + 1]);
        if (!high || !low) return std::nullopt;
        parts.push_back(*high * 16 + *low);
    }
    return colorComponents{parts[0] / 255, parts[1] / 255, parts[2] / 255,
                           parts.size() == 4 ? alphaFromByte(static_cast<int>(parts[3])) : 1};
}

std::optional<std::string> colorToText(const colorComponents& color) {
    if (!std::isfinite(color.red + color.green + color.blue + color.alpha)) return std::nullopt;
    const auto byteText = [](double component) {
        // What is a 255th up to the last bits must not be cut to the one below.
        constexpr double lastBits = 1e-9;
        return std::to_string(static_cast<int>(std::clamp(component, 0., 1.) * 255 + lastBits));
    };
    return "rgba(" + byteText(color.red) + "," + byteText(color.green) + "," +
           byteText(color.blue) + "," + doubleText(std::clamp(color.alpha, 0., 1.)) + ")";
}

double alphaFromByte(int alpha) {
    for (const int decimals : {2, 3}) {
        const double value = rounded(alpha / 255., decimals);
        if (std::lround(value * 255) == alpha) return value;
    }
    return alpha / 255.;
}

std::optional<double> valueScale::tickCount() const {
    if (step <= 0) return std::nullopt;
    // The steps from 0 to 0.3 by 0.1 are three, though their quotient is a little less.
    constexpr double lastBits = 1e-9, mostAdded = 1e-3;
    const double quotient = max / step - min / step;
    const double steps = quotient + std::min(quotient * lastBits, mostAdded);
    constexpr double mostCounted = 1e15;
    if (!(steps < mostCounted)) return std::nullopt;
    return std::trunc(steps) + 1;
}

double valueScale::last() const {
    const auto ticks = tickCount();
    return ticks ? tick(*ticks - 1) : max;
}

/// Counted from 0.
double valueScale::tick(double index) const {
    return clamped(rounded(min + index * step, std::max(decimalsOf(min), decimalsOf(step))));
}

double valueScale::at(double part) const {
    if (const auto ticks = tickCount()) return tick(std::round(part * (*ticks - 1)));
    const double value = min * (1 - part) + max * part;
    const double thousandth = max / 1000 - min / 1000;
    if (thousandth <= 0) return min;
    const int decimals = static_cast<int>(std::ceil(-std::log10(thousandth)));
    return clamped(rounded(value, std::clamp(decimals, 0, 15)));
}

double valueScale::partOf(double value) const {
    const double half = last() / 2 - min / 2; // the whole may be more than there are numbers
    return half > 0 ? std::clamp((value / 2 - min / 2) / half, 0., 1.) : 0;
}

double valueScale::clamped(double value) const {
    return std::clamp(value, min, max);
}

double valueScale::stepped(double value, double steps) const {
    const int decimals = std::max(decimalsOf(value), decimalsOf(step));
    return clamped(rounded(value + steps * step, decimals));
}

valueScale scaleOf(const std::optional<rangeOpts>& options) {
    const rangeOpts& given = options ? *options : defaultRange;
    const double min = finite(given.min);
    const double step = finite(given.step);
    return {.min = min, .max = std::max(min, finite(given.max)), .step = std::max(step, 0.)};
}

} // namespace tessaril
