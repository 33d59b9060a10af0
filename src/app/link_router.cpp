#include "app/link_router.h"

#include "app/link.h"
#include "events/notification_names.h"
#include "model/log.h"
#include "model/text.h"

#include <string>
#include <vector>

namespace tessaril {

namespace {

/// The decimal numbers in `path`, which anything but a digit separates; those that do not fit are
/// left out.
std::vector<std::int64_t> numbersIn(std::string_view path) {
    constexpr std::string_view digits = "0123456789";
    std::vector<std::int64_t> numbers;
    for (std::size_t at = path.find_first_of(digits); at != std::string_view::npos;
         at = path.find_first_of(digits, at)) {
        const std::size_t end = std::min(path.find_first_not_of(digits, at), path.size());
        if (const auto number = parseInteger(path.substr(at, end - at))) numbers.push_back(*number);
        at = end;
    }
    return numbers;
}

} // namespace

LinkRouter::LinkRouter(NotificationCenter& bus) : center(bus) {}

void LinkRouter::route(std::string_view address) {
    const auto target = parseLink(address);
    if (!target) return;
    if (target->host == "openstyle") {
        for (const std::int64_t id : numbersIn(target->path))
            center.post(notifications::openStyleNotif, id);
        return;
    }
    logLine("Unsupported link: " + std::string(address));
}

} // namespace tessaril
