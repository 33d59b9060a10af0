#include "support/captured_log.h"
#include "support/store_machine.h"
#include "support/test.h"

#include <cstdlib>
#include <ctime>

namespace tessaril {
namespace {

using ::testing::IsSupersetOf;
using namespace std::chrono_literals;
using std::chrono::sys_days;
using std::chrono::sys_seconds;

const std::filesystem::path folder = "/container/backups";
const sys_seconds sunday = sys_days(std::chrono::year(2026) / 11 / 22) + 20h + 15min;

const RecordingAlerts::shown backupFailed{
    "Error writing style database",
    "An error occurred while trying to keep a backup of your styles as they are now, so nothing "
    "was changed. Please make sure that your disk is not full and that you have permission to "
    "write to the folder \"backups\" beside your style database."};

/// The machine's time zone while it lives, as POSIX spells it.
class TimeZone {
public:
    explicit TimeZone(const char* zone) { set(zone); }
    ~TimeZone() { set(before ? before->c_str() : nullptr); }
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;

private:
    static void set(const char* zone) {
        zone ? ::setenv("TZ", zone, 1) : ::unsetenv("TZ");
        ::tzset();
    }
    std::optional<std::string> before =
        std::getenv("TZ") ? std::optional<std::string>(std::getenv("TZ")) : std::nullopt;
};

struct DatabaseBackupsTest : ::testing::Test {
    /// Keeps a document that differs from all before.
    void keepAt(sys_seconds moment) {
        now = moment;
        files.contents["/doc"] = std::to_string(++documents);
        EXPECT_TRUE(backups.keep());
    }
    std::vector<std::string> names() const {
        std::vector<std::string> found;
        for (const databaseBackup& each : backups.list())
            found.push_back(each.file.filename().string());
        return found;
    }

    MemoryFiles files;
    sys_seconds now = sunday;
    int documents = 0;
    DatabaseBackups backups{files, folder, "/doc", [this] { return now; }};
};

TEST_F(DatabaseBackupsTest, keepsTheTenNewestAndTheNewestOfEachWeekForHalfAYear) {
    const std::vector<std::string> foreign = {
        "styledb-2024-01-01.sdb",           "styledb-2024-02-30T000000Z.sdb",
        "styledb-2024-01-01T000000Z_1.sdb", "styledb-2024-01-01T000000Z_02.sdb",
        "styledb-2024-01-01T240000Z.sdb",   "styledb-2024-01-01T000000Z.sdb.txt",
        "styledb-2024-01-01T0000-1Z.sdb",   "styledb-unreadable-2024-01-01T000000Z.sdb"};
    for (const std::string& name : foreign)
        files.contents[folder / name] = "theirs";

    for (int day = 400; day >= 0; --day)
        keepAt(sunday - std::chrono::days(day));

    std::vector<std::string> expected;
    for (int day = 0; day < 10; ++day)
        expected.push_back(backupName(sunday - std::chrono::days(day), 1));
    expected.emplace_back("styledb-2026-11-12T201500Z.sdb"); // of a week that is not all old
    for (int week = 2; week < 27; ++week)
        expected.push_back(backupName(sunday - std::chrono::weeks(week), 1));
    EXPECT_EQ(names(), expected);
    EXPECT_EQ(expected.back(), "styledb-2026-05-24T201500Z.sdb");
    EXPECT_EQ(files.contents.at(folder / expected[9]), "392") << "the content of its own day";
    for (const std::string& name : foreign)
        EXPECT_TRUE(files.contents.contains(folder / name)) << name;
}

TEST_F(DatabaseBackupsTest, aWrongClockTakesNothingAway) {
    for (int day = 40; day >= 0; --day)
        keepAt(sunday - std::chrono::days(day));
    const auto good = names();
    ASSERT_EQ(good.size(), 10U + 5);

    const auto keepThreeFrom = [this](int daysFromNow) {
        for (int day = 0; day < 3; ++day)
            keepAt(sunday + std::chrono::days(daysFromNow + day));
        EXPECT_THAT(names(), Contains(backupName(now, 1))) << "the one of this moment";
    };
    keepThreeFrom(-20 * 365);
    EXPECT_THAT(names(), IsSupersetOf(good));
    EXPECT_EQ(names().size(), good.size() + 3);
    keepThreeFrom(20 * 365); // takes the place of three, as on any three days
    EXPECT_THAT(names(), IsSupersetOf(std::vector(good.begin(), good.begin() + 8)));
    EXPECT_THAT(names(), IsSupersetOf(std::vector(good.end() - 4, good.end())));
    keepAt(sunday + 24h);
    EXPECT_THAT(names(), Contains(backupName(now, 1))) << "older than those of the future";
    EXPECT_EQ(files.contents.at(folder / backupName(now, 1)), std::to_string(documents));
}

TEST_F(DatabaseBackupsTest, keepsNothingTwiceAndOverwritesNothing) {
    EXPECT_TRUE(backups.keep()) << "there is no document yet";
    EXPECT_TRUE(names().empty());
    keepAt(sunday);
    keepAt(sunday);
    keepAt(sunday);
    now += 1s;
    EXPECT_TRUE(backups.keep());
    EXPECT_THAT(names(),
                ElementsAre("styledb-2026-11-22T201500Z_3.sdb", "styledb-2026-11-22T201500Z_2.sdb",
                            "styledb-2026-11-22T201500Z.sdb"));
    EXPECT_EQ(files.contents.at(backups.list().back().file), "1");
    files.contents["/doc"] = "2"; // as in one of them, but not in the newest
    EXPECT_TRUE(backups.keep());
    EXPECT_EQ(backups.list().size(), 4U);
    for (int more = 0; more < 20; ++more)
        keepAt(sunday + 2s);
    EXPECT_EQ(names().front(), "styledb-2026-11-22T201502Z_20.sdb");
}

struct StoreBackupsTest : ::testing::Test, StoreMachine<> {
    StoreBackupsTest() {
        clock = sunday;
        putDocument({namedStyle("A", 1), namedStyle("B", 2)});
    }
    void change() {
        setEnabled(1, !store.styleWithID(1)->isEnabled);
        dispatcher.runAll();
    }
    /// How many styles the backups hold, the newest first.
    std::vector<std::size_t> kept() {
        std::vector<std::size_t> counts;
        for (const databaseBackup& each : store.databaseBackups().list())
            counts.push_back(written(each.file).styles.size());
        return counts;
    }
};

TEST_F(StoreBackupsTest, theFirstSaveOfALocalDayKeepsTheDocumentBefore) {
    const TimeZone far("FAR-13"); // where the day begins at 11:00 UTC
    clock = sys_days(std::chrono::year(2026) / 11 / 22) + 10h + 58min;
    const std::string before = files.contents.at(document);
    change();
    ASSERT_EQ(kept().size(), 1U);
    EXPECT_EQ(files.contents.at(store.databaseBackups().list()[0].file), before);
    clock += 1min;
    change();
    EXPECT_EQ(kept().size(), 1U);
    clock += 1min;
    change();
    EXPECT_EQ(kept().size(), 2U) << "the next day here, though not in UTC";

    StoreMachine restarted;
    restarted.files.contents = files.contents;
    restarted.clock = clock + 12h;
    restarted.setEnabled(1, true);
    restarted.dispatcher.runAll();
    EXPECT_EQ(restarted.store.databaseBackups().list().size(), 2U) << "the same day here";
    restarted.clock -= std::chrono::days(30);
    for (int save = 0; save < 2; ++save) {
        restarted.store.saveDatabase();
        restarted.dispatcher.runAll();
    }
    EXPECT_EQ(restarted.store.databaseBackups().list().size(), 3U) << "one a day by any clock";
}

TEST_F(StoreBackupsTest, whatReplacesTheDatabaseKeepsWhatTheUserHadLast) {
    change(); // today's is there
    putDocument({namedStyle("Other", 9)}, "/in.sdb");
    store.appendStyle(namedStyle("C", 3));
    store.saveDatabase(); // in memory only as yet
    clock += 1s;
    store.importDatabase("/in.sdb");
    dispatcher.runAll();
    EXPECT_THAT(kept(), ElementsAre(3, 2));
    clock += 1s;
    store.resetDatabase();
    dispatcher.runAll();
    EXPECT_THAT(kept(), ElementsAre(4, 3, 2));
    clock += 1s;
    EXPECT_TRUE(store.keepDocument() && store.keepDocument());
    EXPECT_THAT(kept(), ElementsAre(0, 4, 3, 2));

    files.contents.erase(document);
    clock += 1s;
    EXPECT_TRUE(store.keepDocument());
    EXPECT_TRUE(files.contents.contains(document)) << "what is in memory only is saved first";

    store.importDatabase(store.databaseBackups().list()[1].file);
    EXPECT_THAT(names(), ElementsAre("A", "B", "C", "Other"));
}

TEST_F(StoreBackupsTest, withoutABackupSavesGoOnButNothingIsReplaced) {
    putDocument({namedStyle("Other", 9)}, "/in.sdb");
    files.readOnly.insert(folder);
    CapturedLog log;
    change();
    EXPECT_FALSE(written().styles.at(0).isEnabled);
    EXPECT_TRUE(alerts.alerts.empty());
    EXPECT_FALSE(store.keepDocument());
    EXPECT_TRUE(alerts.alerts.empty()) << "the caller tells";
    store.importDatabase("/in.sdb");
    store.resetDatabase();
    EXPECT_THAT(names(), ElementsAre("A", "B"));
    EXPECT_THAT(alerts.alerts, ElementsAre(backupFailed, backupFailed));
    EXPECT_TRUE(log.take().starts_with("Error backing up style database.\n"));

    files.readOnly = {document};
    change();
    alerts.alerts.clear();
    EXPECT_FALSE(store.keepDocument()) << "the document lacks the last change";
    files.readOnly.clear();
    EXPECT_TRUE(store.keepDocument());
    EXPECT_EQ(files.contents.at(store.databaseBackups().list()[0].file),
              files.contents.at(document));
    EXPECT_TRUE(written().styles.at(0).isEnabled);
}

TEST_F(StoreBackupsTest, anUnreadableDocumentIsNoBackupAndNoObstacle) {
    files.contents[document] = "{\"torn";
    putDocument({namedStyle("Other", 9)}, "/in.sdb");
    CapturedLog log;
    store.importDatabase("/in.sdb");
    dispatcher.runAll();
    EXPECT_THAT(names(), ElementsAre("Other"));
    EXPECT_TRUE(kept().empty()) << "it has a name of its own";
    setEnabled(9, false);
    dispatcher.runAll();
    EXPECT_EQ(kept().size(), 1U);
}

} // namespace
} // namespace tessaril
