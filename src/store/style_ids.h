#pragma once

#include <cstdint>
#include <mutex>
#include <set>

namespace tessaril {

/// A process-wide set of style identifiers: the styles that are being updated, those whose
/// properties are open. Safe to use from any thread.
class StyleIDs {
public:
    void add(std::int64_t id);
    void remove(std::int64_t id);
    bool contains(std::int64_t id) const;
    bool isEmpty() const;

private:
    mutable std::mutex mutex;
    std::set<std::int64_t> ids;
};

} // namespace tessaril
