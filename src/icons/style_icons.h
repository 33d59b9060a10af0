#pragma once

#include "events/notification_center.h"
#include "icons/site_icons.h"
#include "platform/dispatcher.h"
#include "platform/icon_loader.h"
#include "preferences/preferences.h"

#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

namespace tessaril {

/// What the icons need of the machine and their neighbours. All outlive them.
struct styleIconsSurroundings {
    UrlLoader& loader;
    IconDecoder& decoder;
    FileSystem& files;
    Dispatcher& dispatcher;
    NotificationCenter& center;
    Preferences& preferences;
    /// The style as it stands; nothing when it is gone. Called from any thread.
    std::function<std::shared_ptr<const styleContainer>(std::int64_t id)> findStyle;
    std::filesystem::path cacheFolder; ///< exists, for this alone; empty for no cache
    std::function<IconCache::Clock::time_point()> clock = IconCache::Clock::now;
};

/// Finds styles' icons, a few styles at once, in the background. While the preference for it is off
/// nothing is asked of the network; switched on, it looks for the icons of all styles it was ever
/// asked for. The search for one style's icons ends after a minute.
class StyleIcons : public IconLoader {
public:
    explicit StyleIcons(styleIconsSurroundings surroundings);

    void setFoundHandler(Found handler) override { onFound = std::move(handler); }
    std::shared_ptr<const siteIcon> known(const styleContainer& style) const override;
    void fetch(std::span<const std::int64_t> ids, iconRequest request) override;
    void setOnScreen(std::vector<std::int64_t> ids) override;

    /// Forgets what waits and asks for nothing more; for quitting.
    void stop();

private:
    struct request {
        std::int64_t id;
        iconRequest why;
    };

    bool mayLoad() const;
    void preferencesChanged();
    void add(std::int64_t id, iconRequest why);
    void startWorkers();
    void work();
    std::optional<request> takeNext();
    std::optional<request> take(std::int64_t id);
    void lookFor(const request& next);
    void tell(const request& answered, std::shared_ptr<const siteIcon> icon);

    styleIconsSurroundings machine;
    IconCache cache;
    SiteIcons sites;
    std::atomic<bool> stopped = false;

    // Of the main thread.
    Found onFound;
    /// Whether it was on whenever icons were asked for. A change may be announced late, so it is
    /// not set by asking.
    bool wasOn = true;

    std::mutex mutex; ///< guards what follows
    /// What is to be done for every style asked for so far, if anything.
    std::unordered_map<std::int64_t, std::optional<iconRequest>> waiting;
    std::vector<std::int64_t> everAsked; ///< in order
    std::deque<std::int64_t> queue;      ///< in order; some no longer wait
    std::size_t waitingCount = 0;
    std::vector<std::int64_t> onScreen;
    std::size_t workers = 0;

    NotificationCenter::Subscription subscription; ///< the last member: it needs all others
};

} // namespace tessaril
