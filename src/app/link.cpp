#include "app/link.h"

#include "model/ascii.h"
#include "model/text.h"

#include <algorithm>

namespace tessaril {

namespace {

bool isScheme(std::string_view text) {
    const auto mayFollow = [](char c) {
        return isASCIILetter(c) || isASCIIDigit(c) || c == '+' || c == '-' || c == '.';
    };
    return !text.empty() && isASCIILetter(text.front()) && std::ranges::all_of(text, mayFollow);
}

bool isForbidden(char c) {
    return static_cast<unsigned char>(c) <= ' ' || c == 0x7F;
}

} // namespace

std::optional<link> parseLink(std::string_view address) {
    constexpr std::string_view separator = "://";
    const std::size_t schemeEnd = address.find(separator);
    if (schemeEnd == std::string_view::npos || !isScheme(address.substr(0, schemeEnd)))
        return std::nullopt;
    if (std::ranges::any_of(address, isForbidden)) return std::nullopt;

    const std::string_view rest = address.substr(schemeEnd + separator.size());
    const std::size_t authorityEnd = std::min(rest.find_first_of("/?#"), rest.size());
    std::string_view host = rest.substr(0, authorityEnd);
    if (const auto user = host.rfind('@'); user != std::string_view::npos)
        host.remove_prefix(user + 1);
    if (!host.starts_with('[')) host = host.substr(0, host.rfind(':'));

    std::string_view path = rest.substr(authorityEnd);
    path = path.substr(0, path.find_first_of("?#"));
    auto decodedHost = percentDecoded(host);
    auto decodedPath = percentDecoded(path);
    if (!decodedHost || !decodedPath || !isValidUTF8(*decodedHost) || !isValidUTF8(*decodedPath))
        return std::nullopt;
    return link{lowercasedASCII(address.substr(0, schemeEnd)), lowercasedASCII(*decodedHost),
                std::move(*decodedPath)};
}

} // namespace tessaril
