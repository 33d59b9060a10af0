#pragma once

#include "icons/icon_cache.h"
#include "icons/site_icon_finder.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

namespace tessaril {

/// The icons of sites, each looked for once however many ask: in memory, in the cache, on the
/// network. Safe to use from any thread.
class SiteIcons {
public:
    using Clock = IconCache::Clock;

    struct surroundings {
        UrlLoader& loader;
        IconDecoder& decoder;
        IconCache& cache;
        std::function<bool()> mayLoad; ///< whether the network may be used
        std::function<Clock::time_point()> clock = Clock::now;
    };

    explicit SiteIcons(surroundings parts);

    /// The icon in memory of the site with the name; nothing otherwise. Never waits for anything
    /// slow.
    std::shared_ptr<const siteIcon> known(const std::string& name) const;

    /// The site's icon; waits for it, also where another thread looks for it. A site that could not
    /// be reached, or not be searched to the end, is left alone for a while.
    /// - end: no request begins later
    std::shared_ptr<const siteIcon> find(const iconSite& site, Clock::time_point end);

private:
    enum class state { unknown, sought, settled, unreached };

    struct knowledge {
        state now = state::unknown;
        std::shared_ptr<const siteIcon> icon;
        Clock::time_point since;
    };

    knowledge look(const iconSite& site, Clock::time_point end);
    bool isToBeSought(const knowledge& known) const;

    surroundings machine;
    mutable std::mutex mutex; ///< guards what is known, never held while something is sought
    std::condition_variable settled;
    std::unordered_map<std::string, knowledge> sites; ///< by name
};

} // namespace tessaril
