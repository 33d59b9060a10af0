#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

namespace tessaril::bench {

/// Sends the compiled text, which a compilation logs, elsewhere.
class SilencedOutput {
public:
    SilencedOutput() {
        std::fflush(stdout);
        const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
        dup2(nowhere, STDOUT_FILENO);
        close(nowhere);
    }
    SilencedOutput(const SilencedOutput&) = delete;
    SilencedOutput& operator=(const SilencedOutput&) = delete;
    ~SilencedOutput() {
        std::fflush(stdout);
        dup2(output, STDOUT_FILENO);
        close(output);
    }

private:
    int output = dup(STDOUT_FILENO);
};

} // namespace tessaril::bench
