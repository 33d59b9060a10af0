#include "desktop/termination_signals.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>

namespace tessaril {

namespace {

// A handler may do next to nothing: it notes the signal and wakes the event loop through a pipe.
std::atomic<bool> signalled = false;
std::array<int, 2> wakeUp{-1, -1};

void handle(int) {
    signalled = true;
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = ::write(wakeUp[1], &byte, 1);
}

} // namespace

TerminationSignals::TerminationSignals() {
    signalled = false;
    if (::pipe2(wakeUp.data(), O_CLOEXEC | O_NONBLOCK) != 0) return;
    auto* notifier = new QSocketNotifier(wakeUp[0], QSocketNotifier::Read, qApp);
    QObject::connect(notifier, &QSocketNotifier::activated, notifier, [notifier] {
        notifier->setEnabled(false);
        // Not quit(), which open windows may refuse.
        QCoreApplication::exit();
    });

    struct sigaction action {};
    action.sa_handler = handle;
    action.sa_flags = static_cast<int>(SA_RESTART | SA_RESETHAND);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        ::sigaction(signal, &action, nullptr);
}

bool TerminationSignals::haveCome() const {
    return signalled;
}

} // namespace tessaril
