#pragma once

#include "platform/record_store.h"

#include <optional>
#include <string>

namespace tessaril {

/// A record's fields as one JSON object of strings and integers; nothing when a text is not UTF-8.
std::optional<std::string> encodeRecordFields(const recordFields& fields);

/// Reads what `encodeRecordFields` wrote; nothing for anything else.
std::optional<recordFields> decodeRecordFields(const std::string& json);

} // namespace tessaril
