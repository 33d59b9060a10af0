#pragma once

#include "compile/color_from_string.h"
#include "model/user_variable.h"

#include <optional>
#include <string>
#include <string_view>

// Numbers and colours of variables as texts, for their storing and for the eye.
namespace tessaril {

/// The shortest decimal text that reads back as the same, finite number, without an exponent, which
/// not every CSS parser takes, and always with a fractional part: "12.0", "0.5".
std::string doubleText(double value);

/// The number as a label shows it, with its units behind it: "12px", "0.25em".
std::string valueLabel(double value, std::string_view units);

/// The colour that a person typed: what `colorFromString` reads, but "#" must be followed by 3, 4,
/// 6 or 8 hexadecimal digits, the last ones for alpha where there are 4 or 8.
std::optional<colorComponents> colorFromTyped(std::string_view text);

/// "rgba(255,128,0,1.0)": the components from 0 to 255, cut to integers, and alpha from 0 to 1.
/// Components beyond sRGB count as its limits; nothing where one is no number.
std::optional<std::string> colorToText(const colorComponents& color);

/// An opacity of so many 255ths as few decimals tell it: 128 is 0.5. The way of CSS Color 4.
double alphaFromByte(int alpha);

/// The values that a slider or stepper can take. A style's text may declare anything, so the limits
/// are made usable: never the wrong way round, finite, a step of 0 for none.
struct valueScale {
    double min = 0;
    double max = 0;
    double step = 0; ///< 0: any value

    /// How many values the steps give; nothing where there are none, or more than can be counted.
    std::optional<double> tickCount() const;
    /// The highest value that the steps reach; without steps `max`.
    double last() const;
    /// The value at a part of the way from `min` to `last`, 0 to 1: where there are ticks, the
    /// nearest one. No longer in decimals than need be.
    double at(double part) const;
    /// How far the value is on that way.
    double partOf(double value) const;
    /// Within the limits.
    double clamped(double value) const;
    /// The value some steps away, within the limits.
    double stepped(double value, double steps) const;

    bool operator==(const valueScale&) const = default;

private:
    double tick(double index) const;
};

valueScale scaleOf(const std::optional<rangeOpts>& options);

} // namespace tessaril
