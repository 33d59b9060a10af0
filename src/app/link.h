#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tessaril {

/// The parts of an address that decide where a link leads.
struct link {
    std::string scheme; ///< in lower case
    std::string host;   ///< in lower case, without user and port
    std::string path;   ///< percent-decoded, with its leading slash; may be empty

    bool operator==(const link&) const = default;
};

/// The parts of "scheme://host/path…" (RFC 3986); nothing when `address` is not such an address:
/// no authority, a space or control character, a broken percent escape.
std::optional<link> parseLink(std::string_view address);

} // namespace tessaril
