#pragma once

#include <string>
#include <string_view>

namespace tessaril {

/// Writes the text that the JSON string `token` (RFC 8259, with its quotes) stands for into `out`.
/// Gives whether every escape in it is one, half a surrogate pair being none. Takes for granted
/// that the token is UTF-8 and holds no bare quote or control character.
bool decodeJSONString(std::string_view token, std::string& out);

} // namespace tessaril
