#include "store/installed_styles.h"

#include "model/text.h"

#include <algorithm>

namespace tessaril {

InstalledStyles::InstalledStyles(const liveDatabase::styleList& styles) {
    for (const auto& style : styles) {
        uniqueIDs.insert(style->uniqueID);
        userstyleIDs.insert(style->userstyleID);
        byData.emplace(hashWithoutCompiled(style->styleData), style.get());
        if (style->source != sourceUserCSS) continue;
        userCSSOrigins.insert(style->downloadedFrom);
        if (style->updateURL && !trimmed(*style->updateURL).empty())
            userCSSUpdateAddresses.insert(*style->updateURL);
    }
}

bool InstalledStyles::isDuplicate(const styleContainer& style) const {
    // Styles that are equal as a whole have equal data too, so the data decides.
    const auto [from, to] = byData.equal_range(hashWithoutCompiled(style.styleData));
    return std::any_of(from, to, [&](const auto& entry) {
        return equalWithoutCompiled(entry.second->styleData, style.styleData);
    });
}

bool InstalledStyles::isUserCSSInstalled(const styleContainer& style) const {
    if (userCSSOrigins.contains(style.downloadedFrom)) return true;
    if (style.updateURL && userCSSUpdateAddresses.contains(*style.updateURL)) return true;
    const auto [from, to] = byData.equal_range(hashWithoutCompiled(style.styleData));
    return std::any_of(from, to, [&](const auto& entry) {
        return entry.second->source == sourceUserCSS &&
               equalWithoutCompiled(entry.second->styleData, style.styleData);
    });
}

bool InstalledStyles::isInstalled(const styleContainer& style) const {
    if (style.userstyleID != noUserstyleID && hasUserstyleID(style.userstyleID)) return true;
    const bool downloadedUserCSS = style.source == sourceUserCSS && !style.downloadedFrom.empty();
    return downloadedUserCSS ? isUserCSSInstalled(style) : isDuplicate(style);
}

liveDatabase::styleList mergedStyles(const liveDatabase::styleList& installed,
                                     liveDatabase::styleList imported) {
    const InstalledStyles known(installed);
    liveDatabase::styleList merged = installed;
    std::unordered_set<std::int64_t> takenByImport;
    const auto isTaken = [&](std::int64_t id) {
        return known.hasUniqueID(id) || takenByImport.contains(id);
    };

    for (auto& style : imported) {
        if (known.isInstalled(*style)) continue;
        // An identifier that the file itself holds twice is renewed as well: a style must be
        // addressable.
        if (isTaken(style->uniqueID)) {
            styleContainer renumbered = *style;
            renumbered.uniqueID = generateUniqueID(isTaken);
            style = std::make_shared<const styleContainer>(std::move(renumbered));
        }
        takenByImport.insert(style->uniqueID);
        merged.push_back(std::move(style));
    }
    return merged;
}

} // namespace tessaril
