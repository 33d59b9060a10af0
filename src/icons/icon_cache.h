#pragma once

#include "platform/file_system.h"
#include "platform/icon_loader.h"
#include "web/folder_cache.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>

namespace tessaril {

/// How much the icon cache keeps, and for how long.
struct iconCacheLimits {
    std::chrono::hours iconAge{30 * 24};
    std::chrono::hours absenceAge{24}; ///< of knowing that a site has none
    std::uintmax_t size = 64 << 20;    ///< bytes of all files
    std::size_t count = 20'000;        ///< files
};

/// What the cache knows of a site.
struct cachedIcon {
    std::shared_ptr<const siteIcon> icon; ///< nothing where the site has none
    bool isFresh = false;                 ///< whether its age is within the limit
};

/// Sites' icons in files of a folder, one per site, as `FolderCache` keeps them: a failure to write
/// costs a later start a request and no more. Safe to use from any thread, but it waits for the
/// disk.
class IconCache {
public:
    using Clock = FolderCache::Clock;

    /// - folder: exists, for this cache alone; empty for no cache
    /// - clock: gives the present moment; called from any thread
    IconCache(FileSystem& files, std::filesystem::path folder,
              std::function<Clock::time_point()> clock = Clock::now, iconCacheLimits limits = {});

    std::optional<cachedIcon> find(std::string_view site);

    /// - icon: nothing for a site that has none
    void store(std::string_view site, const siteIcon* icon);

private:
    const std::function<Clock::time_point()> clock;
    const iconCacheLimits limits;
    FolderCache cache;
};

} // namespace tessaril
