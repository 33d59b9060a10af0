#include "desktop/termination_signals.h"

#include <QApplication>
#include <QDialog>
#include <QTimer>

#include <gtest/gtest.h>

#include <csignal>

namespace tessaril {
namespace {

TEST(TerminationSignals, EndTheEventLoopAlsoBelowAnOpenQuestion) {
    const TerminationSignals termination;
    EXPECT_FALSE(termination.haveCome());
    bool asked = false;
    QTimer::singleShot(0, [&] {
        QTimer::singleShot(0, [] { std::raise(SIGTERM); });
        QDialog().exec();
        asked = true;
    });
    EXPECT_EQ(QApplication::exec(), 0);
    EXPECT_TRUE(asked);
    EXPECT_TRUE(termination.haveCome());
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        std::signal(signal, SIG_DFL);
}

} // namespace
} // namespace tessaril
