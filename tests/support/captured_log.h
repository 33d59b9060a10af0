#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace tessaril::testing {

/// What is logged while it lives.
class CapturedLog {
public:
    CapturedLog() { ::testing::internal::CaptureStdout(); }
    ~CapturedLog() { take(); }
    CapturedLog(const CapturedLog&) = delete;
    CapturedLog& operator=(const CapturedLog&) = delete;

    /// The log so far; ends the capture.
    std::string take() {
        return std::exchange(taken, true) ? "" : ::testing::internal::GetCapturedStdout();
    }

private:
    bool taken = false;
};

} // namespace tessaril::testing
