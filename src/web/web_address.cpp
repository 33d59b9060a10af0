#include "web/web_address.h"

#include "model/ascii.h"
#include "model/text.h"

#include <algorithm>
#include <array>

namespace tessaril {

namespace {

bool isControl(char c) {
    return static_cast<unsigned char>(c) < ' ' || c == 0x7F;
}

bool isForeign(char c) {
    return static_cast<unsigned char>(c) >= 0x80;
}

bool isOneOf(char c, std::string_view chars) {
    return chars.find(c) != std::string_view::npos;
}

/// Unreserved characters and those that separate within a part.
bool isPlain(char c) {
    return isASCIILetter(c) || isASCIIDigit(c) || isOneOf(c, "-._~!$&'()*+,;=");
}

bool isPathCharacter(char c) {
    return isPlain(c) || isOneOf(c, ":@/?");
}

bool isEscape(std::string_view text) {
    return text.size() >= 3 && text[0] == '%' && hexDigit(text[1]) && hexDigit(text[2]);
}

bool isPath(std::string_view text) {
    for (std::size_t at = 0; at < text.size(); ++at)
        if (!isPathCharacter(text[at]) && !isEscape(text.substr(at))) return false;
    return true;
}

std::string encodedPath(std::string_view text) {
    std::string encoded;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char c = text[at];
        if (isPathCharacter(c) || isEscape(text.substr(at)))
            encoded += c;
        else
            appendPercentEncoded(encoded, c);
    }
    return encoded;
}

/// The parts of an authority.
struct hostAndPort {
    std::string_view user; ///< with its "@"
    std::string_view host;
    std::string_view port;
};

hostAndPort partsOf(std::string_view authority) {
    hostAndPort parts;
    const std::size_t at = authority.rfind('@') + 1; // 0 where there is none
    parts.user = authority.substr(0, at);
    authority.remove_prefix(at);
    const std::size_t literal = authority.starts_with('[') ? authority.find(']') : 0;
    const std::size_t colon = authority.find(':', std::min(literal, authority.size()));
    parts.host = authority.substr(0, colon);
    if (colon != std::string_view::npos) parts.port = authority.substr(colon + 1);
    return parts;
}

bool isHost(std::string_view host) {
    if (host.empty()) return false;
    if (host.starts_with('['))
        return host.ends_with(']') &&
               std::ranges::all_of(host.substr(1, host.size() - 2),
                                   [](char c) { return hexDigit(c) || isOneOf(c, ":."); });
    return isValidUTF8(host) &&
           std::ranges::all_of(host, [](char c) { return isPlain(c) || isForeign(c); });
}

bool isAuthority(std::string_view authority) {
    const hostAndPort parts = partsOf(authority);
    return isHost(parts.host) && isPath(parts.user) &&
           std::ranges::all_of(parts.port, isASCIIDigit);
}

/// The length of a leading scheme without its colon; 0 where there is none.
std::size_t schemeLength(std::string_view text) {
    if (text.empty() || !isASCIILetter(text.front())) return 0;
    const auto end = std::ranges::find_if_not(
        text, [](char c) { return isASCIILetter(c) || isASCIIDigit(c) || isOneOf(c, "+-."); });
    if (end == text.end() || *end != ':') return 0;
    return static_cast<std::size_t>(end - text.begin());
}

void setPathAndQuery(webAddress& address, std::string_view text) {
    const std::size_t mark = text.find('?');
    address.path = text.substr(0, mark);
    address.query.reset();
    if (mark != std::string_view::npos) address.query = text.substr(mark + 1);
}

/// The path of the reference's segments behind the base's folder.
std::string mergedPath(const webAddress& base, std::string_view path) {
    const std::string folder = base.path.substr(0, base.path.rfind('/') + 1);
    return (folder.empty() ? "/" : folder) + std::string(path);
}

/// Section 5.2.4, on a path that begins with a slash.
std::string withoutDotSegments(std::string_view path) {
    if (path.empty()) return {};
    std::vector<std::string_view> kept;
    const auto segments = split(path.substr(1), "/");
    for (std::size_t i = 0; i < segments.size(); ++i) {
        const std::string_view segment = segments[i];
        const bool isLast = i + 1 == segments.size();
        if (segment != "." && segment != "..") {
            kept.push_back(segment);
            continue;
        }
        if (segment == ".." && !kept.empty()) kept.pop_back();
        if (isLast) kept.emplace_back(); // the folder itself
    }
    std::string result;
    for (const std::string_view segment : kept)
        result.append("/").append(segment);
    return result;
}

/// Behind the scheme: "//" and an authority, path and query.
std::optional<webAddress> absoluteAddress(std::string_view scheme, std::string_view rest) {
    webAddress address;
    address.scheme = lowercasedASCII(scheme);
    if ((address.scheme != "http" && address.scheme != "https") || !rest.starts_with("//"))
        return std::nullopt;
    rest.remove_prefix(2);
    const std::size_t end = std::min(rest.find_first_of("/?"), rest.size());
    address.authority = rest.substr(0, end);
    if (!isAuthority(address.authority)) return std::nullopt;
    setPathAndQuery(address, rest.substr(end));
    return address;
}

std::string_view withoutFragment(std::string_view text) {
    return text.substr(0, text.find('#'));
}

bool isNumber(std::string_view label) {
    return std::ranges::all_of(label, isASCIIDigit) || lowercasedASCII(label).starts_with("0x");
}

/// In lower case and without the dot that may end it.
std::string hostOf(const webAddress& address) {
    std::string host = lowercasedASCII(partsOf(address.authority).host);
    if (host.ends_with('.')) host.pop_back();
    return host;
}

bool isLocalEnding(std::string_view label) {
    constexpr std::array<std::string_view, 7> localEndings{
        "localhost", "local", "localdomain", "internal", "lan", "home", "corp"};
    return std::ranges::find(localEndings, label) != localEndings.end();
}

/// Of the form "a.b.c.d", in which a leading zero would mean another base.
bool isOwnIPv4(std::string_view host) {
    std::array<std::int64_t, 4> bytes{};
    const auto labels = split(host, ".");
    if (labels.size() != bytes.size()) return false;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const auto byte = parseInteger(labels[i]);
        if (!byte || *byte < 0 || *byte > 255 || std::to_string(*byte) != labels[i]) return false;
        bytes[i] = *byte;
    }
    const auto [a, b, c, d] = bytes;
    return a == 127 || a == 10 || (a == 172 && b >= 16 && b < 32) || (a == 192 && b == 168) ||
           (a == 169 && b == 254);
}

bool isOwnIPv6(std::string_view host) {
    if (host == "[::1]") return true;
    if (host.find(':') != 5) return false; // a first group of four digits
    const std::string_view group = host.substr(1, 4);
    return group.starts_with("fc") || group.starts_with("fd") || group == "fe80";
}

} // namespace

std::string webAddress::text() const {
    std::string result = scheme + "://" + authority + path;
    if (query) result.append("?").append(*query);
    return result;
}

std::optional<webAddress> parseWebAddress(std::string_view text) {
    if (text.size() > longestWebAddress) return std::nullopt;
    text = withoutFragment(text);
    const std::size_t scheme = schemeLength(text);
    if (scheme == 0) return std::nullopt;
    auto address = absoluteAddress(text.substr(0, scheme), text.substr(scheme + 1));
    if (!address || !isPath(address->path) || !isPath(address->query.value_or("")))
        return std::nullopt;
    return address;
}

std::optional<webAddress> resolvedAddress(const webAddress& base, std::string_view reference) {
    if (reference.size() > longestWebAddress) return std::nullopt;
    reference = withoutFragment(trimmed(reference));
    std::optional<webAddress> target = base;
    if (const std::size_t scheme = schemeLength(reference)) {
        target = absoluteAddress(reference.substr(0, scheme), reference.substr(scheme + 1));
    } else if (reference.starts_with("//")) {
        target = absoluteAddress(base.scheme, reference);
    } else if (reference.starts_with('?')) {
        target->query = reference.substr(1);
    } else if (!reference.empty()) {
        setPathAndQuery(*target, reference);
        if (!reference.starts_with('/')) target->path = mergedPath(base, target->path);
    }
    if (!target) return std::nullopt;
    target->path = encodedPath(withoutDotSegments(target->path));
    if (target->query) target->query = encodedPath(*target->query);
    if (target->text().size() > longestWebAddress) return std::nullopt;
    return target;
}

std::optional<webAddress> webAddressFrom(std::string_view typed) {
    typed = trimmed(typed);
    return schemeLength(typed) == 0 ? std::nullopt : resolvedAddress({}, typed);
}

std::string fileNameOf(const webAddress& address) {
    std::string_view path = address.path;
    while (path.ends_with('/'))
        path.remove_suffix(1);
    auto name = percentDecoded(path.substr(path.rfind('/') + 1));
    if (!name || !isValidUTF8(*name)) return {};
    std::ranges::replace_if(*name, isControl, ' ');
    const std::size_t dot = name->rfind('.');
    return std::string(trimmed(std::string_view(*name).substr(0, dot == 0 ? name->npos : dot)));
}

bool isOnOwnNetwork(const webAddress& address) {
    const std::string host = hostOf(address);
    if (host.starts_with('[')) return isOwnIPv6(host);
    if (std::ranges::any_of(host, isForeign)) return false; // other scripts have dots of their own
    const std::string_view last = std::string_view(host).substr(host.rfind('.') + 1);
    if (isNumber(last)) return isOwnIPv4(host);
    if (isLocalEnding(last)) return true;
    // With a dot at its end, or in letters of another script, one label is a top-level domain.
    return !contains(partsOf(address.authority).host, ".") && !host.starts_with("xn--");
}

bool isPublicSite(const webAddress& address) {
    const hostAndPort parts = partsOf(address.authority);
    if (address.scheme != "https" || !parts.user.empty()) return false;
    if (!parts.port.empty() && parts.port != "443") return false;
    const std::string host = hostOf(address);
    const std::size_t dot = host.rfind('.');
    if (dot == std::string::npos || host.starts_with('[')) return false;
    if (host.starts_with('.') || contains(host, "..")) return false;
    const std::string_view last = std::string_view(host).substr(dot + 1);
    return !last.empty() && !isNumber(last) && last != "arpa" && !isLocalEnding(last);
}

} // namespace tessaril
