#include "icons/site_icon_finder.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <utility>

namespace tessaril {

namespace {

using std::chrono::seconds;

constexpr std::size_t largestPage = 1 << 20; // the head of a longer one is in it
constexpr std::size_t largestManifest = 256 << 10;

/// Of the icons that a page names, so many are tried.
constexpr std::ptrdiff_t mostTried = 3;

} // namespace

SiteIconFinder::SiteIconFinder(UrlLoader& urlLoader, IconDecoder& iconDecoder,
                               std::function<bool()> loadingAllowed)
    : loader(urlLoader), decoder(iconDecoder), mayLoad(std::move(loadingAllowed)) {}

foundIcon SiteIconFinder::find(const iconSite& site) {
    std::shared_ptr<const siteIcon> icon;
    for (const std::string& address : site.direct)
        if (!icon) icon = iconAt(address);
    if (!icon) icon = preferredIcon(site.page);
    // Where it had to stop before the end, a later request may have found one.
    return {std::move(icon), wasReached && mayLoad()};
}

std::shared_ptr<const siteIcon> SiteIconFinder::preferredIcon(const webAddress& page) {
    webAddress shown = page;
    if (const auto response = load(page.text(), largestPage, true)) {
        shown = parseWebAddress(response->finalAddress).value_or(page);
        pageIcons named = iconsOfPage(response->body, shown);
        if (named.manifest && std::ranges::none_of(named.icons, isLargeEnough)) {
            const auto manifest = load(*named.manifest, largestManifest, false);
            const auto own = manifest ? parseWebAddress(manifest->finalAddress) : std::nullopt;
            if (own)
                std::ranges::move(iconsOfManifest(manifest->body, *own),
                                  std::back_inserter(named.icons));
        }
        if (auto icon = firstOf(preferredFirst(std::move(named.icons)))) return icon;
    }
    // The places where browsers look without being told.
    for (const char* place : {"/favicon.ico", "/apple-touch-icon.png"})
        if (const auto address = resolvedAddress(shown, place))
            if (auto icon = iconAt(address->text())) return icon;
    return nullptr;
}

std::shared_ptr<const siteIcon> SiteIconFinder::firstOf(const std::vector<iconLink>& icons) {
    const auto end = icons.begin() + std::min(mostTried, std::ssize(icons));
    for (auto link = icons.begin(); link != end; ++link)
        if (auto icon = iconAt(link->address)) return icon;
    return nullptr;
}

std::shared_ptr<const siteIcon> SiteIconFinder::iconAt(const std::string& address) {
    if (!tried.insert(address).second) return nullptr;
    const auto response = load(address, largestIconBytes, false);
    if (!response) return nullptr;
    auto icon = decoder.decode(response->body);
    return icon ? std::make_shared<const siteIcon>(*std::move(icon)) : nullptr;
}

std::optional<urlResponse> SiteIconFinder::load(const std::string& address, std::size_t largest,
                                                bool cuts) {
    if (!mayLoad()) return std::nullopt;
    auto response = loader.load({.address = address,
                                 .largestBody = largest,
                                 .cutsLongerBody = cuts,
                                 .mostRedirects = 5,
                                 .connectTime = seconds(5),
                                 .stallTime = seconds(5),
                                 .totalTime = seconds(10),
                                 .publicHostsOnly = true,
                                 .givesFailedAnswers = true});
    wasReached = wasReached || response;
    if (response && response->hasFailed) return std::nullopt;
    return response;
}

} // namespace tessaril
