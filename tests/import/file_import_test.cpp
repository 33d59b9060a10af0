#include "events/notification_names.h"
#include "import/file_import.h"
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
using ::testing::IsEmpty;

class FileImportTest : public ::testing::Test {
protected:
    /// Imports files of these names and contents together.
    void importFiles(const std::vector<std::pair<std::string, std::string>>& named) {
        std::vector<std::filesystem::path> paths;
        for (const auto& [name, text] : named) {
            paths.emplace_back("/in/" + name);
            files.contents[paths.back()] = text;
        }
        importer.importFiles(paths);
        dispatcher.runAll();
    }

    styleContainer last() { return *store.snapshot().styles.back(); }

    MemoryFiles files;
    MemoryChannel channel{files};
    RecordingAlerts alerts;
    SteppedDispatcher dispatcher;
    NotificationCenter center;
    MemoryPreferences stored;
    Preferences preferences{stored};
    StyleStore store{{.files = files,
                      .channel = channel,
                      .alerts = alerts,
                      .dispatcher = dispatcher,
                      .center = center,
                      .preferences = preferences,
                      .compileStyle = [](styleContainer&) {}},
                     "/container"};
    StyleList list{store, center, dispatcher, alerts};
    FileImport importer{{.files = files,
                         .alerts = alerts,
                         .dispatcher = dispatcher,
                         .center = center,
                         .store = store,
                         .list = list,
                         .making = {.generateUniqueID = [this] { return store.generateUniqueID(); },
                                    .compileStyle = [](styleContainer&) {}}}};
};

const std::string block = "@-moz-document domain(\"a.example\") { b { color: red } }";

std::string userCSS(const std::string& metadata) {
    return "/* ==UserStyle==\n" + metadata + "\n==/UserStyle== */\n" + block;
}

TEST_F(FileImportTest, plainCSSKeepsItsTextAndWarnsThatItAppliesEverywhere) {
    const std::string text = "\n/* ==UserStyle==\n@name Ignored\n==/UserStyle== */\nb { }\n";
    importFiles({{"dark.user.css", text}});
    const styleContainer style = last();
    EXPECT_EQ(style.styleData.name, "dark");
    EXPECT_EQ(style.source, "custom");
    EXPECT_EQ(style.userstyleID, -1);
    ASSERT_EQ(style.styleData.sections.size(), 1U);
    EXPECT_EQ(style.styleData.sections[0].code, text) << "metadata and blanks included";
    EXPECT_TRUE(style.styleData.sections[0].appliesEverywhere());
    EXPECT_THAT(alerts.alerts,
                ElementsAre(RecordingAlerts::shown{
                    "CSS File Imported With No Rules",
                    "The style \"dark\" does not have any defined rules for where it should be "
                    "applied. If you do not define these rules, the style will be applied to all "
                    "sites."}));
}

TEST_F(FileImportTest, sourceFollowsTheUpdateAddress) {
    importFiles({{"a.user.css", userCSS("@name A\n@updateURL https://a.example/a.user.css")}});
    EXPECT_EQ(last().source, "usercss");
    EXPECT_EQ(last().styleData.name, "A");
    importFiles({{"b.user.css", userCSS("@name B")}});
    EXPECT_EQ(last().source, "custom");
    importFiles({{"c.user.css", userCSS("@name C\n@updateURL")}});
    EXPECT_EQ(last().source, "custom") << "an empty address is none";
    EXPECT_THAT(alerts.alerts, IsEmpty());
}

TEST_F(FileImportTest, takesTheNameFromTheFileAndCutsTheUserEnding) {
    for (const auto& [file, text, name] :
         std::vector<std::tuple<std::string, std::string, std::string>>{
             {"site.user.css", block, "site"},
             {"site.css", block, "site"},
             {"site.user.v2.css", block, "site.user.v2"},
             {"a.user.b.user.css", block, "a"},
             {"x.css", userCSS("@name Named.user"), "Named"},
             {".user.css", "b {}", ".user"},
             {"\u00FC.user.styl", block, "\u00FC"}}) {
        importFiles({{file, text}});
        EXPECT_EQ(last().styleData.name, name) << file;
    }
}

TEST_F(FileImportTest, eachFileIsOneStyleOneSaveAndOneNotification) {
    int announced = 0;
    const auto subscription =
        center.observe(notifications::addLatestStyle, [&](const notification&) { ++announced; });
    importFiles({{"a.css", block}, {"a.less", block}, {"a.css", block}});
    EXPECT_EQ(announced, 3);
    EXPECT_EQ(store.snapshot().styles.size(), 3U) << "never merged with what is there";
    EXPECT_THAT(dispatcher.priorities, ::testing::Each(taskPriority::utility));
    EXPECT_TRUE(files.contents.at("/container/styledb.sdb").find("a.example") != std::string::npos);
}

TEST_F(FileImportTest, saysWhichFileHasNoSection) {
    importFiles({{"broken.user.css", "@-moz-document domain(\"a\") {"}});
    EXPECT_TRUE(store.snapshot().styles.empty());
    EXPECT_THAT(alerts.alerts,
                ElementsAre(RecordingAlerts::shown{
                    "Invalid Style",
                    "There was an error importing the file \"broken.user.css.\" Please make sure "
                    "there are no formatting or syntax errors in the file."}));
}

TEST_F(FileImportTest, passesOverWhatIsNoUTF8Text) {
    files.unreadable.insert("/in/folder.css");
    importer.importFiles({"/in/folder.css", "/in/gone.css"});
    importFiles({{"latin.css", "/* caf\xE9 */ " + block}});
    EXPECT_TRUE(store.snapshot().styles.empty());
    EXPECT_THAT(alerts.alerts, IsEmpty());

    importFiles({{"mark.css", "\xEF\xBB\xBF" + block}});
    EXPECT_EQ(last().styleData.sections.size(), 1U) << "a byte-order mark is no code";
    importFiles({{"empty.css", ""}});
    EXPECT_EQ(last().styleData.sections.at(0).code, "");
}

TEST_F(FileImportTest, waitsForTheLockedList) {
    EXPECT_TRUE(importer.canImport());
    list.setLockedForSync(true);
    EXPECT_FALSE(importer.canImport());
}

} // namespace

} // namespace tessaril
