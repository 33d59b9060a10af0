#include "icons/style_icons.h"

#include "events/notification_names.h"
#include "icons/icon_site.h"
#include "preferences/preference_keys.h"

#include <algorithm>
#include <utility>

namespace tessaril {

namespace {

/// Each worker has one request under way at most.
constexpr std::size_t mostWorkers = 4;

/// A stranger's style must not keep a worker from the others.
constexpr std::chrono::seconds longestSearch(60);

} // namespace

StyleIcons::StyleIcons(styleIconsSurroundings surroundings)
    : machine(std::move(surroundings))
    , cache(machine.files, machine.cacheFolder, machine.clock)
    , sites({.loader = machine.loader,
             .decoder = machine.decoder,
             .cache = cache,
             .mayLoad = [this] { return mayLoad(); },
             .clock = machine.clock})
    , subscription(machine.center.observe(notifications::preferencesDidChange,
                                          [this](const notification&) { preferencesChanged(); })) {}

std::shared_ptr<const siteIcon> StyleIcons::known(const styleContainer& style) const {
    for (const iconRule& rule : iconRulesOf(style))
        if (auto icon = sites.known(siteNameOf(rule))) return icon;
    return nullptr;
}

void StyleIcons::fetch(std::span<const std::int64_t> ids, iconRequest why) {
    wasOn = wasOn && mayLoad();
    const std::lock_guard lock(mutex);
    for (const std::int64_t id : ids)
        add(id, why);
    startWorkers();
}

void StyleIcons::setOnScreen(std::vector<std::int64_t> ids) {
    const std::lock_guard lock(mutex);
    onScreen = std::move(ids);
}

void StyleIcons::stop() {
    stopped = true;
    const std::lock_guard lock(mutex);
    queue.clear();
    waiting.clear();
    waitingCount = 0;
}

bool StyleIcons::mayLoad() const {
    return !stopped && machine.preferences.boolean(preferenceKeys::fetchSiteIcons);
}

void StyleIcons::preferencesChanged() {
    const bool isOn = mayLoad();
    if (isOn == std::exchange(wasOn, isOn) || !isOn) return;
    const std::lock_guard lock(mutex);
    for (const std::int64_t id : everAsked)
        add(id, iconRequest::newRow);
    startWorkers();
}

/// With the mutex held.
void StyleIcons::add(std::int64_t id, iconRequest why) {
    const auto [place, isNew] = waiting.try_emplace(id);
    if (isNew) everAsked.push_back(id);
    std::optional<iconRequest>& waits = place->second;
    if (!waits) {
        queue.push_back(id);
        ++waitingCount;
        waits = why;
    } else if (why == iconRequest::rulesChanged) {
        waits = why; // finds all that a new row asks for
    }
}

/// With the mutex held.
void StyleIcons::startWorkers() {
    if (stopped) return;
    for (const std::size_t wanted = std::min(waitingCount, mostWorkers); workers < wanted;
         ++workers)
        // Waiting for sites must not hold up a save, which has utility priority.
        machine.dispatcher.inBackground(taskPriority::background, [this] { work(); });
}

void StyleIcons::work() {
    while (const auto next = takeNext())
        lookFor(*next);
}

/// The next to be served; nothing ends the worker.
std::optional<StyleIcons::request> StyleIcons::takeNext() {
    const std::lock_guard lock(mutex);
    for (const std::int64_t id : onScreen)
        if (auto next = take(id)) return next;
    while (!queue.empty()) {
        const std::int64_t id = queue.front();
        queue.pop_front();
        if (auto next = take(id)) return next;
    }
    --workers;
    return std::nullopt;
}

/// With the mutex held. Takes the request for the style, if one waits.
std::optional<StyleIcons::request> StyleIcons::take(std::int64_t id) {
    const auto found = waiting.find(id);
    if (found == waiting.end() || !found->second) return std::nullopt;
    --waitingCount;
    return request{id, *std::exchange(found->second, std::nullopt)};
}

void StyleIcons::lookFor(const request& next) {
    const auto style = machine.findStyle(next.id);
    if (!style) return;
    const auto end = machine.clock() + longestSearch;
    for (const iconRule& rule : iconRulesOf(*style)) {
        if (stopped || machine.clock() >= end) return;
        const auto site = siteOf(rule);
        auto icon = site ? sites.find(*site, end) : nullptr;
        if (!icon) continue;
        tell(next, std::move(icon));
        if (next.why == iconRequest::newRow) return; // every request tells a site something
    }
}

void StyleIcons::tell(const request& answered, std::shared_ptr<const siteIcon> icon) {
    machine.dispatcher.onMain([this, answered, icon = std::move(icon)] {
        if (onFound) onFound(answered.id, icon, answered.why);
    });
}

} // namespace tessaril
