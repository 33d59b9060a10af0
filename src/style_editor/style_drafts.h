#pragma once

#include "model/style_container.h"
#include "platform/file_system.h"

#include <atomic>
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

    /// Keeps the working copy, unless this or a later version was dropped, or a later one kept. One
    /// that cannot be written is logged, and the one before it stays. Gives whether it or a later
    /// one is kept.
    bool keep(const styleContainer& style, Version version);
    /// The style has nothing unsaved up to this version.
    void drop(std::int64_t id, Version version);

    /// The draft of one style; nothing where there is none that can be read.
    std::optional<styleContainer> find(std::int64_t id) const;

    /// All that are there, those of earlier runs included. Files that cannot be read are left, for
    /// a version of the application that can.
    std::vector<styleContainer> all() const;

private:
    std::filesystem::path fileOf(std::int64_t id) const;
    std::optional<styleContainer> read(const std::filesystem::path& file) const;
    bool isLatest(std::int64_t id, Version rank);

    FileSystem& files;
    std::filesystem::path folder;
    std::atomic<Version> last = 0; ///< on its own: who asks for a number never waits for the disk
    std::mutex mutex;              ///< guards what follows, and the files
    std::map<std::int64_t, Version> latest; ///< rank of what was done last with a style's draft
};

} // namespace tessaril
