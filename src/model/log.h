#pragma once

#include <string_view>

namespace tessaril {

/// Writes `line` and a line break to the process's standard output, whole and at once, from any
/// thread. For failures that only a developer can act on.
void logLine(std::string_view line);

} // namespace tessaril
