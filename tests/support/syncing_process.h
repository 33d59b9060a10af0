#pragma once

#include "support/event_loop.h"
#include "support/temporary_folder.h"

#include <QProcess>

#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace tessaril::testing {

/// A machine of the user: an application in a process and a folder of its own.
class SyncingProcess {
public:
    SyncingProcess(std::string recordAddress, std::string ownPassword)
        : address(std::move(recordAddress)), password(std::move(ownPassword)) {
        start();
    }
    ~SyncingProcess() { quit(); }

    void start() {
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process.start(TESSARIL_PROGRAMS "/tessaril_syncing_process",
                      {QString::fromStdString(folder.path.string()),
                       QString::fromStdString(address), QString::fromStdString(password)});
    }
    void quit() {
        process.closeWriteChannel();
        EXPECT_TRUE(eventually([&] { return process.state() == QProcess::NotRunning; }));
    }
    void kill() {
        process.kill();
        EXPECT_TRUE(eventually([&] { return process.state() == QProcess::NotRunning; }));
        rest.clear();
    }

    void pause() { ::kill(static_cast<pid_t>(process.processId()), SIGSTOP); }
    void goOn() { ::kill(static_cast<pid_t>(process.processId()), SIGCONT); }

    void tell(const std::string& command) {
        process.write((command + "\n").c_str());
        process.waitForBytesWritten(); // also where the test goes on without an event loop
    }

    /// Whether it comes to say the line, once more than it was asked for before.
    [[nodiscard]] bool says(const std::string& line) {
        return eventually([&] {
            read();
            const auto found = std::ranges::find(heard, line);
            if (found == heard.end()) return false;
            heard.erase(found);
            return true;
        });
    }
    /// What it holds: "on", "off" or "on locked", the styles, and with a "-" those to be recovered.
    std::string shown() {
        std::string state;
        tell("show");
        EXPECT_TRUE(eventually([&] {
            read();
            const auto found = std::ranges::find_if(heard, [](const std::string& line) {
                return line.starts_with("on") || line.starts_with("off");
            });
            if (found == heard.end()) return false;
            state = *found;
            heard.erase(found);
            return true;
        }));
        return state;
    }
    /// Whether it holds that now; in whichever order its styles stand.
    bool shows(const std::string& state) { return sortedWords(shown()) == sortedWords(state); }
    [[nodiscard]] bool comesToShow(const std::string& state) {
        const bool does = eventually([&] { return shows(state); });
        EXPECT_TRUE(does) << state << " was wanted, but it is " << shown() << "\n" << log;
        return does;
    }

    TemporaryFolder folder;

private:
    static std::multiset<std::string> sortedWords(const std::string& line) {
        std::istringstream words(line);
        return {std::istream_iterator<std::string>(words), {}};
    }

    void read() {
        rest += process.readAllStandardOutput().toStdString();
        for (std::size_t end = 0; (end = rest.find('\n')) != std::string::npos;) {
            if (rest.starts_with("> "))
                heard.push_back(rest.substr(2, end - 2));
            else
                log += rest.substr(0, end + 1);
            rest.erase(0, end + 1);
        }
    }

    std::string address, password;
    QProcess process;
    std::string rest, log;
    std::vector<std::string> heard;
};

} // namespace tessaril::testing
