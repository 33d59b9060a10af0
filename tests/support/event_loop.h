#pragma once

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTest>
#include <QTimer>

namespace tessaril::testing {

/// Lets the event loop run until `condition` holds; false when it never did. The loop pauses for
/// nothing but events: a browser engine's work comes in many small steps.
template <class Condition>
[[nodiscard]] bool eventually(Condition condition) {
    using namespace std::chrono_literals;
    const QDeadlineTimer bound(120s);
    while (!condition()) {
        if (bound.hasExpired()) return false;
        QEventLoop loop;
        QTimer::singleShot(5ms, &loop, &QEventLoop::quit);
        loop.exec();
        // What was to be deleted from outside any loop waits for this.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return true;
}

} // namespace tessaril::testing
