#pragma once

#include <filesystem>

namespace tessaril {

/// The folder for sites' icons, of this user alone: `$XDG_CACHE_HOME/tessaril/icons`. Makes it
/// where it is missing; empty when it cannot be made.
std::filesystem::path makeIconCacheFolder();

} // namespace tessaril
