#include "store/style_ids.h"

namespace tessaril {

void StyleIDs::add(std::int64_t id) {
    const std::lock_guard lock(mutex);
    ids.insert(id);
}

void StyleIDs::remove(std::int64_t id) {
    const std::lock_guard lock(mutex);
    ids.erase(id);
}

bool StyleIDs::contains(std::int64_t id) const {
    const std::lock_guard lock(mutex);
    return ids.contains(id);
}

bool StyleIDs::isEmpty() const {
    const std::lock_guard lock(mutex);
    return ids.empty();
}

} // namespace tessaril
