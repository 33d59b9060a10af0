#pragma once

#include <string_view>

namespace tessaril {

/// Other programs of the user's desktop. Main thread only.
class ExternalApplications {
public:
    virtual ~ExternalApplications() = default;

    /// Opens a new message to `recipient` with an empty body. Gives false when the desktop has no
    /// e-mail program.
    virtual bool composeEmail(std::string_view recipient, std::string_view subject) = 0;

    /// Opens `address` in the default browser; false when there is none.
    virtual bool openAddress(std::string_view address) = 0;
};

} // namespace tessaril
