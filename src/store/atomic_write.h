#pragma once

#include "platform/file_system.h"

namespace tessaril {

/// Replaces `path` by a file that holds `bytes`, atomically and durably. Gives whether it worked;
/// when not, `path` is as it was.
bool writeAtomically(FileSystem& files, const std::filesystem::path& path, std::string_view bytes);

} // namespace tessaril
