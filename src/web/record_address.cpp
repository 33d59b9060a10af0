#include "web/record_address.h"

#include "model/ascii.h"
#include "model/text.h"

#include <algorithm>
#include <array>
#include <optional>

namespace tessaril {

namespace {

constexpr std::array<std::string_view, 8> knownParameters{
    "application_name", "channel_binding", "host",    "port",
    "sslcert",          "sslkey",          "sslmode", "sslrootcert"};
constexpr std::array<std::string_view, 2> passwordParameters{"password", "sslpassword"};
constexpr std::array<std::string_view, 6> sslModes{"disable", "allow",     "prefer",
                                                   "require", "verify-ca", "verify-full"};

template <typename Texts>
bool isAmong(const Texts& texts, std::string_view text) {
    return std::ranges::find(texts, text) != texts.end();
}

/// What stands behind the scheme and its colon, when it is this one.
std::optional<std::string_view> behindScheme(std::string_view text, std::string_view scheme) {
    if (text.size() <= scheme.size() || text[scheme.size()] != ':' ||
        lowercasedASCII(text.substr(0, scheme.size())) != scheme)
        return std::nullopt;
    return text.substr(scheme.size() + 1);
}

/// What stands behind "postgresql://".
std::optional<std::string_view> behindServerScheme(std::string_view text) {
    for (const std::string_view scheme : {"postgresql", "postgres"})
        if (const auto rest = behindScheme(text, scheme); rest && rest->starts_with("//"))
            return rest->substr(2);
    return std::nullopt;
}

bool isPlainText(std::string_view text) {
    return isValidUTF8(text) && std::ranges::none_of(text, [](char c) {
               return static_cast<unsigned char>(c) < ' ' || c == 0x7F;
           });
}

/// A decoded part of an address; nothing when it is none.
std::optional<std::string> decodedPart(std::string_view text) {
    auto decoded = percentDecoded(text);
    if (!decoded || !isPlainText(*decoded)) return std::nullopt;
    return decoded;
}

/// Where a password stands before a host, with its colon; empty where there is none. In doubt it is
/// one: a password may hold any character, also those that would have to be encoded.
std::string_view passwordIn(std::string_view text) {
    const std::size_t at = text.rfind('@');
    if (at == std::string_view::npos) return {};
    const std::size_t colon = text.substr(0, at).find(':');
    if (colon == std::string_view::npos) return {};
    return text.substr(colon, at - colon);
}

std::variant<recordAddress, recordAddressFault> fileAddress(std::string_view path) {
    if (!path.starts_with('/') || path.starts_with("//") || path.ends_with('/') ||
        !isPlainText(path))
        return recordAddressFault::notUnderstood;
    // No folder of the system's root, but that of a server without its scheme.
    if (!passwordIn(path.substr(0, path.find('/', 1))).empty())
        return recordAddressFault::holdsPassword;
    return recordAddress{.file = std::string(path)};
}

bool isPasswordParameter(std::string_view parameter) {
    const auto name = percentDecoded(parameter.substr(0, parameter.find('=')));
    return name && isAmong(passwordParameters, lowercasedASCII(*name));
}

bool isPort(std::string_view text) {
    const auto number = parseInteger(text);
    return number && *number > 0 && *number <= 65535 && std::ranges::all_of(text, isASCIIDigit);
}

bool isAllowed(std::string_view name, std::string_view value) {
    if (value.empty()) return false;
    if (name == "port") return isPort(value);
    if (name == "sslmode") return isAmong(sslModes, value);
    if (name == "host") return !contains(value, ","); // a list of servers is no one account
    return true;
}

/// Collects what is said of a server; nothing may be said twice.
class ServerParts {
public:
    /// - encoded: percent-encoded; an empty one says nothing
    void add(std::string_view name, std::string_view encoded) {
        if (encoded.empty()) return;
        auto value = decodedPart(encoded);
        isGood = isGood && value && isAllowed(name, *value) &&
                 parts.emplace(name, std::move(*value)).second;
    }
    void addParameter(std::string_view parameter) {
        const std::size_t equals = parameter.find('=');
        const auto name = decodedPart(parameter.substr(0, equals));
        if (equals == std::string_view::npos || !name || !isAmong(knownParameters, *name))
            isGood = false;
        else
            add(*name, parameter.substr(equals + 1));
    }
    void refuse() { isGood = false; }

    std::variant<recordAddress, recordAddressFault> take() {
        if (!isGood || !parts.contains("host")) return recordAddressFault::notUnderstood;
        return recordAddress{.file = {}, .server = std::move(parts)};
    }

private:
    std::map<std::string, std::string, std::less<>> parts;
    bool isGood = true;
};

void addHostAndPort(ServerParts& parts, std::string_view text) {
    if (contains(text, "@")) return parts.refuse(); // that of the user was another
    std::string_view host = text.substr(0, text.find(':'));
    std::string_view behind = text.substr(host.size());
    if (text.starts_with('[')) {
        const std::size_t close = text.find(']');
        if (close == std::string_view::npos) return parts.refuse();
        host = text.substr(1, close - 1);
        behind = text.substr(close + 1);
    }
    parts.add("host", host);
    if (behind.starts_with(':'))
        parts.add("port", behind.substr(1));
    else if (!behind.empty())
        parts.refuse();
}

using ParameterList = std::vector<std::string_view>;

/// What stands behind the first question mark.
ParameterList parametersOf(std::string_view rest) {
    const std::size_t mark = rest.find('?');
    return mark == std::string_view::npos ? ParameterList{} : split(rest.substr(mark + 1), "&");
}

/// - place: what stands before the parameters, without a password
std::variant<recordAddress, recordAddressFault> serverOf(std::string_view place,
                                                         const ParameterList& parameters) {
    ServerParts parts;
    // Parameters that did not begin with a question mark, one of which may be a password.
    if (place.find_first_of("&;= ") != std::string_view::npos) parts.refuse();
    const std::size_t slash = place.find('/');
    if (slash != std::string_view::npos) {
        const std::string_view name = place.substr(slash + 1);
        if (name.find_first_of(":@") != std::string_view::npos) parts.refuse();
        parts.add("dbname", name);
    }
    place = place.substr(0, slash);
    if (const std::size_t at = place.find('@'); at != std::string_view::npos) {
        parts.add("user", place.substr(0, at));
        place.remove_prefix(at + 1);
    }
    addHostAndPort(parts, place);
    for (const std::string_view parameter : parameters)
        parts.addParameter(parameter);
    return parts.take();
}

std::variant<recordAddress, recordAddressFault> serverAddress(std::string_view rest) {
    const std::string_view place = rest.substr(0, rest.find('?'));
    const ParameterList parameters = parametersOf(rest);
    if (!passwordIn(place).empty() || std::ranges::any_of(parameters, isPasswordParameter))
        return recordAddressFault::holdsPassword;
    auto server = serverOf(place, parameters);
    // The first question mark may be one of a password.
    if (std::holds_alternative<recordAddressFault>(server) && !passwordIn(rest).empty())
        return recordAddressFault::holdsPassword;
    return server;
}

std::string withoutPasswordParameters(std::string_view rest) {
    std::string result(rest.substr(0, rest.find('?')));
    char separator = '?';
    for (const std::string_view parameter : parametersOf(rest)) {
        if (isPasswordParameter(parameter)) continue;
        result.append(1, separator).append(parameter);
        separator = '&';
    }
    return result;
}

std::string encoded(std::string_view text) {
    std::string result;
    for (const char c : text) {
        if (isASCIILetter(c) || isASCIIDigit(c) || contains("-._~", std::string_view(&c, 1)))
            result += c;
        else
            appendPercentEncoded(result, c);
    }
    return result;
}

std::string_view partOf(const recordAddress& address, std::string_view name) {
    const auto found = address.server.find(name);
    return found == address.server.end() ? std::string_view{} : found->second;
}

} // namespace

std::variant<recordAddress, recordAddressFault> parseRecordAddress(std::string_view text) {
    text = trimmed(text);
    if (text.empty()) return recordAddressFault::empty;
    if (text.starts_with('/')) return fileAddress(text);
    if (auto path = behindScheme(text, "sqlite")) {
        if (path->starts_with("///")) path->remove_prefix(2);
        return fileAddress(*path);
    }
    if (const auto rest = behindScheme(text, "file")) {
        const auto path = percentDecoded(*rest);
        if (!path || contains(*rest, "?") || contains(*rest, "#"))
            return recordAddressFault::notUnderstood;
        return fileAddress(std::string_view(*path).substr(path->starts_with("///") ? 2 : 0));
    }
    if (const auto rest = behindServerScheme(text)) return serverAddress(*rest);
    return recordAddressFault::notUnderstood;
}

bool isOnThisMachine(const recordAddress& server) {
    const std::string host = lowercasedASCII(partOf(server, "host"));
    if (host.starts_with('/') || host.starts_with('@')) return true; // sockets of this machine
    if (host == "localhost" || host == "::1") return true;
    return host.starts_with("127.") &&
           std::ranges::all_of(host, [](char c) { return isASCIIDigit(c) || c == '.'; });
}

std::string accountOf(const recordAddress& server) {
    std::string account = "postgresql://";
    if (const auto user = partOf(server, "user"); !user.empty()) account += encoded(user) + '@';
    const std::string_view host = partOf(server, "host");
    account += contains(host, ":") ? '[' + std::string(host) + ']' : encoded(host);
    if (const auto port = partOf(server, "port"); !port.empty()) account.append(":").append(port);
    return account + '/' + encoded(partOf(server, "dbname"));
}

std::optional<std::string> withoutPassword(std::string_view text) {
    const std::string_view whole = trimmed(text);
    const auto rest = behindServerScheme(whole);
    if (!rest) return std::nullopt;
    const std::string scheme(whole.substr(0, whole.size() - rest->size()));
    // Where the parameters begin depends on whether the first question mark is one of the password.
    for (const std::string_view searched : {rest->substr(0, rest->find('?')), *rest}) {
        std::string left(*rest);
        if (const std::string_view password = passwordIn(searched); !password.empty())
            left.erase(static_cast<std::size_t>(password.data() - rest->data()), password.size());
        std::string result = scheme + withoutPasswordParameters(left);
        if (std::holds_alternative<recordAddress>(parseRecordAddress(result))) return result;
    }
    return std::nullopt;
}

} // namespace tessaril
