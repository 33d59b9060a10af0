#pragma once

#include "platform/url_loader.h"

#include <optional>
#include <string>

namespace tessaril {

struct loadedText {
    std::string text;    ///< UTF-8
    std::string address; ///< that it came from in the end, after redirects
};

/// The whole body of an address as text, without a leading byte-order mark. Waits for it; never to
/// be called on the main thread. Nothing, and one log line that says why, when it cannot be loaded
/// or is not UTF-8, whatever encoding the server claims.
/// - request: its address may be one that a person typed; see `webAddressFrom`
std::optional<loadedText> loadText(UrlLoader& loader, urlRequest request);

} // namespace tessaril
