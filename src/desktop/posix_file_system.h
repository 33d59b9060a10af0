#pragma once

#include "platform/file_system.h"

namespace tessaril {

/// The machine's files by way of POSIX.
///
/// A symbolic link at a path that is written stays a link, and the file that it leads to is the
/// one that is replaced: who put the link there wants the content at its other end.
class PosixFileSystem : public FileSystem {
public:
    /// A path that cannot be looked at counts as existing, so that nobody takes it for free.
    bool exists(const std::filesystem::path& path) const override;

    /// Regular files of up to 4 GiB; anything else (folders, pipes, devices) gives nothing. The
    /// result has at least 64 bytes of spare capacity.
    std::optional<std::string> read(const std::filesystem::path& path) const override;

    std::unique_ptr<StagedFile> stage(const std::filesystem::path& folder,
                                      std::span<const std::string_view> pieces) override;

    /// For anything but a regular file it does not work.
    bool overwrite(const std::filesystem::path& path, std::string_view bytes) override;

    bool keep(const std::filesystem::path& path, const std::filesystem::path& keptPath) override;

    bool keepCopy(const std::filesystem::path& path,
                  const std::filesystem::path& copyPath) override;
    bool haveSameContent(const std::filesystem::path& a,
                         const std::filesystem::path& b) const override;

    std::vector<fileEntry> list(const std::filesystem::path& folder) const override;
    void remove(const std::filesystem::path& path) override;
    void touch(const std::filesystem::path& path) override;
};

/// Removes the temporary files that a killed process has left in `folder`. To be called only while
/// nobody else writes there.
void removeStaleStagedFiles(const std::filesystem::path& folder);

} // namespace tessaril
