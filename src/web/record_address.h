#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

// The address of the record store, as the user writes it.
namespace tessaril {

/// Where the records are: in an SQLite file, or on a PostgreSQL server.
struct recordAddress {
    /// An absolute path; empty for a server.
    std::string file;
    /// How the server is reached, by the keywords of libpq (PostgreSQL's documentation, "Parameter
    /// Key Words"), decoded; `host` is always among them. Empty for a file.
    std::map<std::string, std::string, std::less<>> server;

    bool isFile() const { return !file.empty(); }

    bool operator==(const recordAddress&) const = default;
};

enum class recordAddressFault {
    empty,
    notUnderstood, ///< of another form, or with a parameter that is not let through
    holdsPassword, ///< which belongs in no address
};

/// Takes `/absolute/path`, `sqlite:/absolute/path` and `file:///absolute/path` (percent-encoded;
/// also with one slash) for files; `postgresql://user@host:port/database?parameter=value`
/// (percent-encoded, as libpq has it; also `postgres:`) for servers. A directory of sockets is
/// given as the parameter `host`. Only parameters that say where the server is and how its
/// connection is secured are let through, as others could undo time-outs or read other files. White
/// space around the text does not count.
std::variant<recordAddress, recordAddressFault> parseRecordAddress(std::string_view text);

/// Whether the way to the server leads over no network.
bool isOnThisMachine(const recordAddress& server);

/// Under what the password of the server's user is kept: the address without its parameters.
std::string accountOf(const recordAddress& server);

/// A server's address without the password that it holds; nothing when what is left is no address.
std::optional<std::string> withoutPassword(std::string_view text);

} // namespace tessaril
