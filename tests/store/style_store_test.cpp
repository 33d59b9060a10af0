#include "events/notification_names.h"
#include "preferences/preference_keys.h"
#include "support/captured_log.h"
#include "support/store_machine.h"
#include "support/test.h"

namespace tessaril {
namespace {

const RecordingAlerts::shown saveFailed{
    "Error writing style database",
    "An error occurred while trying to save changes to your styles. Your changes may not have been "
    "saved."};
const RecordingAlerts::shown exportFailed{
    "Error writing style database",
    "An error occurred while trying to back up your style database. Please make sure you have "
    "permission to write to the desired path."};
const RecordingAlerts::shown importFailed{
    "Error reading style database",
    "The style database file you selected may not be valid, or is corrupt."};

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
    int kept = 0;
    for (const auto& [path, bytes] : files.contents) {
        if (!path.filename().string().starts_with("styledb-unreadable-")) continue;
        EXPECT_EQ(path.extension(), ".sdb");
        EXPECT_EQ(bytes, "{\"torn");
        ++kept;
    }
    EXPECT_EQ(kept, 1);
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
    store.finishSaves();
    EXPECT_FALSE(written().styles.at(0).isEnabled) << "tried once more before the end";
    EXPECT_EQ(uploads, 1);
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
    store.appendStyle(namedStyle("B", 1));
    save();
    EXPECT_EQ(written().styles.at(0).styleData.name, "fine");
    EXPECT_EQ(written().styles.at(1).styleData.name, "B");
    EXPECT_NE(written().styles.at(1).uniqueID, 1) << "a taken identifier is renewed";
}

TEST_F(StyleStoreTest, exportAndBackupWriteCopies) {
    const std::filesystem::path backup = "/container/styledb-pre-icloud.sdb";
    putDocument({namedStyle("A", 1)});
    store.exportDatabase("/elsewhere/Tessaril Styles.sdb");
    store.writePreCloudBackup();
    dispatcher.runAll();
    EXPECT_EQ(written("/elsewhere/Tessaril Styles.sdb"), written());
    EXPECT_EQ(written(backup), written());

    files.contents.erase(backup);
    store.writePreCloudBackup();
    store.writePreCloudBackup(); // both before the first has written
    dispatcher.step(dispatcher.backgroundTasks);
    files.contents.at(backup) = "first";
    dispatcher.runAll();
    store.writePreCloudBackup();
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
    EXPECT_THAT(alerts.alerts, ElementsAre(exportFailed)) << "a failed backup is only logged";
}

TEST_F(StyleStoreTest, importSkipsWhatIsInstalled) {
    styleContainer site = namedStyle("Site", 1);
    site.userstyleID = 0;
    const styleContainer custom = namedStyle("Custom", 4);
    putDocument({site, userCSS("UserCSS", 2, "https://a.example/a.user.css", " \n"),
                 userCSS("Updatable", 3, "", "https://b.example/b.user.css"), custom});

    styleContainer otherCode = site;
    otherCode.styleData.sections[0].code = "other code, same number";
    styleContainer compiled = custom;
    compiled.uniqueID = 12;
    compiled.isEnabled = false;
    compiled.styleData.compSections.emplace();
    styleContainer otherSite = namedStyle("Other site style", 1);
    otherSite.userstyleID = 77;
    styleContainer disabled = namedStyle("Disabled", 6);
    disabled.isEnabled = false;
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
    std::set<std::int64_t> ids;
    for (const auto& style : live.styles)
        ids.insert(style->uniqueID);
    EXPECT_EQ(ids.size(), live.styles.size()) << "a taken identifier is renewed";

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
    store.importDatabase("/bad.sdb");
    store.importDatabase("/folder.sdb");
    EXPECT_EQ(log.take(), "Error decoding style database.\nError decoding style database.\n");
    EXPECT_THAT(alerts.alerts, ElementsAre(importFailed, importFailed));
    EXPECT_EQ(store.snapshot().randomHash, -1);
    EXPECT_TRUE(dispatcher.backgroundTasks.empty());
}

TEST_F(StyleStoreTest, answersQueries) {
    styleContainer site = namedStyle("Site", 7);
    site.source = sourceSite;
    putDocument({namedStyle("A", 5), site, namedStyle("second with the same id", 7)});
    EXPECT_EQ(store.styleWithID(7)->styleData.name, "Site");
    EXPECT_EQ(store.indexOfStyle(7), 1U);
    EXPECT_EQ(store.styleWithID(8), std::nullopt);
    EXPECT_EQ(store.indexOfStyle(8), std::nullopt);
    EXPECT_EQ(store.countNonCustomStyles(), 1U);
    const auto rows = store.styleRows();
    EXPECT_EQ(rows.at(0)->source, "Custom Style");
    EXPECT_EQ(rows.at(1)->source, "Imported from URL");
    EXPECT_EQ(rows.at(1)->updateStatus, "none");

    styleContainer other = namedStyle("A", 99);
    EXPECT_TRUE(store.isDuplicateStyle(other)) << "equal data";
    EXPECT_FALSE(store.isUserCSSInstalled(other)) << "only usercss styles count";
    other.styleData.sections[0].domains = {"x"};
    EXPECT_FALSE(store.isDuplicateStyle(other));
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
        EXPECT_GT(store.styleWithID(1)->dateModified, expected.dateModified);
        expected.dateModified = store.styleWithID(1)->dateModified;
        EXPECT_EQ(store.styleWithID(1), expected);
        dispatcher.runAll();
        EXPECT_EQ(written().styles.at(0), expected);
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

    // These two leave saving to the caller.
    store.setStyleData(1, makeStyleJSON("B", "b"));
    EXPECT_EQ(store.styleWithID(1)->styleData, makeStyleJSON("B", "b"));
    styleContainer replacement = namedStyle("C", 1);
    replacement.isEnabled = false;
    store.replaceStyleKeepingSettings(1, replacement);
    replacement.isEnabled = true;
    copySettings(from, replacement);
    EXPECT_EQ(store.styleWithID(1), replacement);

    // Nobody carries this identifier.
    store.applyStyleProperties(3, from);
    store.applyEditorChanges(3, from);
    setEnabled(3, false);
    store.setStyleData(3, {});
    store.replaceStyleKeepingSettings(3, from);
    EXPECT_TRUE(dispatcher.backgroundTasks.empty());
    EXPECT_THAT(favicons, ElementsAre(1));
}

} // namespace
} // namespace tessaril
