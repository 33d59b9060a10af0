#pragma once

#include "platform/script_engine.h"

#include <optional>
#include <string_view>

namespace tessaril {

/// The files that are shipped with the application.
class Resources {
public:
    virtual ~Resources() = default;

    /// The script `name` (with its extension) and its file address; nothing when it is missing,
    /// unreadable or not UTF-8.
    virtual std::optional<scriptSource> script(std::string_view name) const = 0;
};

} // namespace tessaril
