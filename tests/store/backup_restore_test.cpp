#include "store/backup_restore.h"
#include "support/list_machine.h"
#include "support/test.h"

namespace tessaril {
namespace {

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
    const std::vector<backupStyle> expected = {
        {"Site", present}, {"Edited", changed},   {"Gone", missing},
        {"Same", present}, {"Disabled", changed},
    };
    EXPECT_EQ(contents.styles, expected);
    EXPECT_EQ(contents.missing + contents.changedAdded,
              mergedStyles(today, backup).size() - today.size());
    EXPECT_EQ(restoreSummary(contents),
              "Restore brings back 1 style that is missing today. It adds 1 style that has changed "
              "since as it was then, beside today's. 1 style that has changed since stays as it "
              "is.");

    const backupContents all = BackupComparison({}).compare(backup);
    EXPECT_EQ(restoreSummary(all), "Restore brings back 5 styles that are missing today.");
    EXPECT_TRUE(addsStyles(all));
    const backupContents none = BackupComparison(backup).compare(backup);
    EXPECT_FALSE(addsStyles(none));
    EXPECT_EQ(restoreSummary(none),
              "Your list has every style of this backup, so there is nothing to restore.");
    EXPECT_FALSE(addsStyles(BackupComparison(today).compare({})));
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
    const std::size_t unreadable = 1, withoutMore = 2;
    EXPECT_FALSE(restore->canRestore(unreadable) || restore->canRestore(99));
    EXPECT_TRUE(restore->canRestore(0));
    EXPECT_FALSE(restore->canRestore(withoutMore));
    list.setLockedForSync(true);
    EXPECT_FALSE(restore->mayBegin() || restore->restore(0));
    EXPECT_EQ(alerts.beeps, 2);
    list.setLockedForSync(false);

    told.clear();
    EXPECT_TRUE(restore->mayBegin() && restore->restore(0));
    EXPECT_FALSE(restore->canRestore(0)) << "one at a time";
    EXPECT_THAT(tellings(), ElementsAre("reset", "select 3"));
}

} // namespace
} // namespace tessaril
