#pragma once

#include "platform/file_system.h"

namespace tessaril {

/// A free name beside `file` for its content that could not be read:
/// `<name>-unreadable-<date>.<ext>`.
std::filesystem::path unreadableName(const FileSystem& files, const std::filesystem::path& file);

} // namespace tessaril
