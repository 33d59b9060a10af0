#pragma once

#include "platform/url_loader.h"

#include <optional>
#include <string>

namespace tessaril {

/// The whole body of an address as text, without a leading byte-order mark. Waits for it; never to
/// be called on the main thread. Nothing, and one log line that says why, when it cannot be loaded
/// or is not UTF-8, whatever encoding the server claims. Nothing either where an address of the
/// user's own network redirects to a public host, whose text would pass for one of that network.
/// - request: its address may be one that a person typed; see `webAddressFrom`
std::optional<std::string> loadText(UrlLoader& loader, urlRequest request);

} // namespace tessaril
