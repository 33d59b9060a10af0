#include "store/live_database.h"

#include <algorithm>

namespace tessaril {

liveDatabase liveDatabaseFrom(styleDatabase database) {
    liveDatabase live{.dbVersion = database.dbVersion,
                      .styles = {},
                      .randomHash = database.randomHash,
                      .dateModified = database.dateModified};
    live.styles.reserve(database.styles.size());
    for (styleContainer& style : database.styles)
        live.styles.push_back(std::make_shared<const styleContainer>(std::move(style)));
    return live;
}

std::optional<std::size_t> indexOfStyle(const liveDatabase::styleList& styles, std::int64_t id) {
    const auto found =
        std::ranges::find_if(styles, [id](const auto& style) { return style->uniqueID == id; });
    if (found == styles.end()) return std::nullopt;
    return static_cast<std::size_t>(found - styles.begin());
}

std::int64_t generateUniqueID(const liveDatabase::styleList& styles) {
    return generateUniqueID([&](std::int64_t id) { return indexOfStyle(styles, id).has_value(); });
}

} // namespace tessaril
