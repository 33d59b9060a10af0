#pragma once

#include <filesystem>
#include <optional>

namespace tessaril {

/// The folder that the application shares with the browser extension, of this user alone:
/// `$XDG_DATA_HOME/7RX2KD84QM.group.com.tessaril.shared`. Makes it where it is missing; nothing
/// when it cannot be made.
std::optional<std::filesystem::path> makeSharedContainer();

} // namespace tessaril
