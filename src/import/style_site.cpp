#include "import/style_site.h"

#include "model/database_json.h"
#include "model/log.h"
#include "model/text.h"
#include "preferences/preference_keys.h"
#include "web/web_address.h"

#include <utility>

namespace tessaril {

namespace {

constexpr std::string_view insecure = "http://";
constexpr std::string_view secure = "https://";
constexpr std::string_view www = "www.";
constexpr std::string_view pages = "/styles/";
constexpr std::string_view documents = "/styles/chrome/";
constexpr std::string_view documentEnding = ".json";

/// The site's own address, with its scheme and without a slash at the end.
std::string siteBase(const Preferences& preferences) {
    std::string address(trimmed(preferences.string(preferenceKeys::siteAddress)));
    while (address.ends_with('/'))
        address.pop_back();
    const std::size_t scheme = address.find("://");
    if (scheme == std::string::npos) return std::string(secure) + address;
    return lowercasedASCII(address.substr(0, scheme)) + address.substr(scheme);
}

std::string_view withoutScheme(std::string_view address) {
    return address.substr(address.find("://") + 3);
}

/// What follows the prefix that all style pages of the site share; nothing for other addresses.
std::optional<std::string_view> pageOf(std::string_view address, std::string_view host) {
    for (const std::string_view scheme : {secure, insecure}) {
        if (!address.starts_with(scheme)) continue;
        std::string_view rest = address.substr(scheme.size());
        if (rest.starts_with(www) && !host.starts_with(www)) rest.remove_prefix(www.size());
        if (!rest.starts_with(host)) return std::nullopt;
        rest.remove_prefix(host.size());
        if (!rest.starts_with(pages)) return std::nullopt;
        return rest.substr(pages.size());
    }
    return std::nullopt;
}

} // namespace

StyleSite::StyleSite(UrlLoader& urlLoader, const Preferences& ownPreferences)
    : loader(urlLoader), preferences(ownPreferences) {}

std::string StyleSite::hostName() const {
    return std::string(withoutScheme(siteBase(preferences)));
}

std::optional<std::int64_t> StyleSite::siteStyleID(std::string_view address) const {
    // Digits of the host's own name are not looked at.
    const auto page = pageOf(address, hostName());
    if (!page) return std::nullopt;
    const auto numbers = numbersIn(*page);
    return numbers.empty() ? std::nullopt : std::optional(numbers.front());
}

std::string StyleSite::siteJSONAddress(std::string_view address) const {
    if (!pageOf(address, hostName())) return {};
    if (address.starts_with(siteBase(preferences) + std::string(documents)))
        return std::string(address);
    const auto id = siteStyleID(address);
    return id ? jsonAddressOf(*id) : std::string();
}

std::string StyleSite::jsonAddressOf(std::int64_t id) const {
    return siteBase(preferences)
        .append(documents)
        .append(std::to_string(id))
        .append(documentEnding);
}

std::variant<styleJSON, ImportErrors> StyleSite::loadStyle(std::string_view address,
                                                           std::stop_token stop) const {
    const auto target = webAddressFrom(siteJSONAddress(address));
    if (!target) return ImportErrors::InvalidURL;
    auto response = loader.load({.address = target->text(), .stop = std::move(stop)});
    if (!response) return ImportErrors::CouldNotConnect;
    auto text = textFromUTF8(std::move(response->body));
    auto style = text ? decodeStyleJSON(std::move(*text)) : std::nullopt;
    if (style) return std::move(*style);
    logLine("Error loading " + forLog(target->text()) + ": not a style of the site");
    return ImportErrors::CouldNotDecode;
}

std::optional<styleJSON> StyleSite::fetchSiteStyleJSON(std::string_view address,
                                                       std::stop_token stop) const {
    auto loaded = loadStyle(address, std::move(stop));
    if (auto* style = std::get_if<styleJSON>(&loaded)) return std::move(*style);
    return std::nullopt;
}

} // namespace tessaril
