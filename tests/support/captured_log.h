#pragma once

#include <gtest/gtest.h>

#include <string>

namespace tessaril::testing {

/// What is logged while it lives.
class CapturedLog {
public:
    CapturedLog() { ::testing::internal::CaptureStdout(); }
    ~CapturedLog() {
        if (!taken) ::testing::internal::GetCapturedStdout();
    }
    CapturedLog(const CapturedLog&) = delete;
    CapturedLog& operator=(const CapturedLog&) = delete;

    /// The log so far; ends the capture.
    std::string take() {
        taken = true;
        return ::testing::internal::GetCapturedStdout();
    }

private:
    bool taken = false;
};

} // namespace tessaril::testing
