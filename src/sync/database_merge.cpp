#include "sync/database_merge.h"

#include "sync/counterparts.h"

#include <algorithm>
#include <deque>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace tessaril {

namespace {

using stylePointer = std::shared_ptr<const styleContainer>;

bool isEarlier(const std::optional<date>& a, const std::optional<date>& b) {
    return a && b && *a < *b;
}

/// Whether the local style takes the place of its counterpart.
bool isLocalNewer(const styleContainer& local, const styleContainer& counterpart,
                  bool isCloudOlder) {
    if (local.dateModified && counterpart.dateModified)
        return *counterpart.dateModified < *local.dateModified;
    return isCloudOlder;
}

enum class fate { add, recover, drop };

/// Of a local style that the cloud lacks.
fate fateOf(const styleContainer& style, const liveDatabase& cloud, const liveDatabase& local,
            const syncHistory& history) {
    const bool isNewer =
        style.dateModified && (!history.lastSync || *style.dateModified > *history.lastSync);
    if (isNewer || history.isFirst || !local.dateModified) return fate::add;
    if (!cloud.dateModified) return fate::recover;
    return isEarlier(cloud.dateModified, local.dateModified) ? fate::add : fate::drop;
}

/// Puts styles of this machine into the cloud's list.
class MergedList {
public:
    explicit MergedList(liveDatabase::styleList cloudStyles) : styles(std::move(cloudStyles)) {
        for (const stylePointer& style : styles)
            ++uses[style->uniqueID];
    }

    void replace(std::size_t position, const stylePointer& style) {
        const std::int64_t id = styles[position]->uniqueID;
        --uses[id];
        styles[position] = id == style->uniqueID ? style : addressable(style);
        ++uses[styles[position]->uniqueID];
    }
    void append(const stylePointer& style) {
        styles.push_back(addressable(style));
        ++uses[styles.back()->uniqueID];
    }

    liveDatabase::styleList take() { return std::move(styles); }

private:
    stylePointer addressable(stylePointer style) {
        const auto isTaken = [this](std::int64_t id) {
            const auto used = uses.find(id);
            return used != uses.end() && used->second > 0;
        };
        if (!isTaken(style->uniqueID)) return style;
        styleContainer renumbered = *style;
        renumbered.uniqueID = generateUniqueID(isTaken);
        return std::make_shared<const styleContainer>(std::move(renumbered));
    }

    liveDatabase::styleList styles;
    std::unordered_map<std::int64_t, int> uses; ///< of identifiers
};

} // namespace

bool holdSameStyles(const liveDatabase& a, const liveDatabase& b) {
    return std::ranges::equal(a.styles, b.styles,
                              [](const auto& x, const auto& y) { return x == y || *x == *y; });
}

std::optional<databaseMerge> mergeFirstFetch(const liveDatabase& cloud, const liveDatabase& local,
                                             const syncHistory& history) {
    if (holdSameStyles(cloud, local)) return std::nullopt;
    databaseMerge merge{.merged = cloud};
    MergedList styles(cloud.styles);
    const auto counterparts = findCloudCounterparts(cloud.styles, local.styles);
    const bool isCloudOlder = isEarlier(cloud.dateModified, local.dateModified);
    for (std::size_t i = 0; i < local.styles.size(); ++i) {
        const stylePointer& style = local.styles[i];
        if (const auto position = counterparts[i]) {
            const styleContainer& counterpart = *cloud.styles[*position];
            if (isLocalNewer(*style, counterpart, isCloudOlder) || *style == counterpart)
                styles.replace(*position, style);
            continue;
        }
        switch (fateOf(*style, cloud, local, history)) {
        case fate::add:
            styles.append(style);
            break;
        case fate::recover:
            merge.recovered.push_back(style);
            break;
        case fate::drop:
            merge.dropped.push_back(style);
            break;
        }
    }
    merge.merged.styles = styles.take();
    return merge;
}

databaseMerge mergeRemoteChange(const liveDatabase& cloud, const liveDatabase& local) {
    databaseMerge merge{.merged = cloud};
    // Several styles of one identifier meet in their order, or all but the first would be lost.
    std::unordered_map<std::int64_t, std::deque<const stylePointer*>> here;
    for (const stylePointer& style : local.styles)
        here[style->uniqueID].push_back(&style);
    std::unordered_set<const stylePointer*> met;
    std::unordered_set<std::int64_t> inCloud;
    for (stylePointer& style : merge.merged.styles) {
        const std::int64_t id = style->uniqueID;
        inCloud.insert(id);
        const auto found = here.find(id);
        if (found == here.end() || found->second.empty()) continue;
        const stylePointer& own = *found->second.front();
        found->second.pop_front();
        met.insert(&own);
        if (own == style || *own == *style) {
            style = own;
        } else if (isEarlier(own->dateModified, style->dateModified)) {
            merge.changed.push_back(id);
        } else if (own->dateModified && own->dateModified != style->dateModified) {
            style = own; // newer, or the cloud's has no date
        }
    }
    for (const stylePointer& style : local.styles) {
        if (met.contains(&style)) continue;
        merge.recovered.push_back(style);
        if (!inCloud.contains(style->uniqueID)) merge.changed.push_back(style->uniqueID);
    }
    return merge;
}

} // namespace tessaril
