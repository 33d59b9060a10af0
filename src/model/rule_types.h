#pragma once

#include <array>
#include <string_view>

namespace tessaril {

/// What a rule's text is compared with, in the order of menus and as the menus say it: the page's
/// host, its whole address, the beginning of its address, or a regular expression for it.
inline constexpr std::string_view domainRule = "Domain";
inline constexpr std::string_view urlRule = "URL is";
inline constexpr std::string_view urlPrefixRule = "URL starts with";
inline constexpr std::string_view regExpRule = "RegExp";
inline constexpr std::array<std::string_view, 4> ruleTypes = {domainRule, urlRule, urlPrefixRule,
                                                              regExpRule};

} // namespace tessaril
