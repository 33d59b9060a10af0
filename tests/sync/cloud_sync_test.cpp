#include "support/test.h"
#include "support/two_machines.h"

namespace tessaril {
namespace {

using CloudSyncTest = TwoMachines;

TEST_F(CloudSyncTest, TheFirstMachineFillsTheCloudAndTheSecondJoinsIt) {
    a.putDocument({namedStyle("One", 1), namedStyle("Two", 2)});
    const std::string document = a.files.contents.at(a.document);
    a.switchOn();
    EXPECT_TRUE(a.sync.syncInProgress() && a.sync.initialFetchStarted());
    settle();
    EXPECT_FALSE(a.sync.syncInProgress());
    EXPECT_EQ(a.releases, 1);
    EXPECT_EQ(*server.records.at(databaseID).file, document) << "byte for byte";
    EXPECT_EQ(a.files.contents.at(a.document), document) << "left as it is";
    EXPECT_THAT(a.records().operations,
                ElementsAre("subscribe styleDatabase", "fetch", "save styleDatabase",
                            "subscribe preferences", "fetch", "save preferences"));

    styleContainer old = namedStyle("Mine", 3);
    old.dateModified = 1;
    b.putDocument({old, namedStyle("Two", 2)});
    b.preferences.set("DefaultAuthor", "B");
    b.switchOn();
    settle();
    EXPECT_THAT(b.names(), ElementsAre("One", "Two", "Mine")) << "nothing of its own is lost";
    EXPECT_THAT(a.names(), ElementsAre("One", "Two", "Mine"));
    EXPECT_EQ(b.preferences.string("DefaultAuthor"), "Tessaril User") << "the cloud's counts";
    EXPECT_EQ(a.written().randomHash, inCloud().randomHash) << "saved as it came";
    EXPECT_TRUE(b.recoveryList.isEmpty() && a.recoveryList.isEmpty());
}

TEST_F(CloudSyncTest, ChangesTravel) {
    beginWithOneStyle();
    const date before = now();
    a.add(namedStyle("Two", 2));
    a.dispatcher.runAll();
    const date sent = now();
    while (a.preferences.real("lastSuccessfulSync") < before)
        ASSERT_TRUE(server.deliverNext());
    EXPECT_LE(a.preferences.real("lastSuccessfulSync"), sent) << "a later change is newer";
    a.edit(1, "b {}");
    settle();
    EXPECT_EQ(b.codeOf(1), "b {}");
    EXPECT_THAT(b.names(), ElementsAre("One", "Two"));
    EXPECT_GE(a.preferences.real("lastSuccessfulSync"), before);
    EXPECT_GE(b.preferences.real("lastSuccessfulSync"), before);

    // The tag of its last save lets each of its uploads through.
    b.takeHeard();
    for (const char* code : {"c {}", "d {}", "e {}"}) {
        a.edit(1, code);
        settle();
        EXPECT_EQ(b.codeOf(1), code);
        EXPECT_THAT(b.takeHeard(),
                    ElementsAre("refreshTable", "stylesChangedInCloud 1", "closeProperties 1"));
    }
    b.edit(1, "f {}");
    settle();
    EXPECT_EQ(a.codeOf(1), "f {}");

    a.preferences.set("DefaultAuthor", "A");
    a.preferences.set("ACEShowGutter", false);
    a.preferenceSync.uploadPreferences();
    settle();
    EXPECT_EQ(b.preferences.string("DefaultAuthor"), "A");
    EXPECT_TRUE(b.preferences.boolean("ACEShowGutter"));
    EXPECT_EQ(b.codeOf(1), "f {}");
    EXPECT_EQ(log.take(), "");
}

TEST_F(CloudSyncTest, AStyleDeletedElsewhereClosesItsWindowsAndCanBeRecovered) {
    a.putDocument({namedStyle("One", 1), namedStyle("Two", 2), namedStyle("Three", 3)});
    a.switchOn();
    settle();
    b.switchOn();
    settle();
    for (const std::int64_t id : {1, 2})
        b.center.post(notifications::addToOpenStyles, id);
    // As the editors do.
    const auto editors = b.center.observe(notifications::stylesChangedInCloud, [&](const auto&) {
        for (const std::int64_t id : {1, 2})
            b.center.post(notifications::removeFromOpenStyles, id);
    });
    b.takeHeard();
    a.store.changeDatabase([](liveDatabase& live) {
        live.styles.erase(live.styles.begin(), live.styles.begin() + 2);
        return true;
    });
    a.store.saveDatabase();
    settle();
    EXPECT_THAT(b.names(), ElementsAre("Three"));
    EXPECT_THAT(b.takeHeard(),
                ElementsAre("refreshTable", "stylesChangedInCloud 1 2", "deletedStylesChanged",
                            "closeProperties 1", "closeProperties 2"));
    EXPECT_THAT(b.alerts.alerts,
                ElementsAre(RecordingAlerts::shown{
                    "Open Styles Changed in iCloud",
                    "One or more styles open in the Style Editor changed in iCloud, and have been "
                    "forcibly closed."}));
    EXPECT_THAT(b.recoveryList.names(), ElementsAre("One", "Two"));
    EXPECT_THAT(log.take(), AllOf(HasSubstr("recoverable in this run: One"),
                                  HasSubstr("recoverable in this run: Two")));

    b.recoveryList.recover({0});
    settle();
    EXPECT_THAT(a.names(), ElementsAre("Three", "One"));
    EXPECT_THAT(b.recoveryList.names(), ElementsAre("Two"));
}

TEST_F(CloudSyncTest, WhoeverWasOvertakenDoesNotReplaceWhatTheOtherSaved) {
    beginWithOneStyle();
    b.records().errors = {recordErrorCode::unreachable}; // so that it hears of nothing
    a.edit(1, "from a {}");
    a.dispatcher.runAll();
    b.edit(1, "from b {}");
    b.dispatcher.runAll(); // its upload fails
    const std::string first = *server.records.at(databaseID).file;
    b.edit(1, "from b again {}");
    settle();
    EXPECT_EQ(decodeDatabase(first)->styles[0].styleData.sections[0].code, "from a {}");
    EXPECT_EQ(b.codeOf(1), "from b again {}") << "the later edit";
    EXPECT_THAT(namesInCloud(), ElementsAre("One"));
    b.store.saveDatabase();
    settle();
    EXPECT_EQ(a.codeOf(1), "from b again {}");
}

TEST_F(CloudSyncTest, WhatIsSentIsNeverOlderThanWhatWasMerged) {
    beginWithOneStyle();
    a.add(namedStyle("Two", 2));
    a.dispatcher.runAll(); // the cloud has it
    // While its answer to the push is on its way, b saves without the new style.
    ASSERT_TRUE(server.deliverNext());
    b.store.setEnabled({1}, false);
    settle();
    EXPECT_THAT(namesInCloud(), ElementsAre("One", "Two"));
    EXPECT_THAT(b.names(), ElementsAre("One", "Two"));
    EXPECT_THAT(a.names(), ElementsAre("One", "Two"));
}

TEST_F(CloudSyncTest, AnUploadWhoseAnswerWasLostKeepsNoOtherFromArriving) {
    beginWithOneStyle();
    for (const std::int64_t id : {2, 3}) {
        a.records().losesNextAnswer = true;
        a.add(namedStyle("Unheard", id));
        settle();
    }
    a.records().errors = {recordErrorCode::unreachable}; // this one did not arrive
    a.add(namedStyle("Unsent", 4));
    settle();
    EXPECT_THAT(namesInCloud(), ElementsAre("One", "Unheard", "Unheard"));
    a.add(namedStyle("Sent", 5));
    settle();
    EXPECT_THAT(namesInCloud(), ElementsAre("One", "Unheard", "Unheard", "Unsent", "Sent"));
    EXPECT_EQ(b.names(), a.names());

    // Nor does it count as the change of another when there is one.
    a.records().losesNextAnswer = true;
    a.add(namedStyle("Unheard", 6));
    settle();
    a.store.changeDatabase([](liveDatabase& live) {
        live.styles.push_back(std::make_shared<const styleContainer>(namedStyle("New", 7)));
        return true;
    });
    a.sync.fetchOnRemoteNotification();
    settle();
    EXPECT_TRUE(a.recoveryList.isEmpty());
    EXPECT_EQ(a.names().back(), "New");
}

TEST_F(CloudSyncTest, ALaunchGoesByTheDates) {
    beginWithOneStyle();
    const date lastSync = b.preferences.real("lastSuccessfulSync");
    const auto launchWith = [&](std::optional<date> cloudDate, std::optional<date> localDate) {
        styleContainer mine = namedStyle("Mine", 2), newer = namedStyle("Newer", 3);
        mine.dateModified = lastSync - 10;
        newer.dateModified = lastSync + 1000;
        server.records[databaseID].file = std::make_shared<const std::string>(
            *encodeDatabase({.styles = {namedStyle("One", 1)}, .dateModified = cloudDate}));
        server.records[databaseID].changeTag += "*";
        b.store.changeDatabase([&](liveDatabase& live) {
            live = liveDatabaseFrom({.styles = {mine, newer}, .dateModified = localDate});
            return true;
        });
        b.takeHeard();
        b.sync.fetchDatabaseRecord();
        settle();
        return b.names();
    };
    b.preferences.set("lastSuccessfulSync", lastSync);
    EXPECT_THAT(launchWith(200, 100), ElementsAre("One", "Newer"));
    EXPECT_TRUE(b.recoveryList.isEmpty());
    b.preferences.set("lastSuccessfulSync", lastSync);
    EXPECT_THAT(launchWith(100, 200), ElementsAre("One", "Mine", "Newer"));
    b.preferences.set("lastSuccessfulSync", lastSync);
    EXPECT_THAT(launchWith({}, 100), ElementsAre("One", "Newer"));
    EXPECT_THAT(b.recoveryList.names(), ElementsAre("Mine"));
    EXPECT_THAT(b.takeHeard(), ElementsAre("deletedStylesChanged", "stylesChangedInCloud 2",
                                           "closeProperties 2", "refreshTable"));
    EXPECT_THAT(log.take(), AllOf(HasSubstr("deleted it: Mine\n"), HasSubstr("run: Mine\n")));
}

TEST_F(CloudSyncTest, WhatWaitsForTheFirstMergeComesAfterIt) {
    beginWithOneStyle();
    bool isUpdatePending = true;
    b.sync.setUpdatePending([&] { return isUpdatePending; });
    b.sync.setPendingOpenStyleID(5);
    b.sync.fetchDatabaseRecord();
    settle();
    EXPECT_THAT(b.takeHeard(),
                ElementsAre("refreshTable", "performFirstUpdate", "openStyleNotif 5"));
    isUpdatePending = false;
    b.sync.fetchDatabaseRecord();
    settle();
    EXPECT_THAT(b.takeHeard(), ElementsAre("refreshTable"));
}

TEST_F(CloudSyncTest, AFirstFetchThatFailsLeavesAWayOn) {
    beginWithOneStyle();
    b.add(namedStyle("Two", 2));
    settle();
    a.takeHeard();
    const auto fails = [&](recordErrorCode code) {
        a.records().errors = {std::nullopt, code};
        a.launch();
        settle();
        return a.takeHeard();
    };
    a.store.changeDatabase([](liveDatabase& live) {
        live.styles.push_back(std::make_shared<const styleContainer>(namedStyle("New", 3)));
        return true;
    });
    EXPECT_THAT(fails(recordErrorCode::timedOut), ElementsAre("iCloudError"));
    EXPECT_TRUE(a.sync.syncInProgress());
    const auto operations = a.records().operations.size();
    a.store.saveDatabase();
    settle();
    EXPECT_EQ(a.records().operations.size(), operations) << "the user has not answered yet";

    a.sync.retry();
    settle();
    EXPECT_THAT(a.takeHeard(), ElementsAre("refreshTable"));
    EXPECT_THAT(namesInCloud(), ElementsAre("One", "Two", "New"));

    EXPECT_THAT(fails(recordErrorCode::unreachable), ElementsAre("iCloudError"));
    a.sync.setPendingOpenStyleID(5);
    a.sync.workOffline();
    settle();
    EXPECT_FALSE(a.sync.syncInProgress());
    EXPECT_THAT(a.takeHeard(), ElementsAre("refreshTable", "openStyleNotif 5"));
    // Both sides have moved on when it is within reach again; the next save makes up for it.
    b.edit(1, "b {}");
    b.dispatcher.runAll();
    a.add(namedStyle("Offline", 4));
    settle();
    EXPECT_EQ(a.codeOf(1), "b {}");
    EXPECT_THAT(namesInCloud(), ElementsAre("One", "Two", "New", "Offline"));
    EXPECT_THAT(b.names(), ElementsAre("One", "Two", "New", "Offline"));
    EXPECT_TRUE(a.recoveryList.isEmpty());

    a.takeHeard();
    EXPECT_THAT(fails(recordErrorCode::notAuthenticated), ElementsAre("refreshTable"));
    EXPECT_FALSE(a.preferences.boolean("UseiCloud") || a.sync.syncInProgress());
    a.add(namedStyle("Alone", 6));
    a.sync.fetchOnRemoteNotification();
    a.sync.uploadPreferences();
    a.launch();
    const auto before = a.records().operations.size();
    settle();
    EXPECT_EQ(a.records().operations.size(), before) << "sync is off";
}

TEST_F(CloudSyncTest, ADatabaseThatCannotBeReadReplacesNothingAndIsNotReplaced) {
    beginWithOneStyle();
    const auto damage = [&](std::shared_ptr<const std::string> file) {
        server.records[databaseID].file = std::move(file);
        server.records[databaseID].changeTag += "*";
    };
    damage(std::make_shared<const std::string>("{\"styles\":"));
    b.sync.fetchOnRemoteNotification();
    settle();
    EXPECT_THAT(b.alerts.alerts,
                ElementsAre(RecordingAlerts::shown{
                    "Error reading iCloud style database",
                    "Tessaril may need to be updated, or the style database may be corrupt. Please "
                    "try resetting the database from Preferences."}));
    EXPECT_THAT(b.takeHeard(), IsEmpty());
    b.launch();
    settle();
    EXPECT_THAT(b.takeHeard(), ElementsAre("iCloudError"));
    EXPECT_TRUE(b.sync.syncInProgress());
    b.sync.workOffline();
    b.add(namedStyle("Two", 2));
    settle();
    EXPECT_THAT(b.names(), ElementsAre("One", "Two"));
    EXPECT_EQ(*server.records.at(databaseID).file, "{\"styles\":");
    int kept = 0;
    for (const auto& [path, bytes] : b.files.contents)
        if (path.string().starts_with("/container/styledb-cloud-unreadable-")) {
            ++kept;
            EXPECT_EQ(bytes, "{\"styles\":");
        }
    EXPECT_EQ(kept, 1);

    damage(nullptr);
    b.sync.retry();
    settle();
    EXPECT_TRUE(b.sync.syncInProgress());
    b.sync.workOffline();
    b.store.resetDatabase();
    b.sync.databaseWasReset();
    settle();
    EXPECT_THAT(inCloud().styles, IsEmpty());
    EXPECT_THAT(a.recoveryList.names(), ElementsAre("One"));
}

TEST_F(CloudSyncTest, AFetchThatFailedIsNoEmptyCloud) {
    beginWithOneStyle();
    b.add(namedStyle("Two", 2));
    settle();
    const auto tag = server.records.at(databaseID).changeTag;
    for (const auto code : {recordErrorCode::failed, recordErrorCode::unreachable}) {
        a.records().errors = {std::nullopt, code};
        a.launch();
        settle();
        a.records().errors = {code};
        a.sync.fetchOnRemoteNotification();
        settle();
    }
    EXPECT_EQ(server.records.at(databaseID).changeTag, tag);

    // A cloud that was emptied on purpose is filled again.
    a.sync.retry();
    settle();
    server.records.clear();
    a.takeHeard();
    a.sync.fetchOnRemoteNotification();
    settle();
    EXPECT_THAT(namesInCloud(), ElementsAre("One", "Two"));
    EXPECT_THAT(a.takeHeard(), ElementsAre("refreshTable"));
}

TEST_F(CloudSyncTest, SyncThatIsSwitchedOffMeanwhileMergesNothing) {
    beginWithOneStyle();
    a.add(namedStyle("Two", 2));
    settle();
    b.remove(2);
    b.dispatcher.runAll();
    server.answers.clear(); // a hears of nothing
    a.sync.fetchDatabaseRecord();
    a.preferences.set("UseiCloud", false);
    a.sync.switchedOff();
    settle();
    EXPECT_FALSE(a.sync.syncInProgress());
    EXPECT_THAT(a.names(), ElementsAre("One", "Two"));
}

TEST_F(CloudSyncTest, WhatComesWithAMergeEndsWithTheSwitch) {
    beginWithOneStyle();
    a.records().subscribed.clear();
    b.preferences.set("DefaultAuthor", "B");
    b.preferenceSync.uploadPreferences();
    b.edit(1, "b {}");
    settle();
    const auto merging =
        a.center.observe(notifications::stylesChangedInCloud, [this](const notification&) {
            a.preferences.set("UseiCloud", false);
            a.sync.switchedOff();
        });
    a.sync.fetchOnRemoteNotification();
    settle();
    EXPECT_FALSE(a.preferences.boolean("UseiCloud"));
    EXPECT_NE(a.preferences.string("DefaultAuthor"), "B");
}

} // namespace
} // namespace tessaril
