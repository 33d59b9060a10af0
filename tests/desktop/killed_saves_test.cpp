#include "desktop/posix_file_system.h"
#include "model/database_json.h"
#include "support/temporary_folder.h"

#include <QElapsedTimer>
#include <QProcess>

#include <gtest/gtest.h>

#include <csignal>
#include <random>

namespace tessaril {

namespace {

using testing::TemporaryFolder;

constexpr int kills = 220;

/// The state of every style in the document, in order; nothing when it is not whole.
std::optional<std::vector<int>> statesIn(const std::filesystem::path& file) {
    auto bytes = PosixFileSystem().read(file);
    const auto document = bytes ? decodeDatabase(std::move(*bytes)) : std::nullopt;
    if (!document) return std::nullopt;
    std::vector<int> states;
    for (const styleContainer& style : document->styles)
        states.push_back(std::atoi(style.styleData.sections.front().code.c_str()));
    return states;
}

/// Whether a save may have found the styles so: all in one state, or the first ones one further.
bool isExpected(const std::vector<int>& states) {
    const bool ordered = std::is_sorted(states.rbegin(), states.rend());
    return states.size() == 6 && ordered && states.front() - states.back() <= 1;
}

} // namespace

TEST(KilledSaves, leaveAWholeDocumentInAnExpectedStateThatNeverGoesBack) {
    const TemporaryFolder container;
    std::mt19937 random(17);
    int confirmed = 0;
    for (int kill = 0; kill < kills; ++kill) {
        QProcess process;
        process.start(TESSARIL_PROGRAMS "/tessaril_saving_process",
                      {QString::fromStdString(container.path.string())});
        // Some saves are confirmed first, then the instant is random within the next ones.
        const int confirmations = 1 + static_cast<int>(random() % 3);
        for (int seen = 0; seen < confirmations; ++seen) {
            while (!process.canReadLine())
                ASSERT_TRUE(process.waitForReadyRead(60000)) << "kill " << kill;
            confirmed = process.readLine().trimmed().toInt();
        }
        const qint64 instant = static_cast<qint64>(random() % 6'000'000); // nanoseconds
        for (QElapsedTimer timer =
                 [] {
                     QElapsedTimer t;
                     t.start();
                     return t;
                 }();
             timer.nsecsElapsed() < instant;) {
        }
        ASSERT_EQ(::kill(static_cast<pid_t>(process.processId()), SIGKILL), 0);
        ASSERT_TRUE(process.waitForFinished(60000));
        ASSERT_EQ(process.exitStatus(), QProcess::CrashExit) << "it ended by itself";
        while (process.canReadLine())
            confirmed = process.readLine().trimmed().toInt();

        const auto document = statesIn(container / "styledb.sdb");
        ASSERT_TRUE(document) << "kill " << kill;
        ASSERT_TRUE(isExpected(*document)) << "kill " << kill;
        ASSERT_GE(document->back(), confirmed) << "kill " << kill << " lost a finished save";
        const auto message = statesIn(container / "wormhole/styleDBUpdated");
        ASSERT_TRUE(message && isExpected(*message)) << "kill " << kill;
    }
    EXPECT_GT(confirmed, kills);

    removeStaleStagedFiles(container.path);
    removeStaleStagedFiles(container / "wormhole");
    EXPECT_EQ(container.names().size(), 2U) << "the document and the channel, nothing torn";
}

} // namespace tessaril
