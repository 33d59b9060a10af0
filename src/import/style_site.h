#pragma once

#include "model/style_container.h"
#include "platform/url_loader.h"
#include "preferences/preferences.h"

#include <cstdint>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <variant>

namespace tessaril {

/// Why the site gives no style.
enum class ImportErrors {
    CouldNotConnect, ///< the address cannot be loaded
    CouldNotDecode,  ///< what was loaded is no style of the site
    InvalidURL,      ///< there is no address to load
};

/// The style-sharing site: the addresses of its styles, and the styles. Where the site is, a
/// preference says (`siteAddress`), read at every call. Safe to use from any thread, but what loads
/// waits for the network and must not run on the main thread.
class StyleSite {
public:
    /// Both outlive it.
    StyleSite(UrlLoader& loader, const Preferences& preferences);

    /// The site's host, with its port where it has one.
    std::string hostName() const;

    /// The number of the style whose page has this address; nothing for an address that is no style
    /// page of the site, by http or https, with "www." or without.
    std::optional<std::int64_t> siteStyleID(std::string_view address) const;

    /// Where the site's document of that style is: the address itself when it is one already. Empty
    /// for an address that is no style page of the site or has no number.
    std::string siteJSONAddress(std::string_view address) const;

    /// Where the site's document of a style is.
    std::string jsonAddressOf(std::int64_t id) const;

    /// Loads the document of the style whose page has this address.
    std::variant<styleJSON, ImportErrors> loadStyle(std::string_view address,
                                                    std::stop_token stop = {}) const;

    /// The same; nothing on every failure.
    std::optional<styleJSON> fetchSiteStyleJSON(std::string_view address,
                                                std::stop_token stop = {}) const;

private:
    UrlLoader& loader;
    const Preferences& preferences;
};

} // namespace tessaril
