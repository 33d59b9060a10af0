#include "web/loaded_text.h"

#include "model/log.h"
#include "model/text.h"
#include "web/web_address.h"

#include <utility>

namespace tessaril {

std::optional<loadedText> loadText(UrlLoader& loader, urlRequest request) {
    const auto address = webAddressFrom(request.address);
    if (!address) {
        logLine("Error loading " + forLog(request.address) + ": no address of the web");
        return std::nullopt;
    }
    request.address = address->text();
    auto response = loader.load(request);
    if (!response || response->hasFailed) return std::nullopt;
    auto text = textFromUTF8(std::move(response->body));
    if (!text) logLine("Error loading " + forLog(request.address) + ": not UTF-8");
    if (!text) return std::nullopt;
    return loadedText{std::move(*text), std::move(response->finalAddress)};
}

} // namespace tessaril
