#pragma once

#include "model/style_container.h"

#include <array>
#include <string>
#include <string_view>

namespace tessaril {

/// The preprocessors of the metadata sheet's menu, in order, and how a style stores them.
inline constexpr std::array<std::string_view, 4> metadataPreprocessorTitles = {
    "None (CSS)", "Placeholders (CSS)", "Stylus", "Less"};
inline constexpr std::array<std::string_view, 4> metadataPreprocessors = {"default", "uso",
                                                                          "stylus", "less"};

/// What the metadata sheet shows of a style.
struct metadataFields {
    std::string author;
    std::string version;
    std::string license;
    std::string namespace_;
    std::string description;
    int preprocessor = 0; ///< a position; -1 where the style has another than the menu

    bool operator==(const metadataFields&) const = default;
};

metadataFields metadataOf(const styleContainer& style);

/// Puts the fields into the style, trimmed.
void applyMetadata(const metadataFields& fields, styleContainer& style);

} // namespace tessaril
