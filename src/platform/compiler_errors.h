#pragma once

#include <optional>
#include <string>

namespace tessaril {

/// What one window about a failed compilation shows.
struct compilerError {
    std::string title;
    std::optional<std::string> header; ///< absent: the window's own general line
    std::string text;                  ///< several lines, shown unwrapped

    bool operator==(const compilerError&) const = default;
};

class CompilerErrors {
public:
    virtual ~CompilerErrors() = default;

    /// Opens a new window for `error` on the main thread and returns at once, before it is shown.
    /// May be called from any thread.
    virtual void show(compilerError error) = 0;
};

} // namespace tessaril
