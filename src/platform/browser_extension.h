#pragma once

#include <optional>

namespace tessaril {

/// The browser extension as the system knows it.
class BrowserExtension {
public:
    virtual ~BrowserExtension() = default;

    /// Whether it is enabled; nothing when its state is unknown.
    virtual std::optional<bool> isEnabled() const = 0;

    /// Brings up the place where the user enables it.
    virtual void showPreferences() = 0;
};

} // namespace tessaril
