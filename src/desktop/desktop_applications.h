#pragma once

#include "platform/external_applications.h"

namespace tessaril {

/// The programs that the user's desktop has chosen for e-mail and for the web.
class DesktopApplications : public ExternalApplications {
public:
    bool composeEmail(std::string_view recipient, std::string_view subject) override;
    bool openAddress(std::string_view address) override;
};

} // namespace tessaril
