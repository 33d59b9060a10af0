#include "support/test.h"
#include "support/two_machines.h"

namespace tessaril {
namespace {

struct CloudSyncFaults : TwoMachines {
    /// The next answer that reaches anybody, and what follows from it on the machines.
    void deliverOne() {
        ASSERT_TRUE(server.deliverNext());
        for (MachineInMemory* machine : {&a, &b})
            machine->dispatcher.runAll();
    }
    /// As another machine, or another server, has it.
    void putInCloud(std::vector<styleContainer> styles) {
        server.records[databaseID] = {
            .id = databaseID,
            .file = std::make_shared<const std::string>(
                *encodeDatabase({.styles = std::move(styles), .dateModified = now() + 1000})),
            .changeTag = server.records[databaseID].changeTag + "*"};
    }
    void switchOff(MachineInMemory& machine) {
        machine.preferences.set("UseiCloud", false);
        machine.sync.switchedOff();
    }
    /// The names in each of the machine's backups.
    static std::vector<std::vector<std::string>> backupsOf(const MachineInMemory& machine) {
        std::vector<std::vector<std::string>> found;
        for (const auto& [path, bytes] : machine.files.contents) {
            if (path.parent_path() != "/container/backups") continue;
            auto& names = found.emplace_back();
            const styleDatabase backup = decodeDatabase(bytes).value();
            for (const styleContainer& style : backup.styles)
                names.push_back(style.styleData.name);
        }
        return found;
    }
    static styleContainer oldStyle(const std::string& name, std::int64_t id) {
        styleContainer style = namedStyle(name, id);
        style.dateModified = 1;
        return style;
    }
};

TEST_F(CloudSyncFaults, AWindowOverAFirstMergeNeverSavesIntoAnotherStyle) {
    a.putDocument({namedStyle("Theirs", 1)});
    a.switchOn();
    settle();
    b.putDocument({namedStyle("Mine", 1)});
    b.center.post(notifications::addToOpenStyles, 1);
    b.switchOn();
    settle();
    EXPECT_THAT(b.names(), ElementsAre("Theirs", "Mine"));
    EXPECT_THAT(b.takeHeard(),
                AllOf(Contains("stylesChangedInCloud 1"), Contains("closeProperties 1")));
    EXPECT_THAT(b.alerts.alerts, SizeIs(1));
}

TEST_F(CloudSyncFaults, WhatIsReplacedByAMergeIsKept) {
    a.putDocument({namedStyle("One", 1)});
    a.switchOn();
    settle();
    b.putDocument({namedStyle("Mine", 2)});
    b.switchOn();
    settle();
    EXPECT_THAT(backupsOf(b), ElementsAre(ElementsAre("Mine")));
    EXPECT_THAT(backupsOf(a), Contains(ElementsAre("One")));
    a.remove(2);
    settle();
    EXPECT_THAT(b.names(), ElementsAre("One"));
    EXPECT_THAT(backupsOf(b), Contains(ElementsAre("One", "Mine")));
}

TEST_F(CloudSyncFaults, SwitchingOnLosesNothingHoweverOftenAndWhenever) {
    beginWithOneStyle();
    server.records[databaseID].file = std::make_shared<const std::string>(
        *encodeDatabase({.styles = {namedStyle("One", 1)}, .dateModified = now() + 1000}));
    server.records[databaseID].changeTag += "*";
    switchOff(b);
    b.add(oldStyle("Mine", 2));
    b.switchOn();
    switchOff(b); // what has been fetched by now is void
    b.switchOn();
    EXPECT_TRUE(b.sync.syncInProgress());
    deliverOne();
    deliverOne();
    EXPECT_TRUE(b.sync.syncInProgress()) << "until the second has come to its end";
    settle();
    EXPECT_FALSE(b.sync.syncInProgress());
    EXPECT_THAT(b.names(), ElementsAre("One", "Mine"));

    // The same where the first merge cannot be written.
    switchOff(b);
    b.add(oldStyle("Other", 3));
    b.dispatcher.runAll();
    b.switchOn();
    server.records[databaseID].file = std::make_shared<const std::string>(
        *encodeDatabase({.styles = {namedStyle("One", 1)}, .dateModified = now() + 2000}));
    server.records[databaseID].changeTag += "*";
    b.store.finishSaves();
    b.store.keepDocument();
    deliverOne();
    b.files.full = true;
    settle();
    b.files.full = false;
    b.store.saveDatabase();
    settle();
    b.sync.fetchOnRemoteNotification();
    settle();
    EXPECT_THAT(b.names(), Contains("Other"));

    // Nor may the answer to a push of before.
    a.add(namedStyle("New", 4));
    a.dispatcher.runAll();
    deliverOne();
    deliverOne();
    switchOff(b);
    b.add(oldStyle("Own", 5));
    b.switchOn();
    settle();
    EXPECT_THAT(b.names(), AllOf(Contains("New"), Contains("Own")));
    EXPECT_TRUE(b.recoveryList.isEmpty());
    EXPECT_EQ(log.take().find("Dropped"), std::string::npos);
}

TEST_F(CloudSyncFaults, WhatCannotBeReadIsNeverSent) {
    a.files.contents[a.document] = "{\"styles\": [torn";
    a.sync.setPendingOpenStyleID(5);
    a.switchOn();
    settle();
    EXPECT_THAT(inCloud().styles, IsEmpty());
    EXPECT_FALSE(a.sync.syncInProgress());
    EXPECT_THAT(a.takeHeard(), Contains("openStyleNotif 5")) << "though nothing was merged";
}

TEST_F(CloudSyncFaults, PreferencesGoOnTravelling) {
    beginWithOneStyle();
    const auto change = [this](MachineInMemory& machine, const std::string& author) {
        machine.preferences.set("DefaultAuthor", author);
        machine.preferenceSync.uploadPreferences();
        settle();
    };
    // Nobody answers, though it arrives, or does not.
    a.records().losesNextAnswer = true;
    change(a, "First");
    change(a, "Second");
    EXPECT_EQ(b.preferences.string("DefaultAuthor"), "Second");
    a.records().losesNextAnswer = true;
    change(a, "Third");
    a.preferences.set("DefaultAuthor", "Newer");
    b.add(namedStyle("Two", 2)); // a push of something else takes nothing back
    settle();
    EXPECT_EQ(a.preferences.string("DefaultAuthor"), "Newer");
    a.records().errors = {recordErrorCode::timedOut};
    change(a, "Fourth");
    change(b, "Of b");
    EXPECT_EQ(a.preferences.string("DefaultAuthor"), "Of b");
    change(a, "Fifth");
    EXPECT_EQ(b.preferences.string("DefaultAuthor"), "Fifth");

    // A change that is on its way to the main thread is not undone by what is sent meanwhile.
    b.preferences.set("DefaultAuthor", "Sixth");
    b.preferenceSync.uploadPreferences();
    b.dispatcher.runAll();
    a.preferenceSync.uploadPreferences();
    server.deliver();
    a.preferenceSync.uploadPreferences();
    settle();
    EXPECT_EQ(a.preferences.string("DefaultAuthor"), "Sixth");
    EXPECT_EQ(b.preferences.string("DefaultAuthor"), "Sixth");

    // After a launch without the server.
    a.records().errors.assign(4, recordErrorCode::unreachable);
    a.launch();
    settle();
    a.sync.workOffline();
    b.preferences.set("DefaultAuthor", "Meanwhile");
    b.preferenceSync.uploadPreferences();
    settle();
    a.store.saveDatabase();
    settle();
    EXPECT_EQ(a.preferences.string("DefaultAuthor"), "Meanwhile");
    change(a, "Last");
    EXPECT_EQ(b.preferences.string("DefaultAuthor"), "Last");
}

TEST_F(CloudSyncFaults, WhoeverMissedAChangeHearsOfItWithTheNextSave) {
    beginWithOneStyle();
    b.records().errors = {recordErrorCode::timedOut};
    a.edit(1, "a {}");
    settle();
    EXPECT_NE(b.codeOf(1), "a {}");
    b.add(namedStyle("Two", 2));
    settle();
    EXPECT_EQ(b.codeOf(1), "a {}");
    EXPECT_THAT(a.names(), ElementsAre("One", "Two"));
    EXPECT_TRUE(b.recoveryList.isEmpty());

    // A cloud that was emptied is filled by the next save.
    server.records.clear();
    a.edit(1, "b {}");
    settle();
    EXPECT_THAT(namesInCloud(), ElementsAre("One", "Two"));
}

TEST_F(CloudSyncFaults, AnUnreadableCloudIsTriedAgainUntilItCanBeRead) {
    beginWithOneStyle();
    const cloudRecord good = server.records.at(databaseID);
    server.records[databaseID].file = std::make_shared<const std::string>("{");
    server.records[databaseID].changeTag += "*";
    b.launch();
    settle();
    b.sync.workOffline();
    b.add(namedStyle("Two", 2));
    settle();
    EXPECT_THAT(b.alerts.alerts, SizeIs(1)) << "told once";
    server.records[databaseID] = good;
    b.add(namedStyle("Three", 3));
    settle();
    EXPECT_THAT(namesInCloud(), ElementsAre("One", "Two", "Three"));

    // A reset counts however the fetches go on.
    server.records[databaseID].file = std::make_shared<const std::string>("{");
    server.records[databaseID].changeTag += "*";
    b.launch();
    settle();
    b.sync.retry();
    b.store.resetDatabase();
    b.sync.databaseWasReset();
    settle();
    EXPECT_THAT(inCloud().styles, IsEmpty());
    EXPECT_FALSE(b.sync.syncInProgress());

    // Also on the thread of a save, which must not wait for itself.
    server.records[databaseID].file = std::make_shared<const std::string>("{");
    server.records[databaseID].changeTag += "*";
    b.launch();
    settle();
    b.store.setUploadHandler([this] {
        b.sync.databaseWasReset();
        b.sync.uploadDatabase();
    });
    b.store.resetDatabase();
    settle();
    EXPECT_THAT(inCloud().styles, IsEmpty());
}

TEST_F(CloudSyncFaults, WhatHeldForOneServerHoldsForNoOther) {
    // The user turns to another while the first one's database is being merged.
    b.putDocument({oldStyle("Mine", 1), oldStyle("Other", 3)});
    putInCloud({oldStyle("Theirs", 3)});
    int times = 0;
    const auto merging =
        b.center.observe(notifications::stylesChangedInCloud, [&](const notification&) {
            if (times++ > 0) return;
            switchOff(b);
            putInCloud({oldStyle("Second", 7)});
            b.switchOn();
        });
    b.preferences.set("lastSuccessfulSync", 50.0);
    b.switchOn();
    while (times == 0)
        ASSERT_TRUE(server.deliverNext());
    EXPECT_TRUE(b.sync.syncInProgress()) << "with the second";
    settle();
    EXPECT_FALSE(b.sync.syncInProgress());
    EXPECT_THAT(b.names(), UnorderedElementsAre("Second", "Theirs", "Mine", "Other"));
    EXPECT_THAT(namesInCloud(), ::testing::ElementsAreArray(b.names()));

    // One that could not be read says nothing of the next.
    server.records[databaseID].file = std::make_shared<const std::string>("{");
    server.records[databaseID].changeTag += "*";
    b.sync.fetchOnRemoteNotification();
    settle();
    switchOff(b);
    putInCloud({oldStyle("Third", 9)});
    b.records().errors = {std::nullopt, recordErrorCode::timedOut};
    b.switchOn();
    settle();
    b.store.resetDatabase();
    b.sync.databaseWasReset();
    settle();
    EXPECT_TRUE(b.sync.syncInProgress()) << "until the user says how to go on";
    b.sync.retry();
    settle();
    EXPECT_THAT(b.names(), ElementsAre("Third"));
    EXPECT_TRUE(b.recoveryList.isEmpty());
}

} // namespace
} // namespace tessaril
