#pragma once

#include "model/style_container.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace tessaril {

/// The version that every database made here carries. A database read from a file keeps its own.
inline constexpr std::int64_t currentDatabaseVersion = 1;

/// The document.
struct styleDatabase {
    std::int64_t dbVersion = currentDatabaseVersion;
    std::vector<styleContainer> styles; ///< in the order in which the list shows them
    std::int64_t randomHash = 0;        ///< change token, drawn anew at every save; no hash
    std::optional<date> dateModified;   ///< time of the last save

    bool operator==(const styleDatabase&) const = default;
};

/// A uniformly random number, 0 to 4294967295, from the system's cryptographic source.
std::int64_t randomDraw();

/// A draw for which `isTaken` is false.
std::int64_t generateUniqueID(const std::function<bool(std::int64_t)>& isTaken);

/// A draw that no style in `database` carries as `uniqueID`.
std::int64_t generateUniqueID(const styleDatabase& database);

/// A database without styles, with a fresh change token and modified now.
styleDatabase makeEmptyDatabase();

} // namespace tessaril
