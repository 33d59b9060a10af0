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

std::int64_t generateUniqueID(const std::function<bool(std::int64_t)>& isTaken) {
    for (;;) {
        const std::int64_t id = randomDraw();
        if (!isTaken(id)) return id;
    }
}

std::int64_t generateUniqueID(const styleDatabase& database) {
    return generateUniqueID([&](std::int64_t id) {
        return std::ranges::find(database.styles, id, &styleContainer::uniqueID) !=
               database.styles.end();
    });
}

styleDatabase makeEmptyDatabase() {
    return {.dbVersion = currentDatabaseVersion,
            .styles = {},
            .randomHash = randomDraw(),
            .dateModified = now()};
}

} // namespace tessaril
