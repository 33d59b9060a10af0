#include "icons/icon_cache.h"

#include "store/atomic_write.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>
#include <vector>

namespace tessaril {

namespace {

constexpr std::string_view suffix = ".icon";
constexpr std::string_view format = "tessaril icon 1";

/// FNV-1a, which gives the same on every machine and in every version.
std::string hashOf(std::string_view text) {
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (const char c : text)
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
    std::array<char, 17> digits{};
    std::snprintf(digits.data(), digits.size(), "%016llx", static_cast<unsigned long long>(hash));
    return digits.data();
}

/// A file's lines of text before the picture: that it is one, whose, and the picture's hash.
std::string headOf(std::string_view site, std::string_view png) {
    std::string head(format);
    head.append("\n").append(site).append("\n");
    return head.append(hashOf(png)).append("\n");
}

} // namespace

IconCache::IconCache(FileSystem& fileSystem, std::filesystem::path ownFolder,
                     std::function<Clock::time_point()> presentMoment, iconCacheLimits ownLimits)
    : files(fileSystem)
    , folder(std::move(ownFolder))
    , clock(std::move(presentMoment))
    , limits(ownLimits) {}

std::optional<cachedIcon> IconCache::find(std::string_view site) {
    listFolder();
    const std::filesystem::path path = pathOf(site);
    Clock::time_point modified;
    {
        const std::lock_guard lock(mutex);
        const auto found = stored.find(path);
        if (found == stored.end()) return std::nullopt;
        modified = found->second.modified;
    }
    const auto content = files.read(path);
    // The name's hash may be another site's too.
    const std::size_t headSize = headOf(site, "").size();
    if (!content || content->size() < headSize) return std::nullopt;
    const std::string_view png = std::string_view(*content).substr(headSize);
    if (!content->starts_with(headOf(site, png))) return std::nullopt;

    const auto age = clock() - modified;
    const auto limit = png.empty() ? limits.absenceAge : limits.iconAge;
    // A file from the future says that the clock has been wrong.
    const bool isFresh = age >= Clock::duration::zero() && age < limit;
    return cachedIcon{png.empty() ? nullptr
                                  : std::make_shared<const siteIcon>(siteIcon{std::string(png)}),
                      isFresh};
}

void IconCache::store(std::string_view site, const siteIcon* icon) {
    if (folder.empty()) return;
    listFolder();
    const std::string_view png = icon ? std::string_view(icon->png) : std::string_view();
    const std::filesystem::path path = pathOf(site);
    const std::string content = headOf(site, png).append(png);
    if (!writeAtomically(files, path, content)) return;
    const std::lock_guard lock(mutex);
    note(path, {content.size(), clock()});
    makeRoom();
}

void IconCache::listFolder() {
    std::call_once(listed, [this] {
        if (folder.empty()) return;
        const auto found = files.list(folder);
        const std::lock_guard lock(mutex);
        for (const fileEntry& file : found)
            if (file.path.native().ends_with(suffix)) note(file.path, {file.size, file.modified});
        makeRoom();
    });
}

/// With the mutex held.
void IconCache::note(const std::filesystem::path& path, storedFile file) {
    storedFile& known = stored[path];
    totalSize = totalSize - known.size + file.size;
    known = file;
}

/// With the mutex held. Makes more room than is needed, so that it is rarely needed.
void IconCache::makeRoom() {
    if (totalSize <= limits.size && stored.size() <= limits.count) return;
    std::vector<std::pair<Clock::time_point, std::filesystem::path>> oldestFirst;
    oldestFirst.reserve(stored.size());
    for (const auto& [path, file] : stored)
        oldestFirst.emplace_back(file.modified, path);
    std::ranges::sort(oldestFirst);
    const auto isRoomy = [this] {
        return totalSize <= limits.size / 10 * 9 && stored.size() <= limits.count / 10 * 9;
    };
    for (auto next = oldestFirst.begin(); next != oldestFirst.end() && !isRoomy(); ++next) {
        files.remove(next->second);
        totalSize -= stored[next->second].size;
        stored.erase(next->second);
    }
}

std::filesystem::path IconCache::pathOf(std::string_view site) const {
    return folder / (hashOf(site) + std::string(suffix));
}

} // namespace tessaril
