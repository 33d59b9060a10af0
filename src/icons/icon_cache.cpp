#include "icons/icon_cache.h"

#include <utility>

namespace tessaril {

IconCache::IconCache(FileSystem& fileSystem, std::filesystem::path folder,
                     std::function<Clock::time_point()> presentMoment, iconCacheLimits ownLimits)
    : clock(std::move(presentMoment))
    , limits(ownLimits)
    , cache(fileSystem, std::move(folder),
            {.suffix = ".icon",
             .format = "tessaril icon 1",
             .size = limits.size,
             .count = limits.count},
            clock) {}

std::optional<cachedIcon> IconCache::find(std::string_view site) {
    auto found = cache.find(site);
    if (!found) return std::nullopt;
    std::string& png = found->content;
    const auto age = clock() - found->modified;
    const auto limit = png.empty() ? limits.absenceAge : limits.iconAge;
    // A file from the future says that the clock has been wrong.
    const bool isFresh = age >= Clock::duration::zero() && age < limit;
    if (png.empty()) return cachedIcon{nullptr, isFresh};
    return cachedIcon{std::make_shared<const siteIcon>(siteIcon{std::move(png)}), isFresh};
}

void IconCache::store(std::string_view site, const siteIcon* icon) {
    cache.store(site, icon ? std::string_view(icon->png) : std::string_view());
}

} // namespace tessaril
