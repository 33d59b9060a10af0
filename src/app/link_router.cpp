#include "app/link_router.h"

#include "app/link.h"
#include "events/notification_names.h"
#include "model/log.h"
#include "model/text.h"

#include <string>

namespace tessaril {

LinkRouter::LinkRouter(NotificationCenter& bus, InstallLinks& links)
    : center(bus), installLinks(links) {}

void LinkRouter::route(std::string_view address) {
    const auto target = parseLink(address);
    if (!target) return;
    if (target->host == "openstyle") {
        for (const std::int64_t id : numbersIn(target->path))
            center.post(notifications::openStyleNotif, id);
        return;
    }
    if (target->host == "usercss") return installLinks.openUserCSS(address);
    if (target->host == "install") return installLinks.openInstall(target->path);
    logLine("Unsupported link: " + forLog(address));
}

} // namespace tessaril
