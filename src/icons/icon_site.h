#pragma once

#include "model/style_container.h"
#include "web/web_address.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessaril {

/// A rule of a style that leads to a site. Its text is the style's.
struct iconRule {
    std::string_view text;
    bool isDomain = false; ///< or a URL prefix

    bool operator==(const iconRule&) const = default;
};

/// Where to look for a site's icon.
struct iconSite {
    std::string name;                ///< what stands for the site: the first address asked for
    std::vector<std::string> direct; ///< addresses of icons, tried in this order
    webAddress page;                 ///< whose preferred icon is looked for after them
};

/// The rules that icons are looked for by, section by section: all domains, then those URL prefixes
/// that end in ".com", ".org" or ".net". No more of them than any honest style has: a style must
/// not make everyone who installs it call at thousands of hosts.
std::vector<iconRule> iconRulesOf(const styleContainer& style);

/// The name of the rule's site, if the rule leads to one; cheap.
std::string siteNameOf(const iconRule& rule);

/// Nothing where the rule leads to no public site.
std::optional<iconSite> siteOf(const iconRule& rule);

} // namespace tessaril
