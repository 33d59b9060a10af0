#include "desktop/start_arguments.h"

#include "model/text.h"

#include <QByteArray>

#include <optional>
#include <string_view>

namespace tessaril {

namespace {

constexpr std::string_view separator = "://";

/// The scheme in lower case; empty for what is no address (RFC 3986, 3.1).
std::string schemeOf(std::string_view argument) {
    const std::size_t end = argument.find(separator);
    if (end == std::string_view::npos) return {};
    std::string scheme = lowercasedASCII(argument.substr(0, end));
    constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyz";
    constexpr std::string_view allowed = "abcdefghijklmnopqrstuvwxyz0123456789+-.";
    if (scheme.empty() || letters.find(scheme.front()) == letters.npos) return {};
    return scheme.find_first_not_of(allowed) == scheme.npos ? scheme : std::string();
}

/// The path of a file address (RFC 8089), its bytes as they were before the encoding.
std::optional<std::string> pathOfFileAddress(std::string_view address) {
    std::string_view rest = address.substr(address.find(separator) + separator.size());
    const std::size_t slash = rest.find('/');
    if (slash == std::string_view::npos) return std::nullopt;
    const std::string host = lowercasedASCII(rest.substr(0, slash));
    if (!host.empty() && host != "localhost") return std::nullopt;
    rest = rest.substr(slash, rest.find_first_of("?#", slash) - slash);
    return QByteArray::fromPercentEncoding(
               QByteArray(rest.data(), static_cast<qsizetype>(rest.size())))
        .toStdString();
}

std::optional<std::string> absoluteArgument(const std::string& argument,
                                            const std::filesystem::path& folder) {
    if (argument.empty()) return std::nullopt;
    const std::string scheme = schemeOf(argument);
    if (scheme == "file") return pathOfFileAddress(argument);
    if (!scheme.empty()) return argument;
    // No further clean-up: ".." behind a symbolic link does not lead where the text says.
    return (folder / argument.substr(argument.starts_with("./") ? 2 : 0)).string();
}

} // namespace

std::vector<std::string> absoluteArguments(std::span<const std::string> arguments,
                                           const std::filesystem::path& folder) {
    std::vector<std::string> absolute;
    for (const std::string& argument : arguments)
        if (auto made = absoluteArgument(argument, folder)) absolute.push_back(std::move(*made));
    return absolute;
}

} // namespace tessaril
