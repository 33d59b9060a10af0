#pragma once

#include "web/web_address.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessaril {

/// An icon that a page or its manifest names.
struct iconLink {
    std::string address;
    /// The length of an edge in pixels, the best one where it has several; as a guess where nothing
    /// is said.
    int size = 0;
    bool isScalable = false;

    bool operator==(const iconLink&) const = default;
};

/// What a page says about its icons.
struct pageIcons {
    std::vector<iconLink> icons;
    std::optional<std::string> manifest; ///< the address of the web manifest
};

/// Reads the head of a page (HTML living standard, "Link type icon"); single-coloured masks are no
/// icons. Only addresses of public sites are taken, as everywhere here.
/// - address: the page's own, after redirects
pageIcons iconsOfPage(std::string_view html, const webAddress& address);

/// The icons of a web manifest (W3C Web Application Manifest); none where it is not one.
/// - address: the manifest's own, after redirects
std::vector<iconLink> iconsOfManifest(const std::string& json, const webAddress& address);

/// Whether the icon is at least as large as a row wants it.
bool isLargeEnough(const iconLink& icon);

/// The icons, best first, each address once: the smallest one that is large enough, where none is
/// the largest. What is scalable comes after the pictures that are large enough, as these need no
/// drawing program from a stranger to be run.
std::vector<iconLink> preferredFirst(std::vector<iconLink> icons);

} // namespace tessaril
