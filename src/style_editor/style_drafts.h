#pragma once

#include "model/style_container.h"
#include "platform/file_system.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <vector>

namespace tessaril {

/// What was written in Style Editors and not saved, a file a style, for when the application ends
/// before it is. A document of one style each, in the form of the database's. Safe to use from any
/// thread; each call waits for the disk.
class StyleDrafts {
public:
    /// - folder: exists; empty for none, and nothing is kept then
    StyleDrafts(FileSystem& files, std::filesystem::path folder);

    /// Tells one state of a style's draft from a later one.
    using Version = std::uint64_t;

    /// Before what is to be kept or dropped is handed to another thread: numbers it.
    Version next();

    /// Keeps the working copy, unless a later version was kept or dropped meanwhile. One that
    /// cannot be written is logged, and the one before it stays.
    void keep(const styleContainer& style, Version version);
    /// The same for a style of which nothing is unsaved any more.
    void drop(std::int64_t id, Version version);

    /// All that are there, those of earlier runs included. Files that cannot be read are left, for
    /// a version of the application that can.
    std::vector<styleContainer> all() const;

private:
    std::filesystem::path fileOf(std::int64_t id) const;
    bool isLatest(std::int64_t id, Version version);

    FileSystem& files;
    std::filesystem::path folder;
    std::mutex mutex;
    Version last = 0;
    std::map<std::int64_t, Version> latest;
};

} // namespace tessaril
