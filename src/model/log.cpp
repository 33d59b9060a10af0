#include "model/log.h"

#include <cstdio>
#include <string>

namespace tessaril {

void logLine(std::string_view line) {
    const std::string whole = std::string(line) + '\n';
    std::fwrite(whole.data(), 1, whole.size(), stdout);
    std::fflush(stdout);
}

} // namespace tessaril
