#include "web/folder_cache.h"

#include "store/atomic_write.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>
#include <vector>

namespace tessaril {

namespace {

/// A file is not marked as used more often than that.
constexpr std::chrono::hours renewalAge{1};

/// FNV-1a, which gives the same on every machine and in every version.
std::string hashOf(std::string_view text) {
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (const char c : text)
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
    std::array<char, 17> digits{};
    std::snprintf(digits.data(), digits.size(), "%016llx", static_cast<unsigned long long>(hash));
    return digits.data();
}

} // namespace

FolderCache::FolderCache(FileSystem& fileSystem, std::filesystem::path ownFolder,
                         folderCacheKind ownKind, std::function<Clock::time_point()> presentMoment)
    : files(fileSystem)
    , folder(std::move(ownFolder))
    , kind(ownKind)
    , clock(std::move(presentMoment)) {}

std::optional<FolderCache::entry> FolderCache::find(std::string_view name) {
    listFolder();
    const std::filesystem::path path = pathOf(name);
    Clock::time_point modified;
    {
        const std::lock_guard lock(mutex);
        const auto found = stored.find(path);
        if (found == stored.end()) return std::nullopt;
        modified = found->second.modified;
    }
    auto file = files.read(path);
    // The name's hash may be another name's too.
    const std::size_t headSize = headOf(name, "").size();
    if (!file || file->size() < headSize) return std::nullopt;
    if (!file->starts_with(headOf(name, std::string_view(*file).substr(headSize))))
        return std::nullopt;
    file->erase(0, headSize);
    return entry{std::move(*file), modified};
}

void FolderCache::store(std::string_view name, std::string_view content) {
    if (folder.empty()) return;
    listFolder();
    const std::filesystem::path path = pathOf(name);
    const std::string file = headOf(name, content).append(content);
    if (!writeAtomically(files, path, file)) return;
    const std::lock_guard lock(mutex);
    note(path, {file.size(), clock()});
    makeRoom();
}

void FolderCache::keepLonger(std::string_view name) {
    const std::filesystem::path path = pathOf(name);
    {
        const std::lock_guard lock(mutex);
        const auto found = stored.find(path);
        const auto time = clock();
        if (found == stored.end() || time - found->second.modified < renewalAge) return;
        found->second.modified = time;
    }
    files.touch(path);
}

void FolderCache::listFolder() {
    std::call_once(listed, [this] {
        if (folder.empty()) return;
        const auto found = files.list(folder);
        const std::lock_guard lock(mutex);
        for (const fileEntry& file : found)
            if (file.path.native().ends_with(kind.suffix))
                note(file.path, {file.size, file.modified});
        makeRoom();
    });
}

/// With the mutex held.
void FolderCache::note(const std::filesystem::path& path, storedFile file) {
    storedFile& known = stored[path];
    totalSize = totalSize - known.size + file.size;
    known = file;
}

/// With the mutex held. Makes more room than is needed, so that it is rarely needed.
void FolderCache::makeRoom() {
    if (totalSize <= kind.size && stored.size() <= kind.count) return;
    std::vector<std::pair<Clock::time_point, std::filesystem::path>> oldestFirst;
    oldestFirst.reserve(stored.size());
    for (const auto& [path, file] : stored)
        oldestFirst.emplace_back(file.modified, path);
    std::ranges::sort(oldestFirst);
    const auto isRoomy = [this] {
        return totalSize <= kind.size / 10 * 9 && stored.size() <= kind.count / 10 * 9;
    };
    for (auto next = oldestFirst.begin(); next != oldestFirst.end() && !isRoomy(); ++next) {
        files.remove(next->second);
        totalSize -= stored[next->second].size;
        stored.erase(next->second);
    }
}

/// A file's lines of text before the content: what it is, whose, and the content's hash.
std::string FolderCache::headOf(std::string_view name, std::string_view content) const {
    std::string head(kind.format);
    head.append("\n").append(name).append("\n");
    return head.append(hashOf(content)).append("\n");
}

std::filesystem::path FolderCache::pathOf(std::string_view name) const {
    return folder / (hashOf(name) + std::string(kind.suffix));
}

} // namespace tessaril
