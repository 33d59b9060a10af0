#include "icons/site_icons.h"

#include <utility>

namespace tessaril {

namespace {

constexpr std::chrono::minutes retryAfter(10);

} // namespace

SiteIcons::SiteIcons(surroundings parts) : machine(std::move(parts)) {}

std::shared_ptr<const siteIcon> SiteIcons::known(const std::string& name) const {
    const std::lock_guard lock(mutex);
    const auto found = sites.find(name);
    return found == sites.end() ? nullptr : found->second.icon;
}

std::shared_ptr<const siteIcon> SiteIcons::find(const iconSite& site, Clock::time_point end) {
    std::unique_lock lock(mutex);
    knowledge& known = sites[site.name]; // stays where it is
    settled.wait(lock, [&] { return known.now != state::sought; });
    if (!isToBeSought(known)) return known.icon;

    knowledge before = std::exchange(known, {.now = state::sought, .icon = known.icon});
    lock.unlock();
    knowledge learned = look(site, end);
    lock.lock();
    if (!learned.icon) learned.icon = std::move(before.icon);
    known = learned;
    settled.notify_all();
    return learned.icon;
}

bool SiteIcons::isToBeSought(const knowledge& known) const {
    if (known.now == state::unreached)
        return machine.mayLoad() && machine.clock() - known.since >= retryAfter;
    return known.now == state::unknown;
}

SiteIcons::knowledge SiteIcons::look(const iconSite& site, Clock::time_point end) {
    const auto cached = machine.cache.find(site.name);
    if (cached && cached->isFresh) return {.now = state::settled, .icon = cached->icon};
    // An outdated icon is better than none.
    knowledge learned{.icon = cached ? cached->icon : nullptr};
    const auto mayLoad = [&] { return machine.mayLoad() && machine.clock() < end; };
    if (!mayLoad()) return learned;

    foundIcon found = SiteIconFinder(machine.loader, machine.decoder, mayLoad).find(site);
    if (found.icon || found.wasReached) {
        machine.cache.store(site.name, found.icon.get());
        return {.now = state::settled, .icon = std::move(found.icon)};
    }
    if (machine.mayLoad()) {
        learned.now = state::unreached;
        learned.since = machine.clock();
    }
    return learned;
}

} // namespace tessaril
