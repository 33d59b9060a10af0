#include "web/loaded_text.h"

#include "model/log.h"
#include "model/text.h"
#include "web/web_address.h"

#include <utility>

namespace tessaril {

namespace {

bool leftOwnNetwork(const webAddress& asked, const std::string& finalAddress) {
    const auto given = webAddressFrom(finalAddress);
    return given && isOnOwnNetwork(asked) && !isOnOwnNetwork(*given);
}

} // namespace

std::optional<std::string> loadText(UrlLoader& loader, urlRequest request) {
    const auto address = webAddressFrom(request.address);
    if (!address) {
        logLine("Error loading " + forLog(request.address) + ": no address of the web");
        return std::nullopt;
    }
    request.address = address->text();
    auto response = loader.load(request);
    if (!response || response->hasFailed) return std::nullopt;
    if (leftOwnNetwork(*address, response->finalAddress)) {
        logLine("Error loading " + forLog(request.address) +
                ": it leads from the own network to a public host");
        return std::nullopt;
    }
    auto text = textFromUTF8(std::move(response->body));
    if (!text) logLine("Error loading " + forLog(request.address) + ": not UTF-8");
    return text;
}

} // namespace tessaril
