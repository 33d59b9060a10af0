#pragma once

#include "model/rule_types.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace tessaril {

/// What a rule of each type looks like, in the order of `ruleTypes`.
inline constexpr std::array<const char*, ruleTypes.size()> ruleExamples = {
    "example.com", "https://example.com/page", "https://example.com/",
    R"(https://(www\.)?example\.com/.*)"};

/// Empty for a type that is none of `ruleTypes`.
inline const char* ruleExample(std::string_view type) {
    const auto found = std::ranges::find(ruleTypes, type);
    return found == ruleTypes.end() ? "" : ruleExamples[std::size_t(found - ruleTypes.begin())];
}

} // namespace tessaril
