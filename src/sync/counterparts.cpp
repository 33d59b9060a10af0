#include "sync/counterparts.h"

#include "model/text.h"

#include <algorithm>
#include <deque>
#include <functional>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace tessaril {

namespace {

bool hasText(const std::optional<std::string>& address) {
    return address && !trimmed(*address).empty();
}

bool haveSameData(const styleContainer& a, const styleContainer& b) {
    return equalWithoutCompiled(a.styleData, b.styleData);
}

bool areSameUserCSS(const styleContainer& a, const styleContainer& b) {
    // Styles from files are from no address; that does not make them one.
    if (!b.downloadedFrom.empty() && a.downloadedFrom == b.downloadedFrom) return true;
    return (hasText(b.updateURL) && a.updateURL == b.updateURL) || haveSameData(a, b);
}

bool isUserCSS(const styleContainer& style) {
    return style.userstyleID == noUserstyleID && style.source == sourceUserCSS;
}

/// Styles by what they have in common, in the order of their positions.
template <typename Key>
class Positions {
public:
    void add(const Key& key, std::size_t position) { lists[key].push_back(position); }

    /// The first of them that is free and passes. Those at the front that are taken are forgotten,
    /// so that many equal styles cost no more than different ones.
    template <typename IsFree, typename Passes>
    std::optional<std::size_t> first(const Key& key, const IsFree& isFree, const Passes& passes) {
        const auto found = lists.find(key);
        if (found == lists.end()) return std::nullopt;
        std::deque<std::size_t>& list = found->second;
        while (!list.empty() && !isFree(list.front()))
            list.pop_front();
        const auto match = std::ranges::find_if(
            list, [&](std::size_t position) { return isFree(position) && passes(position); });
        return match == list.end() ? std::nullopt : std::optional(*match);
    }

private:
    std::unordered_map<Key, std::deque<std::size_t>> lists;
};

std::optional<std::size_t> earlier(std::optional<std::size_t> a, std::optional<std::size_t> b) {
    return a && b ? std::min(a, b) : a ? a : b;
}

class CloudStyles {
public:
    explicit CloudStyles(const liveDatabase::styleList& cloudStyles)
        : styles(cloudStyles), isTaken(cloudStyles.size()) {
        for (std::size_t i = 0; i < styles.size(); ++i) {
            const styleContainer& style = *styles[i];
            byID.add(style.uniqueID, i);
            byData.add(hashWithoutCompiled(style.styleData), i);
            if (style.userstyleID != noUserstyleID) byNumber.add(style.userstyleID, i);
            if (style.source != sourceUserCSS) continue;
            if (!style.downloadedFrom.empty()) byOrigin.add(style.downloadedFrom, i);
            if (hasText(style.updateURL)) byUpdateAddress.add(*style.updateURL, i);
        }
    }

    std::optional<std::size_t> takeWithSameID(const styleContainer& local) {
        return take(byID.first(local.uniqueID, isFree, [&](std::size_t position) {
            return areSame(local, *styles[position]);
        }));
    }

    std::optional<std::size_t> takeFirst(const styleContainer& local) {
        const auto any = [](std::size_t) { return true; };
        const auto sameData = [&](std::size_t position) {
            return haveSameData(local, *styles[position]);
        };
        const std::size_t hash = hashWithoutCompiled(local.styleData);
        std::optional<std::size_t> found;
        if (isUserCSS(local)) {
            found = byData.first(hash, isFree, [&](std::size_t position) {
                return styles[position]->source == sourceUserCSS && sameData(position);
            });
            found = earlier(found, byOrigin.first(local.downloadedFrom, isFree, any));
            if (local.updateURL)
                found = earlier(found, byUpdateAddress.first(*local.updateURL, isFree, any));
        }
        if (local.userstyleID != noUserstyleID)
            found = byNumber.first(local.userstyleID, isFree, any);
        // By name and identifier it would have been taken before.
        if (!found) found = byData.first(hash, isFree, sameData);
        return take(found);
    }

private:
    static bool areSame(const styleContainer& local, const styleContainer& cloud) {
        if (isUserCSS(local) && cloud.source == sourceUserCSS && areSameUserCSS(local, cloud))
            return true;
        if (local.userstyleID != noUserstyleID && local.userstyleID == cloud.userstyleID)
            return true;
        return local.styleData.name == cloud.styleData.name || haveSameData(local, cloud);
    }
    std::optional<std::size_t> take(std::optional<std::size_t> position) {
        if (position) isTaken[*position] = true;
        return position;
    }

    const liveDatabase::styleList& styles;
    std::vector<bool> isTaken;
    const std::function<bool(std::size_t)> isFree = [this](std::size_t position) {
        return !isTaken[position];
    };
    Positions<std::int64_t> byID;
    Positions<std::int64_t> byNumber;
    Positions<std::size_t> byData;
    Positions<std::string_view> byOrigin;
    Positions<std::string_view> byUpdateAddress;
};

} // namespace

std::vector<std::optional<std::size_t>>
findCloudCounterparts(const liveDatabase::styleList& cloud, const liveDatabase::styleList& local) {
    CloudStyles styles(cloud);
    std::vector<std::optional<std::size_t>> found(local.size());
    for (std::size_t i = 0; i < local.size(); ++i)
        found[i] = styles.takeWithSameID(*local[i]);
    for (std::size_t i = 0; i < local.size(); ++i)
        if (!found[i]) found[i] = styles.takeFirst(*local[i]);
    return found;
}

} // namespace tessaril
