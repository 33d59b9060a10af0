#pragma once

#include <filesystem>

namespace tessaril {

/// The folder for sites' icons, of this user alone: `$XDG_CACHE_HOME/tessaril/icons`. Makes it
/// where it is missing; empty when it cannot be made.
std::filesystem::path makeIconCacheFolder();

/// The folder for the files that styles import, in the container: compiled styles depend on them,
/// so they are no mere cache to the user. Makes it where it is missing; empty when it cannot be
/// made.
std::filesystem::path makeImportFolder(const std::filesystem::path& container);

/// The folder for what is unsaved in Style Editors, in the container. Makes it where it is missing;
/// empty when it cannot be made.
std::filesystem::path makeDraftFolder(const std::filesystem::path& container);

/// The folder for backups of the document, in the container. Makes it where it is missing; empty
/// when it cannot be made.
std::filesystem::path makeBackupFolder(const std::filesystem::path& container);

} // namespace tessaril
