#include "sync/recovery_list.h"

#include "events/notification_names.h"

#include <algorithm>
#include <functional>

namespace tessaril {

RecoveryList::RecoveryList(StyleStore& styleStore, NotificationCenter& bus)
    : store(styleStore), center(bus) {}

bool RecoveryList::isEmpty() const {
    const std::lock_guard lock(mutex);
    return styles.empty();
}

std::vector<std::string> RecoveryList::names() const {
    const std::lock_guard lock(mutex);
    std::vector<std::string> result;
    for (const auto& style : styles)
        result.push_back(style->styleData.name);
    return result;
}

void RecoveryList::add(const liveDatabase::styleList& removed) {
    const std::lock_guard lock(mutex);
    styles.insert(styles.end(), removed.begin(), removed.end());
}

void RecoveryList::recover(std::vector<std::size_t> positions) {
    // From the highest, so that the others hold; merges only append meanwhile.
    std::ranges::sort(positions, std::greater());
    positions.erase(std::ranges::unique(positions).begin(), positions.end());
    for (const std::size_t position : positions) {
        std::shared_ptr<const styleContainer> style;
        {
            const std::lock_guard lock(mutex);
            if (position >= styles.size()) continue;
            style = styles[position];
            styles.erase(styles.begin() + static_cast<std::ptrdiff_t>(position));
        }
        store.appendStyle(*style);
        store.saveDatabase();
        center.post(notifications::refreshTableAndScroll);
    }
    center.post(notifications::deletedStylesChanged);
}

} // namespace tessaril
