#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <vector>

namespace tessaril {

/// What a start was asked to open, in the order given, so that it means the same in another
/// process: links (anything with "://") as they are; `file://` addresses as the path that they
/// name; paths made absolute against `folder`. Any bytes are kept, as file names are not always
/// UTF-8; empty arguments, and file addresses of other machines, are left out.
std::vector<std::string> absoluteArguments(std::span<const std::string> arguments,
                                           const std::filesystem::path& folder);

} // namespace tessaril
