#include "events/notification_names.h"
#include "model/database_json.h"
#include "preferences/preference_keys.h"
#include "store/style_store.h"
#include "support/captured_log.h"
#include "support/memory_files.h"
#include "support/recording_alerts.h"
#include "support/sample_styles.h"
#include "support/stepped_dispatcher.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tessaril {

namespace {

using namespace testing;
using ::testing::ElementsAre;

const std::filesystem::path container = "/container";
const std::filesystem::path document = container / "styledb.sdb";

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

class StyleStoreTest : public ::testing::Test {
protected:
    StyleStore makeStore() {
        return StyleStore({.files = files,
                           .channel = channel,
                           .alerts = alerts,
                           .dispatcher = dispatcher,
                           .center = center,
                           .preferences = preferences,
                           .compileStyle =
                               [](styleContainer& style) {
                                   style.styleData.sections.at(0).compiledcode = "compiled";
                               }},
                          container);
    }

    void putDocument(const std::vector<styleContainer>& styles) {
        files.contents[document] = *encodeDatabase({.styles = styles, .randomHash = -1});
    }

    styleDatabase written(const std::filesystem::path& path = document) {
        return decodeDatabase(files.contents.at(path)).value();
    }

    std::vector<std::string> names(const liveDatabase& database) {
        std::vector<std::string> result;
        for (const auto& style : database.styles)
            result.push_back(style->styleData.name);
        return result;
    }

    MemoryFiles files;
    MemoryChannel channel{files};
    RecordingAlerts alerts;
    SteppedDispatcher dispatcher;
    NotificationCenter center;
    MemoryPreferences stored;
    Preferences preferences{stored};
};

TEST_F(StyleStoreTest, firstStartWritesAnEmptyDatabase) {
    auto store = makeStore();
    EXPECT_TRUE(files.contents.empty()) << "nothing is loaded before the first access";
    EXPECT_TRUE(store.styleRows().empty());
    EXPECT_EQ(written().dbVersion, 1);
    EXPECT_THAT(files.journal, ElementsAre("wrote styledb.sdb")) << "no message, no second load";
    store.loadDatabase();
    EXPECT_EQ(files.filesWritten, 1);
    EXPECT_NE(store.snapshot().randomHash, written().randomHash);
}

TEST_F(StyleStoreTest, firstStartOnAFullDiskSaysSoAndGoesOn) {
    files.full = true;
    CapturedLog log;
    auto store = makeStore();
    EXPECT_TRUE(store.snapshot().styles.empty());
    EXPECT_EQ(log.take(), "Error writing style database.\n");
    EXPECT_THAT(alerts.alerts, ElementsAre(saveFailed));
}

TEST_F(StyleStoreTest, anUnreadableDocumentIsKeptBeforeTheFirstSaveReplacesIt) {
    files.contents[document] = "{\"torn";
    CapturedLog log;
    auto store = makeStore();
    EXPECT_TRUE(store.snapshot().styles.empty());
    EXPECT_EQ(log.take(), "Error decoding style database.\n");
    EXPECT_TRUE(alerts.alerts.empty());
    EXPECT_EQ(files.contents.at(document), "{\"torn");

    // As long as it cannot be kept, it is not replaced.
    store.saveDatabase();
    files.full = true;
    dispatcher.runAll();
    EXPECT_EQ(files.contents.at(document), "{\"torn");
    EXPECT_THAT(alerts.alerts, ElementsAre(saveFailed));

    files.full = false;
    store.saveDatabase();
    store.saveDatabase();
    dispatcher.runAll();
    store.saveDatabase();
    dispatcher.runAll();
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
    auto store = makeStore();
    std::vector<std::string> order;
    store.setUploadHandler([&] { files.journal.push_back("upload"); });
    stored.setValue(preferenceKeys::useiCloud, true);

    const date before = now();
    store.saveDatabase();
    const liveDatabase stamped = store.snapshot();
    EXPECT_NE(stamped.randomHash, -1) << "stamped on the calling thread";
    EXPECT_GE(stamped.dateModified, before);
    EXPECT_EQ(files.filesWritten, 0) << "written in the background";
    EXPECT_THAT(dispatcher.priorities, ElementsAre(taskPriority::utility));

    dispatcher.runAll();
    EXPECT_THAT(files.journal, ElementsAre("wrote styleDBUpdated", "wrote styledb.sdb", "upload"));
    EXPECT_EQ(files.contents.at("wormhole/styleDBUpdated"), files.contents.at(document));
    EXPECT_EQ(files.filesWritten, 1) << "one written file serves both names";
    EXPECT_EQ(written().randomHash, stamped.randomHash);
    EXPECT_EQ(written().styles, std::vector{*stamped.styles[0]});

    files.journal.clear();
    store.saveDatabaseWithoutUpload();
    dispatcher.runAll();
    EXPECT_EQ(written().randomHash, stamped.randomHash) << "no stamp";
    stored.setValue(preferenceKeys::useiCloud, false);
    store.saveDatabase();
    dispatcher.runAll();
    EXPECT_THAT(files.journal, ::testing::Not(::testing::Contains("upload")));
}

TEST_F(StyleStoreTest, savesAskedForWhileOneWaitsAreFoldedIntoIt) {
    putDocument({namedStyle("A", 1)});
    auto store = makeStore();
    int uploads = 0;
    store.setUploadHandler([&] { ++uploads; });
    stored.setValue(preferenceKeys::useiCloud, true);
    store.saveDatabaseWithoutUpload();
    store.setEnabled(1, false);
    store.saveDatabaseWithoutUpload();
    dispatcher.runAll();
    EXPECT_EQ(files.filesWritten, 1);
    EXPECT_EQ(uploads, 1) << "one of them wanted the upload";
    EXPECT_FALSE(written().styles.at(0).isEnabled);

    store.setEnabled(1, true);
    store.finishSaves();
    EXPECT_TRUE(written().styles.at(0).isEnabled) << "written before quitting";
    dispatcher.runAll();
    EXPECT_EQ(files.filesWritten, 2);
}

TEST_F(StyleStoreTest, aFailedSaveKeepsTheChangeAndTheOldDocument) {
    putDocument({namedStyle("A", 1)});
    const std::string before = files.contents.at(document);
    auto store = makeStore();
    stored.setValue(preferenceKeys::useiCloud, true);
    store.setUploadHandler([] { FAIL() << "nothing is uploaded after a failure"; });

    files.readOnly.insert(document);
    store.setEnabled(1, false);
    {
        CapturedLog log;
        dispatcher.runAll();
        EXPECT_EQ(log.take(), "Error writing style database.\n");
    }
    EXPECT_THAT(alerts.alerts, ElementsAre(saveFailed));
    EXPECT_EQ(files.contents.at(document), before);
    EXPECT_FALSE(written("wormhole/styleDBUpdated").styles.at(0).isEnabled)
        << "the message went out";
    EXPECT_FALSE(store.styleWithID(1)->isEnabled);

    // Nothing can even be staged: the message goes out by itself.
    files.readOnly.clear();
    files.full = true;
    store.setEnabled(1, true);
    dispatcher.runAll();
    EXPECT_EQ(files.contents.at(document), before);
    EXPECT_TRUE(written("wormhole/styleDBUpdated").styles.at(0).isEnabled);
    EXPECT_EQ(alerts.alerts.size(), 2U);
}

TEST_F(StyleStoreTest, whatCannotBeEncodedIsNeitherSentNorWritten) {
    putDocument({namedStyle("A", 1)});
    auto store = makeStore();
    store.setEnabled(1, false);
    dispatcher.runAll();
    files.journal.clear();
    const std::string before = files.contents.at(document);

    store.setStyleData(1, makeStyleJSON("not UTF-8: \xFF", ""));
    store.saveDatabase();
    dispatcher.runAll();
    EXPECT_TRUE(files.journal.empty());
    EXPECT_EQ(files.contents.at(document), before);
    EXPECT_THAT(alerts.alerts, ElementsAre(saveFailed));

    store.setStyleData(1, makeStyleJSON("fine", ""));
    store.appendStyle(namedStyle("B", 2));
    store.saveDatabase();
    dispatcher.runAll();
    EXPECT_EQ(written().styles.at(0).styleData.name, "fine");
    EXPECT_EQ(written().styles.at(1).styleData.name, "B");
}

TEST_F(StyleStoreTest, exportAndBackupWriteCopies) {
    putDocument({namedStyle("A", 1)});
    auto store = makeStore();
    store.exportDatabase("/elsewhere/Tessaril Styles.sdb");
    store.writePreCloudBackup();
    store.writePreCloudBackup();
    dispatcher.runAll();
    EXPECT_EQ(written("/elsewhere/Tessaril Styles.sdb"), written());
    const std::string backup = files.contents.at(container / "styledb-pre-icloud.sdb");

    store.setEnabled(1, false);
    store.writePreCloudBackup();
    dispatcher.runAll();
    EXPECT_EQ(files.contents.at(container / "styledb-pre-icloud.sdb"), backup);
    EXPECT_EQ(alerts.alerts.size(), 0U);

    files.contents.erase(container / "styledb-pre-icloud.sdb");
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
    styleContainer userCSS = namedStyle("UserCSS", 2);
    userCSS.source = sourceUserCSS;
    userCSS.downloadedFrom = "https://a.example/a.user.css";
    userCSS.updateURL = " \n";
    styleContainer updatable = namedStyle("Updatable", 3);
    updatable.source = sourceUserCSS;
    updatable.updateURL = "https://b.example/b.user.css";
    const styleContainer custom = namedStyle("Custom", 4);
    putDocument({site, userCSS, updatable, custom});
    auto store = makeStore();

    styleContainer otherCode = site;
    otherCode.styleData.sections[0].code = "other code, same number";
    styleContainer sameOrigin = namedStyle("Same origin", 11);
    sameOrigin.source = sourceUserCSS;
    sameOrigin.downloadedFrom = userCSS.downloadedFrom;
    styleContainer sameUpdate = sameOrigin;
    sameUpdate.downloadedFrom = "elsewhere";
    sameUpdate.updateURL = updatable.updateURL;
    styleContainer blankUpdate = namedStyle("Blank update address", 5);
    blankUpdate.source = sourceUserCSS;
    blankUpdate.downloadedFrom = "elsewhere";
    blankUpdate.updateURL = userCSS.updateURL;
    styleContainer compiled = custom;
    compiled.uniqueID = 12;
    compiled.isEnabled = false;
    compiled.styleData.compSections.emplace();
    styleContainer otherSite = site;
    otherSite.userstyleID = 77;
    otherSite.styleData.name = "Other site style";
    styleContainer newCustom = namedStyle("Twice the same", 4);
    styleContainer disabled = namedStyle("Disabled", 6);
    disabled.isEnabled = false;
    files.contents["/in.sdb"] =
        *encodeDatabase({.dbVersion = 9,
                         .styles = {otherCode, sameOrigin, sameUpdate, blankUpdate, compiled,
                                    otherSite, newCustom, newCustom, disabled}});

    store.importDatabase("/in.sdb");
    dispatcher.runAll();
    const auto live = store.snapshot();
    EXPECT_THAT(names(live),
                ElementsAre("Site", "UserCSS", "Updatable", "Custom", "Blank update address",
                            "Other site style", "Twice the same", "Twice the same", "Disabled"));
    EXPECT_EQ(live.dbVersion, 1);
    EXPECT_EQ(live.styles[4]->uniqueID, 5);
    EXPECT_FALSE(live.styles[8]->isEnabled);
    std::set<std::int64_t> ids;
    for (const auto& style : live.styles)
        ids.insert(style->uniqueID);
    EXPECT_EQ(ids.size(), live.styles.size()) << "a taken identifier is renewed";
    EXPECT_EQ(*live.styles[3], custom);

    // A copy of what is there adds nothing, and still saves.
    files.contents["/copy.sdb"] = files.contents.at(document);
    store.importDatabase("/copy.sdb");
    dispatcher.runAll();
    EXPECT_EQ(store.snapshot().styles, live.styles);
    EXPECT_NE(written().randomHash, live.randomHash);
}

TEST_F(StyleStoreTest, importOfADamagedFileChangesNothing) {
    putDocument({namedStyle("A", 1)});
    auto store = makeStore();
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

TEST_F(StyleStoreTest, resetEmptiesTheDocumentAndUploads) {
    putDocument({namedStyle("A", 1)});
    auto store = makeStore();
    int uploads = 0;
    store.setUploadHandler([&] { ++uploads; });
    stored.setValue(preferenceKeys::useiCloud, true);
    store.resetDatabase();
    dispatcher.runAll();
    EXPECT_TRUE(written().styles.empty());
    EXPECT_EQ(uploads, 1);
}

TEST_F(StyleStoreTest, answersQueries) {
    styleContainer site = namedStyle("Site", 7);
    site.source = sourceSite;
    putDocument({namedStyle("A", 5), site, namedStyle("second with the same id", 7)});
    auto store = makeStore();
    EXPECT_EQ(store.styleWithID(7)->styleData.name, "Site");
    EXPECT_EQ(store.indexOfStyle(7), 1U);
    EXPECT_EQ(store.styleWithID(8), std::nullopt);
    EXPECT_EQ(store.indexOfStyle(8), std::nullopt);
    EXPECT_EQ(store.countNonCustomStyles(), 1U);
    const auto rows = store.styleRows();
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_EQ(rows[0].source, "Custom Style");
    EXPECT_EQ(rows[1].source, "Imported from URL");
    EXPECT_EQ(rows[1].updateStatus, "none");

    styleContainer other = namedStyle("A", 99);
    EXPECT_TRUE(store.isDuplicateStyle(other)) << "equal data";
    other.styleData.sections[0].domains = {"x"};
    EXPECT_FALSE(store.isDuplicateStyle(other));
    EXPECT_FALSE(store.isUserCSSInstalled(namedStyle("A", 99))) << "only usercss styles count";
}

TEST_F(StyleStoreTest, mostAreEnabledFromHalfOnRoundedDown) {
    for (const auto& [enabled, total, most] : std::vector<std::tuple<int, int, bool>>{
             {0, 0, true}, {0, 1, true}, {1, 3, true}, {1, 4, false}, {2, 4, true}, {2, 5, true}}) {
        std::vector<styleContainer> styles;
        for (int i = 0; i < total; ++i)
            styles.emplace_back(namedStyle("s", i)).isEnabled = i < enabled;
        putDocument(styles);
        EXPECT_EQ(makeStore().mostStylesEnabled(), most) << enabled << " of " << total;
    }
}

TEST_F(StyleStoreTest, fieldUpdatesCopyTheirFieldsAndNoOthers) {
    const styleContainer before = namedStyle("A", 1);
    styleContainer from = fullStyle(2);
    putDocument({before});
    auto store = makeStore();
    std::vector<std::int64_t> favicons;
    const auto subscription = center.observe(
        notifications::updateFavicons, [&](const notification& n) { favicons.push_back(*n.id()); });

    store.applyStyleProperties(1, from);
    styleContainer expected = before;
    expected.allowIframe = from.allowIframe;
    expected.exclURL = from.exclURL;
    expected.exclDomain = from.exclDomain;
    expected.exclPrefix = from.exclPrefix;
    expected.exclRegExp = from.exclRegExp;
    expected.systemTheme = from.systemTheme;
    expected.userVariables = from.userVariables;
    expected.styleData.sections[0].compiledcode = "compiled";
    auto stored1 = *store.styleWithID(1);
    EXPECT_GE(stored1.dateModified, before.dateModified);
    expected.dateModified = stored1.dateModified;
    EXPECT_EQ(stored1, expected);
    dispatcher.runAll();
    EXPECT_EQ(written().styles.at(0), expected) << "saved";
    EXPECT_TRUE(favicons.empty());

    store.applyEditorChanges(1, from);
    expected.styleData = from.styleData;
    expected.styleData.sections[0].compiledcode = "compiled";
    expected.version = from.version;
    expected.namespace_ = from.namespace_;
    expected.description = from.description;
    expected.author = from.author;
    expected.license = from.license;
    expected.preprocessor = from.preprocessor;
    stored1 = *store.styleWithID(1);
    expected.dateModified = stored1.dateModified;
    EXPECT_EQ(stored1, expected);
    EXPECT_THAT(favicons, ElementsAre(1));
    dispatcher.runAll();
    EXPECT_EQ(written().styles.at(0), expected) << "saved";

    // These two leave saving to the caller.
    store.setStyleData(1, makeStyleJSON("B", "b"));
    EXPECT_EQ(store.styleWithID(1)->styleData, makeStyleJSON("B", "b"));
    expected = *store.styleWithID(1);
    const styleContainer replacement = namedStyle("C", 1);
    store.replaceStyleKeepingSettings(1, replacement);
    stored1 = *store.styleWithID(1);
    EXPECT_EQ(stored1.styleData, replacement.styleData);
    EXPECT_EQ(stored1.exclPrefix, expected.exclPrefix);
    EXPECT_EQ(stored1.allowIframe, expected.allowIframe);
    EXPECT_EQ(stored1.systemTheme, expected.systemTheme);
    EXPECT_EQ(stored1.version, "");
    EXPECT_EQ(stored1.dateModified, replacement.dateModified);
    EXPECT_TRUE(dispatcher.backgroundTasks.empty());

    // Nobody carries this identifier.
    store.applyStyleProperties(3, from);
    store.applyEditorChanges(3, from);
    store.setEnabled(3, false);
    store.setStyleData(3, {});
    store.replaceStyleKeepingSettings(3, from);
    EXPECT_TRUE(dispatcher.backgroundTasks.empty());
    EXPECT_THAT(favicons, ElementsAre(1));
}

TEST_F(StyleStoreTest, anAppendedStyleWithATakenIdentifierGetsAFreshOne) {
    putDocument({namedStyle("A", 1)});
    auto store = makeStore();
    store.appendStyle(namedStyle("B", 1));
    EXPECT_THAT(names(store.snapshot()), ElementsAre("A", "B"));
    EXPECT_NE(store.snapshot().styles[1]->uniqueID, 1);
}

} // namespace

} // namespace tessaril
