#pragma once

#include "model/style_container.h"
#include "platform/icon_loader.h"

#include <cstdint>
#include <memory>
#include <string>

namespace tessaril {

/// What one row of the style list shows.
struct styleObject {
    std::string source; ///< the row's second line
    std::string name;
    bool isEnabled = true;
    std::int64_t uniqueID = 0; ///< links the row to its style
    /// "none", "checking", "updated", "noupdates" or "error"
    std::string updateStatus = "none";
    /// Nothing: the placeholder "droplet24" is shown.
    std::shared_ptr<const siteIcon> faviconImg;
    std::string homepage;
    bool isCustom = true; ///< written here, so never updated from elsewhere
    /// Name, author and sites in one text with its case folded, for the filter.
    std::u16string searchText;

    explicit styleObject(const styleContainer& style);
};

} // namespace tessaril
