#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tessaril {

/// A file that has been written whole and synced to disk under a temporary name. Until it is
/// published nobody sees it; destroyed, its temporary name is gone.
class StagedFile {
public:
    virtual ~StagedFile() = default;

    /// Makes `path` name this file's content, atomically and durably: after a crash `path` holds
    /// its old content or all of the new. May be called for several paths on one file system; the
    /// names then share one copy, so nobody may write into such a file in place. Gives whether it
    /// worked.
    virtual bool publishAs(const std::filesystem::path& path) = 0;
};

/// A regular file of a folder.
struct fileEntry {
    std::filesystem::path path; ///< the folder's, with the name
    std::uintmax_t size = 0;    ///< bytes
    std::chrono::system_clock::time_point modified;
};

/// Files of the machine. May be called from any thread.
class FileSystem {
public:
    virtual ~FileSystem() = default;

    virtual bool exists(const std::filesystem::path& path) const = 0;

    /// The whole content of a regular file; nothing when it cannot be read to its end. The result
    /// has spare capacity for a reader that needs padding behind its input.
    virtual std::optional<std::string> read(const std::filesystem::path& path) const = 0;

    /// Writes `pieces`, one after another, into a new file in `folder`, readable by this user only.
    /// Nothing when any of it fails; no file is left then.
    virtual std::unique_ptr<StagedFile> stage(const std::filesystem::path& folder,
                                              std::span<const std::string_view> pieces) = 0;

    /// Makes `bytes` the content of the regular file at `path`, which is written in place, so that
    /// it stays the same file, or made. Gives whether it worked. Where the room is known beforehand
    /// to be missing, the old content stays; otherwise a failure may leave only a part of either.
    virtual bool overwrite(const std::filesystem::path& path, std::string_view bytes) = 0;

    /// Gives the file at `path` the second name `keptPath`, which must be free, so that it survives
    /// a replacement of `path`. Where the file system has no second names the file is moved. Gives
    /// whether the content is now at `keptPath`.
    virtual bool keep(const std::filesystem::path& path, const std::filesystem::path& keptPath) = 0;

    /// Gives the content of the regular file at `path` another name, `copyPath`, which must be free
    /// and becomes durable; `path` stays what it is. Both are one file where the file system can do
    /// that, so nobody may write into either in place; otherwise `copyPath` is a copy. Makes the
    /// folder of `copyPath`, for this user alone, where it is missing. Gives whether it worked;
    /// when not, no file is left at `copyPath`.
    virtual bool keepCopy(const std::filesystem::path& path,
                          const std::filesystem::path& copyPath) = 0;

    /// Whether two regular files hold the same bytes; false when one cannot be read to its end.
    /// Reads nothing of one file under two names or of files that differ in size, and never a
    /// whole file at once.
    virtual bool haveSameContent(const std::filesystem::path& a,
                                 const std::filesystem::path& b) const = 0;

    /// The regular files in `folder`, in no order; none when it cannot be read.
    virtual std::vector<fileEntry> list(const std::filesystem::path& folder) const = 0;

    /// Removes the file, if there is one; a folder is left. Not durable.
    virtual void remove(const std::filesystem::path& path) = 0;

    /// Has the file, if there is one, count as modified now. Not durable.
    virtual void touch(const std::filesystem::path& path) = 0;
};

} // namespace tessaril
