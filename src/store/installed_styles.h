#pragma once

#include "store/live_database.h"

#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace tessaril {

/// Answers whether a style is installed already, in time independent of how many there are. Points
/// into the list that it was made of, which must outlive it unchanged.
class InstalledStyles {
public:
    explicit InstalledStyles(const liveDatabase::styleList& styles);

    bool hasUserstyleID(std::int64_t id) const { return userstyleIDs.contains(id); }
    bool hasUniqueID(std::int64_t id) const { return uniqueIDs.contains(id); }

    /// Whether some style is equal to `style`, as a whole or in its `styleData` without
    /// `compSections`.
    bool isDuplicate(const styleContainer& style) const;

    /// Whether some style of source "usercss" was downloaded from the same address, has the same
    /// update address (blank ones aside), or has the same `styleData` without `compSections`.
    bool isUserCSSInstalled(const styleContainer& style) const;

    /// Whether an import leaves the style out: one from the style-sharing site is known by its
    /// number, one downloaded as UserCSS by `isUserCSSInstalled`, any other by `isDuplicate`.
    bool isInstalled(const styleContainer& style) const;

private:
    std::unordered_set<std::int64_t> uniqueIDs;
    std::unordered_set<std::int64_t> userstyleIDs;
    std::unordered_multimap<std::size_t, const styleContainer*> byData;
    std::unordered_set<std::string_view> userCSSOrigins;
    std::unordered_set<std::string_view> userCSSUpdateAddresses;
};

/// The styles of `installed` followed by those of `imported` that are not among them
/// (`isInstalled`), in order. A style whose identifier is taken gets a fresh one.
liveDatabase::styleList mergedStyles(const liveDatabase::styleList& installed,
                                     liveDatabase::styleList imported);

} // namespace tessaril
