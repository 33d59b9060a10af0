#pragma once

#include "model/style_container.h"

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace tessaril {

/// What a rule's text is compared with, in the order of menus and as the menus say it: the page's
/// host, its whole address, the beginning of its address, or a regular expression for it.
inline constexpr std::string_view domainRule = "Domain";
inline constexpr std::string_view urlRule = "URL is";
inline constexpr std::string_view urlPrefixRule = "URL starts with";
inline constexpr std::string_view regExpRule = "RegExp";
inline constexpr std::array<std::string_view, 4> ruleTypes = {domainRule, urlRule, urlPrefixRule,
                                                              regExpRule};

/// The list of the section that the menu's position stands for; any other than the menu's stands
/// for the first.
inline std::vector<std::string>& rulesAt(styleSection& section, int position) {
    switch (position) {
    case 1:
        return section.urls;
    case 2:
        return section.urlPrefixes;
    case 3:
        return section.regexps;
    default:
        return section.domains;
    }
}

} // namespace tessaril
