#include "store/backup_restore.h"
#include "support/list_machine.h"
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

/// The machine's time zone from now on, as POSIX spells it.
void setTimeZone(const char* zone) {
    ::setenv("TZ", zone, 1);
    ::tzset();
}

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
    setTimeZone("FAR-13"); // where the day begins at 11:00 UTC
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
    setTimeZone("UTC");
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
    EXPECT_FALSE(store.resetDatabase());
    EXPECT_THAT(names(), ElementsAre("A", "B"));
    ASSERT_THAT(alerts.alerts, SizeIs(2));
    EXPECT_THAT(alerts.alerts[0].text, HasSubstr("so nothing was changed"));
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

using enum backupStyleState;
using namespace std::chrono_literals;

liveDatabase::styleList listOf(std::vector<styleContainer> styles) {
    return liveDatabaseFrom({.styles = std::move(styles)}).styles;
}

styleContainer withCode(styleContainer style, std::string code) {
    style.styleData.sections.at(0).code = std::move(code);
    return style;
}

TEST(BackupComparison, announcesWhatAnImportDoes) {
    styleContainer site = namedStyle("Site", 1);
    site.userstyleID = 7;
    styleContainer reinstalled = site;
    reinstalled.uniqueID = 100;
    const styleContainer edited = namedStyle("Edited", 2), same = namedStyle("Same", 3);
    styleContainer compiled = same, disabled = namedStyle("Disabled", 4);
    compiled.dateModified = 1;
    compiled.styleData.compSections.emplace();
    styleContainer enabled = disabled;
    disabled.isEnabled = false;
    const auto today = listOf({reinstalled, withCode(edited, "new"), compiled, disabled});
    const auto backup = listOf({site, edited, namedStyle("Gone", 5), same, enabled});

    const backupContents contents = BackupComparison(today).compare(backup);
    EXPECT_EQ(contents.styles, (std::vector<backupStyle>{{"Site", present},
                                                         {"Edited", changed},
                                                         {"Gone", missing},
                                                         {"Same", present},
                                                         {"Disabled", changed}}));
    EXPECT_EQ(contents.missing + contents.changedAdded,
              mergedStyles(today, backup).size() - today.size());
    EXPECT_EQ(restoreSummary(contents),
              "Restore brings back 1 style that is missing today. It adds 1 style that has changed "
              "since as it was then, beside today's. 1 style that has changed since stays as it "
              "is.");

    const backupContents all = BackupComparison({}).compare(backup);
    EXPECT_EQ(restoreSummary(all), "Restore brings back 5 styles that are missing today.");
    const backupContents none = BackupComparison(backup).compare(backup);
    EXPECT_TRUE(addsStyles(all) && !addsStyles(none));
    EXPECT_THAT(restoreSummary(none), EndsWith("so there is nothing to restore."));
}

struct BackupRestoreTest : ::testing::Test, ListMachine {
    void SetUp() override {
        begin("A");
        for (int count = 1; count <= 3; ++count) {
            clock += 1s;
            store.appendStyle(namedStyle("new " + std::to_string(count), 1));
            store.saveDatabase();
            EXPECT_TRUE(store.keepDocument());
        }
        dispatcher.runAll();
    }
    std::unique_ptr<BackupRestore> start() {
        auto restore = std::make_unique<BackupRestore>(backupRestoreSurroundings{
            files, dispatcher, alerts, store, list, database, stopping.get_token()});
        restore->begin([this] { seen.emplace_back("listed"); },
                       [this](std::size_t row) { seen.push_back(std::to_string(row)); });
        return restore;
    }
    void step() {
        dispatcher.step(dispatcher.backgroundTasks);
        dispatcher.step(dispatcher.mainTasks);
    }

    DatabaseCommands database{{files, alerts, dispatcher, center, store, openStyles}};
    std::stop_source stopping;
    std::vector<std::string> seen;
};

TEST_F(BackupRestoreTest, readsOneAfterAnotherAndEndsWithTheWindowOrTheApplication) {
    auto restore = start();
    step();
    EXPECT_TRUE(restore->isListed());
    EXPECT_EQ(dispatcher.backgroundTasks.size(), 1U) << "never two in memory";
    step();
    EXPECT_THAT(seen, ElementsAre("listed", "0"));
    EXPECT_EQ(restore->backups()[0].contents.styles.size(), 4U);
    EXPECT_EQ(restore->backups()[1].reading, listedBackup::stage::unread);
    restore.reset();
    step();
    EXPECT_TRUE(dispatcher.backgroundTasks.empty());

    restore = start();
    step();
    stopping.request_stop();
    dispatcher.runAll();
    EXPECT_THAT(seen, ElementsAre("listed", "0", "listed"));
}

TEST_F(BackupRestoreTest, restoresWhatAddsStylesWhileTheListIsFree) {
    files.contents[store.databaseBackups().list()[1].file] = "{";
    store.deleteStyle(3);
    store.deleteStyle(2);
    dispatcher.runAll();
    const auto restore = start();
    dispatcher.runAll();
    EXPECT_TRUE(restore->canRestore(0));
    for (const std::size_t none :
         {1, 2, 99}) // unreadable, without more than today's list, not there
        EXPECT_FALSE(restore->canRestore(none)) << none;
    list.setLockedForSync(true);
    EXPECT_FALSE(restore->mayBegin() || restore->restore(0));
    EXPECT_EQ(alerts.beeps, 2);
    list.setLockedForSync(false);

    const auto& file = restore->backups()[0].file.file;
    const std::string kept = files.contents.extract(file).mapped();
    EXPECT_FALSE(restore->restore(0));
    EXPECT_EQ(alerts.alerts.back().title, "The backup is not there any more");
    files.contents[file] = kept;
    told.clear();
    EXPECT_TRUE(restore->mayBegin() && restore->restore(0));
    EXPECT_FALSE(restore->canRestore(0)) << "one at a time";
    EXPECT_THAT(tellings(), ElementsAre("reset", "select 3"));
}

} // namespace
} // namespace tessaril
