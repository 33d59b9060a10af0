#include "app/link.h"
#include "desktop/single_instance.h"
#include "desktop/start_arguments.h"
#include "support/event_loop.h"
#include "support/temporary_folder.h"
#include "support/test.h"

#include <QLocalSocket>
#include <QThread>

#include <atomic>

namespace tessaril {
namespace {

using role = SingleInstance::role;
namespace fs = std::filesystem;

/// What came of a start on a thread of its own, as it would be in a process of its own, while the
/// main thread does `meanwhile` and then runs its event loop.
role startElsewhere(
    const fs::path& container, const laterStart& start,
    const std::function<void()>& meanwhile = [] {}) {
    role result = role::refused;
    const std::unique_ptr<QThread> thread(QThread::create(
        [&] { result = SingleInstance(container).begin(start, [](const laterStart&) {}); }));
    thread->start();
    meanwhile();
    EXPECT_TRUE(eventually([&] { return thread->isFinished(); }));
    return result;
}

struct SingleInstanceTest : ::testing::Test {
    role beginFirst(SingleInstance& first) {
        return first.begin({}, [this](laterStart start) { received.push_back(std::move(start)); });
    }

    const TemporaryFolder folder;
    std::vector<laterStart> received;
};

TEST_F(SingleInstanceTest, HandsArgumentsOfAnyBytesAndLengthToTheFirst) {
    // Left by one that was killed.
    writeFile(folder / "instance.socket", "");
    writeFile(folder / "instance.lock", std::string(300, 'x'));
    SingleInstance first(folder.path);
    ASSERT_EQ(beginFirst(first), role::first);
    EXPECT_TRUE(fs::is_socket(folder / "instance.socket"));
    EXPECT_EQ(fs::status(folder / "instance.socket").permissions() & fs::perms(0077), fs::perms());

    const laterStart none;
    const laterStart odd{{"", "a\nb", std::string("nul\0byte", 8), "\xff\xfe", "--flag"}, "token"};
    const laterStart large{std::vector<std::string>(50, std::string(100'000, 'x')), ""};
    for (const laterStart& start : {none, odd, large})
        EXPECT_EQ(startElsewhere(folder.path, start), role::handedOver);
    EXPECT_THAT(received, ElementsAre(none, odd, large));
}

TEST_F(SingleInstanceTest, OfManyStartsAtOneInstantExactlyOneIsTheFirst) {
    constexpr int starts = 6;
    std::atomic<int> ready = 0, firsts = 0, ended = 0, handedOver = 0;
    std::vector<std::unique_ptr<QThread>> threads;
    for (int start = 0; start < starts; ++start) {
        threads.emplace_back(QThread::create([&] {
            SingleInstance instance(folder.path);
            ++ready;
            while (ready < starts)
                QThread::yieldCurrentThread();
            if (instance.begin({{"file"}, ""}, [&](const laterStart&) { ++handedOver; }) ==
                role::first) {
                ++firsts;
                EXPECT_TRUE(eventually([&] { return ended + firsts >= starts; }));
            }
            ++ended;
        }));
        threads.back()->start();
    }
    for (const auto& thread : threads)
        thread->wait();
    EXPECT_EQ(firsts, 1);
    EXPECT_EQ(handedOver, starts - 1);
}

TEST_F(SingleInstanceTest, AFirstThatDoesNotAnswerIsReportedAndOneThatEndsReplaced) {
    SingleInstance first(folder.path);
    ASSERT_EQ(beginFirst(first), role::first);
    SingleInstance second(folder.path); // on the same thread, so that the first cannot answer
    EXPECT_EQ(second.begin({}, {}, std::chrono::milliseconds(50)), role::refused);
    EXPECT_EQ(startElsewhere(folder.path, {{"file"}, ""}, [&] { first.release(); }), role::first);
    EXPECT_THAT(received, ElementsAre());
}

TEST_F(SingleInstanceTest, AContainerTooDeepForASocketAndStrangersDoNoHarm) {
    const fs::path container = folder / std::string(150, 'd');
    fs::create_directory(container);
    SingleInstance first(container);
    ASSERT_EQ(beginFirst(first), role::first);

    QLocalSocket stranger;
    stranger.connectToServer(QString::fromStdString(fileContent(container / "instance.lock")));
    ASSERT_TRUE(stranger.waitForConnected());
    stranger.write(QByteArray(1'000, '\x7f'));
    EXPECT_TRUE(eventually([&] { return stranger.state() == QLocalSocket::UnconnectedState; }));

    EXPECT_EQ(startElsewhere(container, {{"file"}, ""}), role::handedOver);
    EXPECT_THAT(received, ElementsAre(laterStart{{"file"}, ""}));
}

TEST(StartArguments, MeanTheSameInAnotherProcess) {
    const std::string link = "tessaril://usercss/https://a.example//x.user.css?a=b&c=%20#d";
    EXPECT_TRUE(parseLink(link));
    const std::string given[] = {"tessaril://openstyle/12?a=%20#b",
                                 link,
                                 "./not utf-8 \xff.css",
                                 "../up",
                                 "/absolute/a b.less",
                                 "",
                                 "file:///a%20b/%E6%BC%A2.styl",
                                 "FILE://localhost/x%2523.css?query#part",
                                 "file://elsewhere/x.css",
                                 "file:",
                                 "odd name: // here.css"};
    EXPECT_THAT(absoluteArguments(given, "/work"),
                ElementsAre(given[0], link, "/work/not utf-8 \xff.css", "/work/../up", given[4],
                            "/a b/\xE6\xBC\xA2.styl", "/x%23.css",
                            "/work/file:", "/work/odd name: // here.css"));
}

} // namespace
} // namespace tessaril
