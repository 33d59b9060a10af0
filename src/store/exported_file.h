#pragma once

#include "platform/alerts.h"
#include "platform/file_system.h"

#include <filesystem>
#include <optional>
#include <span>
#include <string_view>

namespace tessaril {

/// The file that an export writes to. A save panel shows only some types, but takes any name that
/// is typed: one of another type gets the first of `types` (without the dot, in any case), or what
/// it lacks of that ("a.user" becomes "a.user.css"), and where that makes it one that exists, the
/// user is asked, as the panel has asked about the typed name only. Nothing when the user does not
/// want it replaced. Main thread only.
std::optional<std::filesystem::path> exportedFile(std::filesystem::path chosen,
                                                  std::span<const std::string_view> types,
                                                  const FileSystem& files, Alerts& alerts);

} // namespace tessaril
