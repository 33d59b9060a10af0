#pragma once

#include "model/style_database.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace tessaril {

/// The database as the process holds it. Styles are shared and never change in place: a copy costs
/// pointers only, and an unchanged style is the same pointer.
struct liveDatabase {
    using styleList = std::vector<std::shared_ptr<const styleContainer>>;

    std::int64_t dbVersion = currentDatabaseVersion;
    styleList styles;
    std::int64_t randomHash = 0;
    std::optional<date> dateModified;
};

liveDatabase liveDatabaseFrom(styleDatabase database);

/// The position of the first style that carries `id`.
std::optional<std::size_t> indexOfStyle(const liveDatabase::styleList& styles, std::int64_t id);

/// A draw that no style of the list carries as `uniqueID`.
std::int64_t generateUniqueID(const liveDatabase::styleList& styles);

} // namespace tessaril
