#pragma once

#include "platform/file_system.h"
#include "platform/url_loader.h"
#include "web/folder_cache.h"

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>

namespace tessaril {

/// A file that a Less style imports.
struct importedFile {
    std::string address; ///< of the web, whole and encoded
    /// Whether the style may import from the user's own network. What was loaded for one that may
    /// is never given to one that may not.
    bool fromOwnNetwork = false;
};

/// What a load may still take.
struct loadAllowance {
    std::size_t bytes;
    std::chrono::milliseconds time;
    std::stop_token stop;
};

/// The files that Less styles import: loaded from the network and kept in a folder, from which the
/// longest unused go when they are too many. Safe to use from any thread.
class ImportedFiles {
public:
    using Clock = FolderCache::Clock;

    /// - folder: exists, for these alone
    /// - clock: gives the present moment; called from any thread
    ImportedFiles(UrlLoader& loader, FileSystem& files, std::filesystem::path folder,
                  std::function<Clock::time_point()> clock = Clock::now);

    /// The file as it was loaded last. Waits for no network.
    std::optional<std::string> kept(const importedFile& file);

    /// Loads and keeps the file. Waits for the network; never to be called on the main thread.
    /// Nothing, and a line in the log, when it cannot be had; what was kept stays then.
    std::optional<std::string> load(const importedFile& file, const loadAllowance& allowance);

    /// Whether loading it failed a moment ago, so that asking again is of no use yet.
    bool hasFailedLately(const importedFile& file);

    /// Has it count as failed, for who has nothing left to load it with.
    void noteFailure(const importedFile& file);

private:
    UrlLoader& loader;
    const std::function<Clock::time_point()> clock;
    FolderCache cache;
    std::mutex mutex; ///< guards what follows
    std::map<std::string, Clock::time_point> failures;
};

} // namespace tessaril
