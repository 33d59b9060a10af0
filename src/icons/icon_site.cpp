#include "icons/icon_site.h"

#include <algorithm>
#include <array>

namespace tessaril {

namespace {

constexpr std::size_t mostRules = 30;

constexpr std::array<std::string_view, 3> prefixEndings{".com", ".org", ".net"};

constexpr std::string_view insecure = "http://";
constexpr std::string_view secure = "https://";

std::string joined(std::string_view a, std::string_view b, std::string_view c) {
    return std::string(a).append(b).append(c);
}

std::string ownIcon(std::string_view domain) {
    return joined(secure, domain, "/favicon.ico");
}

/// The prefix as an address of a page. The site is asked as safely as it can be, whichever way the
/// style names it.
std::string pageAddress(std::string_view prefix) {
    if (prefix.starts_with(insecure)) prefix.remove_prefix(insecure.size());
    if (prefix.starts_with(secure)) prefix.remove_prefix(secure.size());
    return joined(secure, prefix, prefix.find('/') == std::string_view::npos ? "/" : "");
}

std::optional<webAddress> publicSite(const std::string& address) {
    auto parsed = parseWebAddress(address);
    if (!parsed || !isPublicSite(*parsed)) return std::nullopt;
    return parsed;
}

} // namespace

std::vector<iconRule> iconRulesOf(const styleContainer& style) {
    std::vector<iconRule> rules;
    for (const styleSection& section : style.styleData.sections) {
        for (const std::string& domain : section.domains)
            if (rules.size() < mostRules) rules.push_back({domain, true});
        for (const std::string& prefix : section.urlPrefixes) {
            const auto endsThePrefix = [&](auto ending) { return prefix.ends_with(ending); };
            if (rules.size() < mostRules && std::ranges::any_of(prefixEndings, endsThePrefix))
                rules.push_back({prefix, false});
        }
    }
    return rules;
}

std::string siteNameOf(const iconRule& rule) {
    return rule.isDomain ? ownIcon(rule.text) : pageAddress(rule.text);
}

std::optional<iconSite> siteOf(const iconRule& rule) {
    const bool isAddress = rule.text.starts_with(secure) || rule.text.starts_with(insecure);
    if (!rule.isDomain && !isAddress) return std::nullopt;
    iconSite site{.name = siteNameOf(rule), .direct = {}, .page = {}};
    auto page = publicSite(rule.isDomain ? joined(secure, rule.text, "/") : site.name);
    if (!page) return std::nullopt;
    site.page = *std::move(page);
    if (!rule.isDomain) return site;

    const std::string www = joined("https://www.", rule.text, "/favicon.ico");
    if (!publicSite(site.name) || !publicSite(www)) return std::nullopt;
    site.direct = {site.name, www};
    return site;
}

} // namespace tessaril
