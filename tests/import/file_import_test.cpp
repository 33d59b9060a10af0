#include "import/file_import.h"
#include "support/import_machine.h"
#include "support/test.h"

namespace tessaril {
namespace {

struct FileImportTest : ::testing::Test, ImportMachine {
    /// Imports files of these names and contents together and gives the last style.
    styleContainer imported(const std::vector<std::pair<std::string, std::string>>& named) {
        std::vector<std::filesystem::path> paths;
        for (const auto& [name, text] : named) {
            paths.emplace_back("/in/" + name);
            files.contents[paths.back()] = text;
        }
        importer.importFiles(paths);
        dispatcher.runAll();
        return last();
    }

    FileImport importer{files, importing()};
};

std::string userCSS(const std::string& metadata) {
    return "/* ==UserStyle==\n" + metadata + "\n==/UserStyle== */\n" + block;
}

TEST_F(FileImportTest, plainCSSKeepsItsTextAndWarnsThatItAppliesEverywhere) {
    const std::string text = "\n/* ==UserStyle==\n@name Ignored\n==/UserStyle== */\nb { }\n";
    const styleContainer style = imported({{"dark.user.css", text}});
    EXPECT_TRUE(style.source == "custom" && style.userstyleID == -1);
    EXPECT_EQ(style.styleData, makeStyleJSON("dark", text)) << "metadata and blanks included";
    EXPECT_THAT(alerts.alerts.at(0).text, StartsWith("The style \"dark\" does not have"));
    EXPECT_THAT(alerts.taken(), ElementsAre("CSS File Imported With No Rules"));
}

TEST_F(FileImportTest, takesTheNameFromTheFileAndTheSourceFromTheUpdateAddress) {
    for (const auto& [file, text, name, source] :
         std::vector<std::tuple<std::string, std::string, std::string, std::string>>{
             {"site.user.css", block, "site", "custom"},
             {"site.css", block, "site", "custom"},
             {"site.user.v2.css", block, "site.user.v2", "custom"},
             {"a.user.b.user.css", block, "a", "custom"},
             {".user.css", "b {}", ".user", "custom"},
             {"\u00FC.user.styl", block, "\u00FC", "custom"},
             {"caf\xE9.css", block, "caf\uFFFD", "custom"}, // else no save would work any more
             {"DARK.CSS", block, "DARK", "custom"},
             {"x.css", userCSS("@name Named.user"), "Named", "custom"},
             {"x.css", userCSS("@name C\n@updateURL"), "C", "custom"},
             {"x.css", userCSS("@name A\n@updateURL https://a.example/"), "A", "usercss"}}) {
        const styleContainer style = imported({{file, text}});
        EXPECT_EQ(style.styleData.name, name) << file;
        EXPECT_EQ(style.source, source) << text;
    }
}

TEST_F(FileImportTest, eachFileIsOneStyleOneSaveAndOneNotification) {
    imported({{"a.css", block}, {"a.less", block}, {"a.css", block}});
    EXPECT_EQ(announced, 3);
    EXPECT_EQ(written().styles.size(), 3U) << "never merged with what is there";
    EXPECT_THAT(dispatcher.priorities, Each(taskPriority::utility));
    EXPECT_THAT(alerts.alerts, IsEmpty());

    EXPECT_TRUE(importer.canImport());
    list.setLockedForSync(true);
    EXPECT_FALSE(importer.canImport());
}

TEST_F(FileImportTest, saysWhichFileGivesNoStyle) {
    imported({{"typed.txt", block}, {"broken.user.css", "@-moz-document domain(\"a\") {"}});
    EXPECT_THAT(names(), IsEmpty());
    EXPECT_THAT(alerts.alerts.at(0).text, HasSubstr("the file \"typed.txt.\""));
    EXPECT_THAT(alerts.alerts.at(1).text, HasSubstr("the file \"broken.user.css.\""));
    EXPECT_THAT(alerts.taken(), ElementsAre("Invalid Style", "Invalid Style"));
}

TEST_F(FileImportTest, passesOverWhatIsNoUTF8Text) {
    files.unreadable.insert("/in/folder.css");
    importer.importFiles({"/in/folder.css", "/in/gone.css"});
    imported({{"latin.css", "/* caf\xE9 */ " + block}});
    EXPECT_THAT(names(), IsEmpty());
    EXPECT_THAT(alerts.alerts, IsEmpty());

    EXPECT_EQ(imported({{"mark.css", "\xEF\xBB\xBF" + block}}).styleData.sections.size(), 1U)
        << "a byte-order mark is no code";
    EXPECT_EQ(imported({{"empty.css", ""}}).styleData.sections.at(0).code, "");
}

} // namespace
} // namespace tessaril
