#pragma once

#include "platform/compiler_errors.h"

#include <mutex>
#include <vector>

namespace tessaril::testing {

/// Compiler errors that are written down.
struct RecordingCompilerErrors : CompilerErrors {
    void show(compilerError error) override {
        const std::lock_guard lock(mutex);
        errors.push_back(std::move(error));
    }
    std::vector<compilerError> errors;
    std::mutex mutex;
};

} // namespace tessaril::testing
