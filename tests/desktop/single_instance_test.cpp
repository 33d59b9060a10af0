#include "desktop/single_instance.h"
#include "support/temporary_folder.h"

#include <QCoreApplication>
#include <QLocalSocket>
#include <QThread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <atomic>
#include <memory>

namespace tessaril {
namespace {

using namespace testing;
using role = SingleInstance::role;

/// A start on a thread of its own, as it would be in a process of its own.
class ElsewhereStart {
public:
    ElsewhereStart(const std::filesystem::path& container, laterStart start)
        : thread(QThread::create([this, container, start = std::move(start)] {
            SingleInstance other(container);
            result = other.begin(start, [](const laterStart&) {});
        })) {
        thread->start();
    }

    /// Lets the main thread's event loop run until the start has ended.
    role outcome() {
        while (!thread->wait(0))
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        return result;
    }

private:
    role result = role::refused;
    std::unique_ptr<QThread> thread;
};

TEST(SingleInstance, HandsArgumentsOfAnyBytesAndLengthToTheFirst) {
    const TemporaryFolder container;
    std::vector<laterStart> received;
    SingleInstance first(container.path);
    ASSERT_EQ(first.begin({}, [&](laterStart start) { received.push_back(std::move(start)); }),
              role::first);

    const laterStart none;
    const laterStart odd{{"", "a\nb", std::string("nul\0byte", 8), "\xff\xfe", "--flag"}, "token"};
    const laterStart large{std::vector<std::string>(50, std::string(100'000, 'x')), ""};
    for (const laterStart& start : {none, odd, large}) {
        ElsewhereStart elsewhere(container.path, start);
        EXPECT_EQ(elsewhere.outcome(), role::handedOver);
    }
    EXPECT_THAT(received, ::testing::ElementsAre(none, odd, large));

    struct stat status {};
    ASSERT_EQ(::stat((container / "instance.socket").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0077, 0u); // this user's alone
}

TEST(SingleInstance, OfManyStartsAtOneInstantExactlyOneIsTheFirst) {
    const TemporaryFolder container;
    constexpr int starts = 6;
    std::atomic<int> ready = 0;
    std::atomic<int> firsts = 0;
    std::atomic<int> ended = 0;
    std::atomic<int> received = 0;
    std::vector<std::unique_ptr<QThread>> threads;
    for (int start = 0; start < starts; ++start)
        threads.emplace_back(QThread::create([&] {
            SingleInstance instance(container.path);
            ++ready;
            while (ready < starts)
                QThread::yieldCurrentThread();
            if (instance.begin({{"file"}, ""}, [&](const laterStart&) { ++received; }) ==
                role::first) {
                ++firsts;
                QEventLoop loop;
                while (ended < starts - 1)
                    loop.processEvents(QEventLoop::AllEvents, 20);
            }
            ++ended;
        }));
    for (const auto& thread : threads)
        thread->start();
    for (const auto& thread : threads)
        thread->wait();
    EXPECT_EQ(firsts, 1);
    EXPECT_EQ(received, starts - 1);
}

TEST(SingleInstance, ASocketLeftByAKilledProcessIsNoObstacle) {
    const TemporaryFolder container;
    const std::string path = container / "instance.socket";
    {
        // Bound, never unlinked: what is left when a process is killed.
        const FileDescriptor dead(::socket(AF_UNIX, SOCK_STREAM, 0));
        sockaddr_un address{AF_UNIX, {}};
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        ASSERT_EQ(::bind(dead.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    }
    writeFile(container / "instance.lock", path + "/a longer address from before");

    int received = 0;
    SingleInstance first(container.path);
    ASSERT_EQ(first.begin({}, [&](const laterStart&) { ++received; }), role::first);
    ElsewhereStart elsewhere(container.path, {});
    EXPECT_EQ(elsewhere.outcome(), role::handedOver);
    EXPECT_EQ(received, 1);
}

TEST(SingleInstance, AStartDuringTheEndOfTheFirstTakesItsPlace) {
    const TemporaryFolder container;
    SingleInstance first(container.path);
    ASSERT_EQ(first.begin({}, [](const laterStart&) { FAIL(); }), role::first);
    ElsewhereStart elsewhere(container.path, {{"file"}, ""});
    first.stopListening();
    first.release();
    EXPECT_EQ(elsewhere.outcome(), role::first);
}

TEST(SingleInstance, AFirstThatDoesNotAnswerIsReported) {
    const TemporaryFolder container;
    SingleInstance first(container.path);
    ASSERT_EQ(first.begin({}, [](const laterStart&) {}), role::first);
    SingleInstance second(container.path); // on the same thread, so that the first cannot answer
    EXPECT_EQ(second.begin({}, {}, std::chrono::milliseconds(50)), role::refused);
}

TEST(SingleInstance, AContainerTooDeepForASocketAndStrangersDoNoHarm) {
    const TemporaryFolder folder;
    const std::filesystem::path container = folder / std::string(150, 'd');
    std::filesystem::create_directory(container);
    std::vector<laterStart> received;
    SingleInstance first(container);
    ASSERT_EQ(first.begin({}, [&](laterStart start) { received.push_back(std::move(start)); }),
              role::first);

    QLocalSocket stranger;
    stranger.connectToServer(QString::fromStdString(fileContent(container / "instance.lock")));
    ASSERT_TRUE(stranger.waitForConnected());
    stranger.write(QByteArray(1'000, '\xff'));
    while (stranger.state() != QLocalSocket::UnconnectedState)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);

    ElsewhereStart elsewhere(container, {{"file"}, ""});
    EXPECT_EQ(elsewhere.outcome(), role::handedOver);
    EXPECT_THAT(received, ::testing::ElementsAre(laterStart{{"file"}, ""}));
}

} // namespace
} // namespace tessaril
