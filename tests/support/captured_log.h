#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <utility>

namespace tessaril::testing {

/// What is logged while it lives.
class CapturedLog {
public:
    CapturedLog() { ::testing::internal::CaptureStdout(); }
    ~CapturedLog() {
        // A failure that was reported meanwhile stands in it too.
        const std::string rest = take();
        if (::testing::Test::HasFailure()) std::fputs(rest.c_str(), stdout);
    }
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
