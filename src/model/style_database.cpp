#include "model/style_database.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace tessaril {

std::int64_t randomDraw() {
    std::uint32_t draw = 0;
    if (getentropy(&draw, sizeof draw) != 0)
        throw std::system_error(errno, std::generic_category(), "getentropy");
    return draw;
}

std::int64_t generateUniqueID(const styleDatabase& database) {
    for (;;) {
        const std::int64_t id = randomDraw();
        const auto carriesID = [id](const styleContainer& style) { return style.uniqueID == id; };
        if (std::ranges::none_of(database.styles, carriesID)) return id;
    }
}

styleDatabase makeEmptyDatabase() {
    return {.dbVersion = currentDatabaseVersion,
            .styles = {},
            .randomHash = randomDraw(),
            .dateModified = now()};
}

} // namespace tessaril
