#pragma once

#include "app/install_links.h"
#include "events/notification_center.h"

#include <string_view>

namespace tessaril {

/// Sends links of the application's own scheme where their host says. Main thread only.
class LinkRouter {
public:
    /// Both outlive it.
    LinkRouter(NotificationCenter& center, InstallLinks& installLinks);

    /// - `openstyle`: posts `openStyleNotif` for every number in the path.
    /// - `usercss`, `install`: see `InstallLinks`.
    /// A text that is not an address is ignored; an unknown host is logged.
    void route(std::string_view address);

private:
    NotificationCenter& center;
    InstallLinks& installLinks;
};

} // namespace tessaril
