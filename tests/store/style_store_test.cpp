#include "events/notification_names.h"
#include "preferences/preference_keys.h"
#include "support/store_machine.h"
#include "support/test.h"

namespace tessaril {
namespace {

const RecordingAlerts::shown saveFailed{
    "Error writing style database",
    "An error occurred while trying to save changes to your styles. Your changes may not have been "
    "saved."};

struct StyleStoreTest : ::testing::Test, StoreMachine<> {
    StyleStoreTest() {
        compile = [](styleContainer& style) {
            style.styleData.sections.at(0).compiledcode = "compiled";
        };
        store.setUploadHandler([this] { files.journal.emplace_back("upload"); });
        stored.setValue(preferenceKeys::useiCloud, true);
    }

    void save() {
        store.saveDatabase();
        dispatcher.runAll();
    }
};

/// Copies the fields that the members name.
void copyFields(const styleContainer& from, styleContainer& to, auto... members) {
    ((to.*members = from.*members), ...);
}

/// What the properties window sets, but for the variables.
void copySettings(const styleContainer& from, styleContainer& to) {
    using style = styleContainer;
    copyFields(from, to, &style::allowIframe, &style::exclURL, &style::exclDomain,
               &style::exclPrefix, &style::exclRegExp, &style::systemTheme);
}

/// A style from a style file.
styleContainer userCSS(std::string name, std::int64_t id, std::string from, std::string update) {
    styleContainer style = namedStyle(std::move(name), id);
    style.source = sourceUserCSS;
    style.downloadedFrom = std::move(from);
    style.updateURL = std::move(update);
    return style;
}

TEST_F(StyleStoreTest, firstStartWritesAnEmptyDatabase) {
    EXPECT_TRUE(files.contents.empty()) << "nothing is loaded before the first access";
    EXPECT_TRUE(store.styleRows().empty());
    EXPECT_EQ(written().dbVersion, 1);
    store.loadDatabase();
    EXPECT_THAT(files.journal, ElementsAre("wrote styledb.sdb")) << "no message, no second load";

    CapturedLog log;
    StoreMachine machine;
    machine.files.full = true;
    EXPECT_TRUE(machine.store.styleRows().empty());
    EXPECT_EQ(log.take(), "Error writing style database.\n");
    EXPECT_THAT(machine.alerts.alerts, ElementsAre(saveFailed));
}

TEST_F(StyleStoreTest, anUnreadableDocumentIsKeptBeforeTheFirstSaveReplacesIt) {
    files.contents[document] = "{\"torn";
    CapturedLog log;
    EXPECT_TRUE(store.snapshot().styles.empty());
    EXPECT_EQ(log.take(), "Error decoding style database.\n");
    EXPECT_TRUE(alerts.alerts.empty());
    EXPECT_EQ(files.contents.at(document), "{\"torn");

    files.full = true;
    save();
    EXPECT_EQ(files.contents.at(document), "{\"torn") << "not replaced while it cannot be kept";
    EXPECT_THAT(alerts.alerts, ElementsAre(saveFailed));

    files.full = false;
    save();
    save();
    EXPECT_TRUE(written().styles.empty());
    std::vector<std::string> kept;
    for (const auto& [path, bytes] : files.contents)
        if (path.filename().string().starts_with("styledb-unreadable-")) kept.push_back(bytes);
    EXPECT_THAT(kept, ElementsAre("{\"torn"));
}

TEST_F(StyleStoreTest, aSaveStampsThenSendsThenWritesThenUploads) {
    putDocument({namedStyle("A", 1)});
    const date before = now();
    store.saveDatabase();
    const liveDatabase stamped = store.snapshot();
    EXPECT_NE(stamped.randomHash, -1) << "stamped on the calling thread";
    EXPECT_GE(stamped.dateModified, before);
    EXPECT_EQ(files.filesWritten, 0) << "written in the background";
    EXPECT_THAT(dispatcher.priorities, ElementsAre(taskPriority::utility));

    dispatcher.runAll();
    EXPECT_THAT(files.journal, ElementsAre("wrote styleDBUpdated", "wrote styledb.sdb", "upload"));
    EXPECT_EQ(files.filesWritten, 1) << "one written file serves both names";
    EXPECT_EQ(written().randomHash, stamped.randomHash);
    EXPECT_EQ(written().styles, std::vector{*stamped.styles[0]});

    files.journal.clear();
    store.saveDatabaseWithoutUpload();
    dispatcher.runAll();
    EXPECT_EQ(written().randomHash, stamped.randomHash) << "no stamp";
    stored.setValue(preferenceKeys::useiCloud, false);
    save();
    EXPECT_THAT(files.journal, Not(Contains("upload")));
}

TEST_F(StyleStoreTest, savesAskedForWhileOneWaitsAreFoldedIntoIt) {
    putDocument({namedStyle("A", 1)});
    store.saveDatabaseWithoutUpload();
    setEnabled(1, false);
    store.saveDatabaseWithoutUpload();
    dispatcher.runAll();
    EXPECT_EQ(files.filesWritten, 1);
    EXPECT_EQ(std::exchange(files.journal, {}).back(), "upload") << "one of them wanted it";
    EXPECT_FALSE(written().styles.at(0).isEnabled);

    store.resetDatabase();
    store.finishSaves();
    EXPECT_TRUE(written().styles.empty()) << "written before quitting";
    EXPECT_EQ(files.journal.back(), "upload");
    dispatcher.runAll();
    EXPECT_EQ(files.filesWritten, 2);
}

TEST_F(StyleStoreTest, aFailedSaveKeepsTheChangeAndTheOldDocument) {
    putDocument({namedStyle("A", 1)});
    const std::string before = files.contents.at(document);
    int uploads = 0;
    store.setUploadHandler([&] { ++uploads; });

    files.readOnly.insert(document);
    setEnabled(1, false);
    CapturedLog log;
    dispatcher.runAll();
    EXPECT_EQ(log.take(), "Error writing style database.\n");
    EXPECT_THAT(alerts.alerts, ElementsAre(saveFailed));
    EXPECT_EQ(files.contents.at(document), before);
    EXPECT_FALSE(written("wormhole/styleDBUpdated").styles.at(0).isEnabled);
    EXPECT_FALSE(store.styleWithID(1)->isEnabled);

    // Nothing can even be staged: the message goes out by itself.
    files.readOnly.clear();
    files.full = true;
    setEnabled(1, true);
    dispatcher.runAll();
    EXPECT_EQ(files.contents.at(document), before);
    EXPECT_TRUE(written("wormhole/styleDBUpdated").styles.at(0).isEnabled);
    EXPECT_EQ(alerts.alerts.size(), 2U);

    files.full = false;
    setEnabled(1, false);
    files.full = true;
    dispatcher.runAll();
    EXPECT_EQ(uploads, 0) << "nothing is uploaded after a failure";
    files.full = false;
    store.saveDatabaseWithoutUpload();
    dispatcher.runAll();
    EXPECT_EQ(uploads, 1) << "as is owed since";
    files.full = true;
    setEnabled(1, true);
    dispatcher.runAll();
    files.full = false;
    store.finishSaves();
    EXPECT_TRUE(written().styles.at(0).isEnabled) << "tried once more before the end";
    EXPECT_EQ(uploads, 2);
}

TEST_F(StyleStoreTest, whatCannotBeEncodedIsNeitherSentNorWritten) {
    putDocument({namedStyle("A", 1)});
    save();
    files.journal.clear();
    store.setStyleData(1, makeStyleJSON("not UTF-8: \xFF", ""));
    save();
    EXPECT_TRUE(files.journal.empty());
    EXPECT_THAT(alerts.alerts, ElementsAre(saveFailed));

    store.setStyleData(1, makeStyleJSON("fine", ""));
    save();
    EXPECT_EQ(written().styles.at(0).styleData.name, "fine");
}

TEST_F(StyleStoreTest, exportAndBackupWriteCopies) {
    const std::filesystem::path backup = "/container/styledb-pre-icloud.sdb";
    putDocument({namedStyle("A", 1)});
    store.exportDatabase("/elsewhere/Tessaril Styles.sdb");
    store.writePreCloudBackup();
    store.writePreCloudBackup(); // both before the first has written
    dispatcher.step(dispatcher.backgroundTasks);
    EXPECT_EQ(written("/elsewhere/Tessaril Styles.sdb"), written());
    dispatcher.step(dispatcher.backgroundTasks);
    EXPECT_EQ(std::exchange(files.contents.at(backup), "first"), files.contents.at(document));
    dispatcher.runAll();
    EXPECT_EQ(files.contents.at(backup), "first");
    EXPECT_TRUE(alerts.alerts.empty());

    files.contents.erase(backup);
    files.full = true;
    CapturedLog log;
    store.exportDatabase("/elsewhere/x.sdb");
    store.writePreCloudBackup();
    dispatcher.runAll();
    EXPECT_EQ(log.take(), "Error writing style database.\nError writing style database.\n");
    EXPECT_THAT(alerts.alerts, SizeIs(1)) << "a failed backup is only logged";
}

TEST_F(StyleStoreTest, importSkipsWhatIsInstalled) {
    styleContainer site = namedStyle("Site", 1);
    site.userstyleID = 0;
    const styleContainer custom = namedStyle("Custom", 4);
    putDocument({site, userCSS("UserCSS", 2, "https://a.example/a.user.css", " \n"),
                 userCSS("Updatable", 3, "", "https://b.example/b.user.css"), custom});

    styleContainer otherCode = site, compiled = custom, disabled = namedStyle("Disabled", 6);
    otherCode.styleData.sections[0].code = "other code, same number";
    compiled.uniqueID = 12;
    compiled.styleData.compSections.emplace();
    compiled.isEnabled = disabled.isEnabled = false;
    styleContainer otherSite = namedStyle("Other site style", 1);
    otherSite.userstyleID = 77;
    const styleContainer twice = namedStyle("Twice the same", 8);
    putDocument({otherCode, userCSS("Same origin", 11, "https://a.example/a.user.css", ""),
                 userCSS("Same update", 11, "elsewhere", "https://b.example/b.user.css"),
                 userCSS("Blank update address", 5, "elsewhere", " \n"), compiled, otherSite, twice,
                 twice, disabled},
                "/in.sdb");

    store.importDatabase("/in.sdb");
    dispatcher.runAll();
    const auto live = store.snapshot();
    EXPECT_THAT(names(),
                ElementsAre("Site", "UserCSS", "Updatable", "Custom", "Blank update address",
                            "Other site style", "Twice the same", "Twice the same", "Disabled"));
    EXPECT_EQ(live.styles[4]->uniqueID, 5);
    EXPECT_FALSE(live.styles[8]->isEnabled);
    EXPECT_EQ(*live.styles[3], custom);
    EXPECT_EQ(identifiers().size(), live.styles.size()) << "a taken identifier is renewed";

    // A copy of what is there adds nothing, and still saves.
    files.contents["/copy.sdb"] = files.contents.at(document);
    store.importDatabase("/copy.sdb");
    dispatcher.runAll();
    EXPECT_EQ(store.snapshot().styles, live.styles);
    EXPECT_NE(written().randomHash, live.randomHash);
}

TEST_F(StyleStoreTest, importOfADamagedFileChangesNothing) {
    putDocument({namedStyle("A", 1)});
    store.importDatabase("/missing.sdb");
    EXPECT_TRUE(alerts.alerts.empty());
    files.contents["/bad.sdb"] = "{}";
    files.unreadable.insert("/folder.sdb");
    CapturedLog log;
    for (const char* damaged : {"/bad.sdb", "/folder.sdb"}) {
        store.importDatabase(damaged);
        EXPECT_THAT(alerts.taken(), ElementsAre("Error reading style database"));
    }
    EXPECT_EQ(log.take(), "Error decoding style database.\nError decoding style database.\n");
    EXPECT_EQ(store.snapshot().randomHash, -1);
    EXPECT_TRUE(dispatcher.backgroundTasks.empty());
}

TEST_F(StyleStoreTest, aChangeMadeWhileAnotherCompilesIsKept) {
    putDocument({namedStyle("A", 1)});
    compile = [this](styleContainer&) {
        if (store.styleWithID(1)->isEnabled) setEnabled(1, false);
    };
    store.applyStyleProperties(1, fullStyle(2));
    EXPECT_FALSE(store.styleWithID(1)->isEnabled);
    EXPECT_EQ(store.styleWithID(1)->systemTheme, "systemTheme");
}

TEST_F(StyleStoreTest, fieldUpdatesCopyTheirFieldsAndNoOthers) {
    styleContainer expected = namedStyle("A", 1);
    const styleContainer from = fullStyle(2);
    putDocument({expected});
    std::vector<std::int64_t> favicons;
    const auto subscription = center.observe(
        notifications::updateFavicons, [&](const notification& n) { favicons.push_back(*n.id()); });
    const auto expectSaved = [&] {
        dispatcher.runAll();
        const styleContainer saved = written().styles.at(0);
        EXPECT_GT(saved.dateModified, std::exchange(expected.dateModified, saved.dateModified));
        EXPECT_EQ(saved, expected);
    };

    store.applyStyleProperties(1, from);
    copySettings(from, expected);
    expected.userVariables = from.userVariables;
    expected.styleData.sections[0].compiledcode = "compiled";
    expectSaved();
    EXPECT_TRUE(favicons.empty());

    store.applyEditorChanges(1, from);
    using style = styleContainer;
    copyFields(from, expected, &style::styleData, &style::version, &style::namespace_,
               &style::description, &style::author, &style::license, &style::preprocessor);
    expected.styleData.sections[0].compiledcode = "compiled";
    expectSaved();
    EXPECT_THAT(favicons, ElementsAre(1));

    // This one leaves saving to the caller.
    styleContainer replacement = namedStyle("C", 1);
    replacement.isEnabled = false;
    store.replaceStyleKeepingSettings(1, replacement);
    replacement.isEnabled = true;
    copySettings(from, replacement);
    EXPECT_EQ(store.styleWithID(1), replacement);

    store.applyStyleProperties(3, from); // which nobody carries
    store.applyEditorChanges(3, from);
    EXPECT_TRUE(dispatcher.backgroundTasks.empty());
    EXPECT_THAT(favicons, ElementsAre(1));
}

} // namespace
} // namespace tessaril
