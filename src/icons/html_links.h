#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tessaril {

/// A `link` element with what it says of an icon; attributes that are not there, or are longer than
/// any address, are empty.
struct htmlLink {
    std::vector<std::string> rel; ///< its words, in lower case
    std::string href;
    std::string type;
    std::string sizes;

    bool operator==(const htmlLink&) const = default;
};

struct htmlHead {
    std::vector<htmlLink> links;
    std::string base; ///< of the first `base` element that has an address
};

/// The links of a page's head, read leniently as browsers do: whatever the bytes are, it takes one
/// pass over them. Ends with the head, where the body begins, or after a number of links that no
/// real page has.
htmlHead readHead(std::string_view html);

} // namespace tessaril
