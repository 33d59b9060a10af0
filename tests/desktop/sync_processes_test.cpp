#include "support/event_loop.h"
#include "support/sql_records.h"
#include "support/test.h"

#include <QProcess>

#include <iterator>
#include <semaphore>
#include <sstream>

namespace tessaril {
namespace {

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

    void tell(const std::string& command) { process.write((command + "\n").c_str()); }

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

template <class Records>
struct SyncProcesses : ::testing::Test {
    std::unique_ptr<SyncingProcess> machine() {
        return std::make_unique<SyncingProcess>(records.address(), passwordOfUser());
    }
    std::string passwordOfUser() {
        if constexpr (requires { records.user; }) return records.user;
        return "";
    }
    /// Two machines with one style.
    void beginWithOneStyle() {
        first = machine();
        first->tell("add 1 One");
        first->tell("on");
        ASSERT_TRUE(first->comesToShow("on: One"));
        second = machine();
        second->tell("on");
        ASSERT_TRUE(second->comesToShow("on: One"));
        // Only who has heard of the last save of the other is not overtaken.
        ASSERT_TRUE(first->says("news"));
    }

    Records records;
    std::unique_ptr<SyncingProcess> first, second;
};

using Engines = ::testing::Types<SqliteRecords, PostgresRecords>;
struct EngineName {
    template <class Records>
    static std::string GetName(int) {
        return std::is_same_v<Records, SqliteRecords> ? "Sqlite" : "Postgres";
    }
};
TYPED_TEST_SUITE(SyncProcesses, Engines, EngineName);

TYPED_TEST(SyncProcesses, ThreeMachinesHoldTheSame) {
    this->beginWithOneStyle();
    SyncingProcess &a = *this->first, &b = *this->second;
    const auto third = this->machine();
    SyncingProcess& c = *third;
    c.tell("add 3 Three");
    c.tell("on");
    for (SyncingProcess* each : {&a, &b, &c})
        ASSERT_TRUE(each->comesToShow("on: One Three"));

    b.tell("edit 3 b{}");
    ASSERT_TRUE(a.comesToShow("on: One Three=b{}") && c.comesToShow("on: One Three=b{}"));
    c.tell("add 4 Four");
    ASSERT_TRUE(a.comesToShow("on: One Three=b{} Four") && b.comesToShow("on: One Three=b{} Four"));
    a.tell("delete 1");
    for (SyncingProcess* each : {&b, &c})
        ASSERT_TRUE(each->comesToShow("on: Three=b{} Four -One")) << "recoverable there";

    // One that was away learns of it, and what it did meanwhile stays.
    c.kill();
    b.tell("edit 4 late{}");
    ASSERT_TRUE(a.comesToShow("on: Three=b{} Four=late{}"));
    c.start();
    ASSERT_TRUE(c.comesToShow("on: Three=b{} Four=late{}"));
}

TYPED_TEST(SyncProcesses, ThePushClosesTheEditorAndTheLaterEditStays) {
    this->beginWithOneStyle();
    SyncingProcess &a = *this->first, &b = *this->second;
    b.tell("open 1");
    a.tell("edit 1 a{}");
    EXPECT_TRUE(b.says("alert Open Styles Changed in iCloud"));
    EXPECT_TRUE(b.says("closed 1"));
    ASSERT_TRUE(b.comesToShow("on: One=a{}"));

    a.tell("edit 1 early{}");
    ASSERT_TRUE(a.comesToShow("on: One=early{}"));
    b.tell("edit 1 late{}");
    // Whoever was overtaken sends what it holds with its next save.
    ASSERT_TRUE(eventually([&] {
        b.tell("save");
        return a.shows("on: One=late{}");
    }));
    ASSERT_TRUE(b.shows("on: One=late{}"));
}

TYPED_TEST(SyncProcesses, ALostServerLosesNothing) {
    this->beginWithOneStyle();
    SyncingProcess &a = *this->first, &b = *this->second;
    a.tell("addLarge 2 Large"); // under way when the server goes
    ASSERT_TRUE(a.comesToShow("on: One Large"));
    this->records.stop();
    a.tell("edit 1 away{}");
    ASSERT_TRUE(a.comesToShow("on: One=away{} Large"));
    b.kill();
    b.start();
    EXPECT_TRUE(b.says("error"));
    b.tell("offline");
    b.tell("add 3 Three");
    EXPECT_TRUE(b.says("added 3"));
    this->records.start();
    b.tell("edit 3 back{}");
    ASSERT_TRUE(eventually([&] { return a.shown().find("Three=back{}") != std::string::npos; }));
    // Where its upload did not arrive, the style counts as one that the others have deleted.
    a.tell("recover");
    a.tell("edit 2 back{}");
    ASSERT_TRUE(a.comesToShow("on: One=away{} Large=back{} Three=back{}"));
    ASSERT_TRUE(b.comesToShow("on: One=away{} Large=back{} Three=back{}"));
}

TYPED_TEST(SyncProcesses, ADamagedRecordReplacesNothing) {
    this->beginWithOneStyle();
    SyncingProcess &a = *this->first, &b = *this->second;
    b.tell("edit 1 b{}");
    ASSERT_TRUE(a.comesToShow("on: One=b{}"));
    a.tell("edit 1 a{}");
    ASSERT_TRUE(b.comesToShow("on: One=a{}"));
    const recordID id{"styleDatabase", "styleDatabase"};
    const auto vandal = this->records.client();
    std::binary_semaphore isDone(0);
    vandal->fetchRecords({id}, [&](const recordFetch& fetched) {
        cloudRecord record = fetched.records->at(id);
        record.file = std::make_shared<const std::string>("{\"styles\": [");
        vandal->saveRecord(record, [&](const recordSave& saved) {
            EXPECT_FALSE(saved.error);
            isDone.release();
        });
    });
    isDone.acquire();
    for (SyncingProcess* each : {&a, &b})
        EXPECT_TRUE(each->says("alert Error reading iCloud style database"));
    a.tell("add 2 Two");
    ASSERT_TRUE(a.comesToShow("on: One=a{} Two") && b.comesToShow("on: One=a{}"));
    b.quit();
    b.start();
    EXPECT_TRUE(b.says("error"));
    ASSERT_TRUE(b.comesToShow("on locked: One=a{}"));
    a.tell("reset");
    ASSERT_TRUE(a.comesToShow("on:"));
    ASSERT_TRUE(b.comesToShow("on:"));
}

TEST(SyncProcess, AWrongPasswordSwitchesSyncOff) {
    PostgresRecords records;
    SyncingProcess machine(records.address(), "wrong");
    machine.tell("add 1 One");
    machine.tell("on");
    ASSERT_TRUE(machine.comesToShow("off: One"));
}

} // namespace
} // namespace tessaril
