#include "icons/icon_links.h"

#include "icons/html_links.h"
#include "model/text.h"
#include "platform/icon_loader.h"

#include <simdjson.h>

#include <algorithm>
#include <cstdlib>
#include <set>
#include <tuple>

namespace tessaril {

namespace {

// What pages usually mean where they give no size.
constexpr int unsaidSize = 32;
constexpr int unsaidTouchSize = 180;
constexpr int largestSize = 2048;

constexpr std::size_t mostManifestIcons = 100;

bool has(const std::vector<std::string>& words, std::string_view word) {
    return std::ranges::find(words, word) != words.end();
}

/// Smaller is better.
std::tuple<int, int> rank(const iconLink& icon) {
    if (icon.isScalable) return {1, 0};
    if (isLargeEnough(icon)) return {0, icon.size};
    return {2, -icon.size};
}

/// "16x16 32x32" or "any".
iconLink describedIcon(std::string address, std::string_view sizes, std::string_view type,
                       int usualSize) {
    iconLink icon{.address = std::move(address)};
    const std::string words = lowercasedASCII(sizes);
    for (const std::string_view word : split(words, " ")) {
        icon.isScalable = icon.isScalable || word == "any";
        const auto edge = parseInteger(word.substr(0, word.find('x')));
        if (!edge || *edge < 1 || *edge > largestSize) continue;
        const iconLink sized{.size = static_cast<int>(*edge)};
        if (icon.size == 0 || rank(sized) < rank({.size = icon.size})) icon.size = sized.size;
    }
    if (type == "image/svg+xml" || icon.address.ends_with(".svg")) icon.isScalable = true;
    if (icon.size == 0) icon.size = usualSize;
    return icon;
}

std::optional<std::string> publicAddress(const webAddress& base, std::string_view reference) {
    if (reference.empty()) return std::nullopt;
    const auto address = resolvedAddress(base, reference);
    if (!address || !isPublicSite(*address)) return std::nullopt;
    return address->text();
}

std::string_view textOf(const simdjson::dom::element& object, std::string_view key) {
    std::string_view text;
    if (object[key].get(text) != simdjson::SUCCESS) return {};
    return text;
}

} // namespace

pageIcons iconsOfPage(std::string_view html, const webAddress& address) {
    const htmlHead head = readHead(html);
    const webAddress base = resolvedAddress(address, head.base).value_or(address);
    pageIcons found;
    for (const htmlLink& link : head.links) {
        const bool isTouchIcon =
            has(link.rel, "apple-touch-icon") || has(link.rel, "apple-touch-icon-precomposed");
        const bool isManifest = has(link.rel, "manifest") && !found.manifest;
        if (!isTouchIcon && !isManifest && !has(link.rel, "icon")) continue;
        auto target = publicAddress(base, link.href);
        if (!target) continue;
        if (isManifest)
            found.manifest = std::move(target);
        else
            found.icons.push_back(describedIcon(std::move(*target), link.sizes, link.type,
                                                isTouchIcon ? unsaidTouchSize : unsaidSize));
    }
    return found;
}

std::vector<iconLink> iconsOfManifest(const std::string& json, const webAddress& address) {
    simdjson::dom::parser parser;
    simdjson::dom::element manifest;
    simdjson::dom::array list;
    std::vector<iconLink> found;
    if (parser.parse(json).get(manifest) != simdjson::SUCCESS) return found;
    if (manifest["icons"].get(list) != simdjson::SUCCESS) return found;
    for (const simdjson::dom::element icon : list) {
        if (found.size() == mostManifestIcons) break;
        const std::string purpose = lowercasedASCII(textOf(icon, "purpose"));
        if (contains(purpose, "monochrome") && !contains(purpose, "any")) continue;
        if (auto target = publicAddress(address, textOf(icon, "src")))
            found.push_back(describedIcon(std::move(*target), textOf(icon, "sizes"),
                                          textOf(icon, "type"), unsaidSize));
    }
    return found;
}

bool isLargeEnough(const iconLink& icon) {
    return icon.isScalable || icon.size >= siteIconSize;
}

std::vector<iconLink> preferredFirst(std::vector<iconLink> icons) {
    std::ranges::stable_sort(icons, {}, rank);
    std::set<std::string> seen;
    std::erase_if(icons, [&](const iconLink& icon) { return !seen.insert(icon.address).second; });
    return icons;
}

} // namespace tessaril
