#pragma once

#include "icons/icon_links.h"
#include "icons/icon_site.h"
#include "platform/icon_decoder.h"
#include "platform/url_loader.h"

#include <functional>
#include <set>

namespace tessaril {

/// What was learned about a site's icon.
struct foundIcon {
    std::shared_ptr<const siteIcon> icon; ///< nothing where none was found
    /// Whether the site was reached, so that finding none means that it has none: it has answered,
    /// if only by refusing, and was asked for all there is to ask for.
    bool wasReached = false;
};

/// Looks for one site's icon on the network, a request at a time. Used by one thread.
class SiteIconFinder {
public:
    /// - mayLoad: asked before every request, and once more at the end
    SiteIconFinder(UrlLoader& loader, IconDecoder& decoder, std::function<bool()> mayLoad);

    /// Tries the site's direct addresses, then its page's preferred icon.
    foundIcon find(const iconSite& site);

private:
    std::shared_ptr<const siteIcon> preferredIcon(const webAddress& page);
    std::shared_ptr<const siteIcon> firstOf(const std::vector<iconLink>& icons);
    std::shared_ptr<const siteIcon> iconAt(const std::string& address);
    std::optional<urlResponse> load(const std::string& address, std::size_t largest, bool cuts);

    UrlLoader& loader;
    IconDecoder& decoder;
    std::function<bool()> mayLoad;
    std::set<std::string> tried; ///< addresses of icons
    bool wasReached = false;
};

} // namespace tessaril
