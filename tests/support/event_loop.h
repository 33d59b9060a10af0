#pragma once

#include <QEventLoop>
#include <QTest>
#include <QTimer>

namespace tessaril::testing {

/// Lets the event loop run until `condition` holds; false when it never did. The loop never
/// pauses: a browser engine's work comes in many small steps.
template <class Condition>
[[nodiscard]] bool eventually(Condition condition) {
    using namespace std::chrono_literals;
    QEventLoop loop;
    QTimer look, bound;
    QObject::connect(&look, &QTimer::timeout, &loop, [&] {
        if (condition()) loop.quit();
    });
    QObject::connect(&bound, &QTimer::timeout, &loop, &QEventLoop::quit);
    look.start(1ms);
    bound.start(120s);
    if (!condition()) loop.exec();
    return condition();
}

} // namespace tessaril::testing
