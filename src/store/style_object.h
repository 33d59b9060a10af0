#pragma once

#include "model/style_container.h"
#include "platform/icon_loader.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace tessaril {

/// What an update check has a row show.
namespace updateStatuses {
inline constexpr std::string_view none = "none";
inline constexpr std::string_view checking = "checking";
inline constexpr std::string_view updated = "updated";
inline constexpr std::string_view noUpdates = "noupdates";
inline constexpr std::string_view error = "error";
} // namespace updateStatuses

/// What one row of the style list shows.
struct styleObject {
    std::string source; ///< the row's second line
    std::string name;
    bool isEnabled = true;
    std::int64_t uniqueID = 0; ///< links the row to its style
    std::string updateStatus{updateStatuses::none};
    /// Nothing: the placeholder "droplet24" is shown.
    std::shared_ptr<const siteIcon> faviconImg;
    std::string homepage;
    bool isCustom = true; ///< written here, so never updated from elsewhere
    /// Name, author and sites in one text with its case folded, for the filter.
    std::u16string searchText;

    explicit styleObject(const styleContainer& style);
};

} // namespace tessaril
