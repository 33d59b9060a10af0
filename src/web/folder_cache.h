#pragma once

#include "platform/file_system.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace tessaril {

/// What tells a cache's files from others, and how much it keeps.
struct folderCacheKind {
    std::string_view suffix; ///< of the files' names
    std::string_view format; ///< the files' first line
    std::uintmax_t size = 0; ///< bytes of all files
    std::size_t count = 0;   ///< files
};

/// Contents in files of a folder, one per name, which go when they are too many, the oldest first.
/// What is damaged, cut or anyone else's counts as absent; a failure to write is as if nothing had
/// been stored. Safe to use from any thread, but it waits for the disk.
class FolderCache {
public:
    using Clock = std::chrono::system_clock;

    struct entry {
        std::string content;
        Clock::time_point modified;
    };

    /// - folder: exists, for this cache alone; empty for no cache
    /// - clock: gives the present moment; called from any thread
    FolderCache(FileSystem& files, std::filesystem::path folder, folderCacheKind kind,
                std::function<Clock::time_point()> clock = Clock::now);

    /// - name: one line
    std::optional<entry> find(std::string_view name);
    void store(std::string_view name, std::string_view content);

    /// Has what is stored under the name count as new, for a cache in which the longest unused goes
    /// first. Costs nothing where it is rather new.
    void keepLonger(std::string_view name);

private:
    struct storedFile {
        std::uintmax_t size = 0;
        Clock::time_point modified;
    };

    void listFolder();
    void note(const std::filesystem::path& path, storedFile file);
    void makeRoom();
    std::string headOf(std::string_view name, std::string_view content) const;
    std::filesystem::path pathOf(std::string_view name) const;

    FileSystem& files;
    const std::filesystem::path folder;
    const folderCacheKind kind;
    const std::function<Clock::time_point()> clock;

    std::once_flag listed;
    std::mutex mutex; ///< guards what follows
    std::map<std::filesystem::path, storedFile> stored;
    std::uintmax_t totalSize = 0;
};

} // namespace tessaril
