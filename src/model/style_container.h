#pragma once

#include "model/user_variable.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The values of one style. Every field is persisted under its own name; see database_json.h.
namespace tessaril {

/// Seconds since 2001-01-01 00:00:00 UTC, with fraction.
using date = double;

date now();

/// A moment in UTC to the second, as part of a file name: "2026-11-22T201500Z".
std::string utcTimestamp(std::chrono::sys_seconds moment);
/// Of this moment.
std::string utcTimestamp();

/// One block of code and the pages it applies to; with four empty lists, every page.
struct styleSection {
    std::vector<std::string> urls;        ///< "URL is": exact addresses
    std::vector<std::string> urlPrefixes; ///< "URL starts with"
    std::vector<std::string> domains;     ///< "Domain"
    std::vector<std::string> regexps;     ///< "RegExp", matched against the address
    std::string code;                     ///< as written: CSS, Less or Stylus
    std::optional<std::string> compiledcode;
    std::optional<std::string> sectionName;

    bool operator==(const styleSection&) const = default;

    /// Whether no rule restricts the section, so that it applies to every page.
    bool appliesEverywhere() const {
        return urls.empty() && urlPrefixes.empty() && domains.empty() && regexps.empty();
    }
};

/// A style's name and code, in the shape of the style-sharing site's own document.
struct styleJSON {
    std::string url;         ///< the style's page on the style-sharing site, else empty
    std::string updateUrl;   ///< the site's update address, else empty
    std::string md5Url;      ///< the site's address of the checksum of the current code, else empty
    std::string originalMd5; ///< checksum of the installed code as the site gave it, else empty
    std::string name;
    std::vector<styleSection> sections;
    std::optional<std::vector<styleSection>> compSections; ///< what a compiler made of them

    bool operator==(const styleJSON&) const = default;
};

/// The identifier that marks a style as not coming from the style-sharing site.
inline constexpr std::int64_t noUserstyleID = -1;

/// Words of `styleContainer::source`.
inline constexpr std::string_view sourceCustom = "custom";
inline constexpr std::string_view sourceUserCSS = "usercss";
inline constexpr std::string_view sourceSite = "usorg";

struct styleContainer {
    std::int64_t uniqueID = 0;
    styleJSON styleData;
    bool isEnabled = true;
    std::string source;
    std::int64_t userstyleID = noUserstyleID;
    std::string version;
    std::string namespace_; ///< "namespace" in the document
    std::string description;
    std::string author;
    std::string homepageURL;
    std::string supportURL;
    std::string license;
    std::string downloadedFrom; ///< address a "usercss" style was installed from, else empty
    std::string preprocessor;   ///< "default", "uso", "less", "stylus", "", or as read from a file
    std::optional<std::vector<std::string>> exclURL;
    std::optional<std::vector<std::string>> exclDomain;
    std::optional<std::vector<std::string>> exclPrefix;
    std::optional<std::vector<std::string>> exclRegExp;
    std::optional<bool> allowIframe;
    std::optional<std::string> updateURL;
    std::optional<std::string> systemTheme; ///< "light", "dark" or "none"
    std::optional<std::vector<userVariable>> userVariables;
    std::optional<date> dateModified;

    bool operator==(const styleContainer&) const = default;
};

/// Whether two records are equal when `compSections` is left out on both sides.
bool equalWithoutCompiled(const styleJSON& a, const styleJSON& b);

/// The same for records that are equal in this way.
std::size_t hashWithoutCompiled(const styleJSON& data);

/// A `styleJSON` as the application itself makes it: the addresses empty, one section without
/// rules that holds `code`.
styleJSON makeStyleJSON(std::string name, std::string code);

/// A new style: enabled, allowed in frames, no variables (an empty list), `dateModified` now, all
/// other texts empty and all other optional fields absent. `uniqueID` must be free in the database.
styleContainer makeStyleContainer(styleJSON styleData, std::string_view source,
                                  std::int64_t userstyleID, std::int64_t uniqueID);

} // namespace tessaril
