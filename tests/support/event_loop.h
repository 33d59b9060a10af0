#pragma once

#include <QTest>

namespace tessaril::testing {

/// Lets the event loop run until `condition` holds; false when it never did.
template <class Condition>
[[nodiscard]] bool eventually(Condition condition) {
    constexpr int bound = 120'000; // milliseconds
    return QTest::qWaitFor(condition, bound);
}

} // namespace tessaril::testing
