#pragma once

#include "platform/url_loader.h"

#include <optional>
#include <string>
#include <string_view>

// Addresses of the web in their generic syntax (RFC 3986).
namespace tessaril {

/// An absolute address in its parts; what is not there is empty, and a fragment is dropped.
struct webAddress {
    std::string scheme; ///< in lower case
    std::string authority;
    std::string path;
    std::optional<std::string> query;

    std::string text() const;

    bool operator==(const webAddress&) const = default;
};

/// An absolute http or https address with a host, in which only characters stand that may; beyond
/// them, letters of other scripts are taken in the host, to be encoded by who resolves it. Nothing
/// for any other text, nor for one longer than `longestWebAddress`.
std::optional<webAddress> parseWebAddress(std::string_view text);

/// What `reference`, as a page writes it, means on the page at `base`: surrounding white space is
/// dropped, and what an address cannot hold is percent-encoded. Nothing unless it leads to the web,
/// nor where the reference or what it means is longer than `longestWebAddress`.
std::optional<webAddress> resolvedAddress(const webAddress& base, std::string_view reference);

/// What a person means who typed or pasted an address: as `parseWebAddress`, but white space around
/// it does not count, and what an address cannot hold is percent-encoded.
std::optional<webAddress> webAddressFrom(std::string_view typed);

/// The last component of the address's path, decoded and without its extension, which is what
/// follows its last dot; "dark.user" for "https://a/b/dark.user.css?c". One line, trimmed; empty
/// where there is none or it is not text.
std::string fileNameOf(const webAddress& address);

/// Whether the address's host can only be on the user's own machine or network: a name of one label
/// or with an ending for local networks, or the number of such a host in its usual form (RFC 1918,
/// 3927, 4193 and 4291). In doubt it is not.
bool isOnOwnNetwork(const webAddress& address);

/// Whether an icon may be asked for there, though a stranger chose the address: by https at the
/// usual port, without a user name, at a host that has a public name. Not the numbers of hosts, nor
/// names of one label or with an ending for local networks.
bool isPublicSite(const webAddress& address);

} // namespace tessaril
