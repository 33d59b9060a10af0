#include "model/text.h"
#include "store/style_export.h"
#include "support/store_machine.h"
#include "support/test.h"

namespace tessaril {
namespace {

TEST(StyleExportNames, AreTakenByFileSystemsAndPanels) {
    for (const auto& [style, file] : std::vector<std::pair<std::string, std::string>>{
             {"Dark ü 漢.v2", "Dark ü 漢.v2.user.css"},
             {"a/b\\c", "a-b\\c.user.css"},
             {std::string("a\0b\nc", 5), "a b c.user.css"},
             {" ..~ .hidden. ", "hidden..user.css"},
             {"The \"best\"", "The 'best'.user.css"},
             {"", "Style.user.css"},
             {"\u3000../", "-.user.css"},
             {"~", "Style.user.css"}})
        EXPECT_EQ(proposedExportName(style), file);
    std::string name = "a";
    for (int i = 0; i < 200; ++i)
        name += "漢";
    const std::string cut = proposedExportName(name);
    EXPECT_EQ(cut.size(), 1 + 44 * 3 + std::string(".user.css").size());
    EXPECT_TRUE(isValidUTF8(cut));
}

struct StyleExportTest : ::testing::Test, StoreMachine<> {
    void write(const std::filesystem::path& file) {
        StyleExport(files, alerts, dispatcher).write(file, "é {}");
        dispatcher.runAll();
    }
};

TEST_F(StyleExportTest, WritesInPlaceUnderAnAllowedType) {
    files.contents["/b.css"] = "old"; // the panel has asked about this one
    for (const char* name :
         {"/a.user.css", "/b.css", "/C.CSS", "/d", "/e.txt", "/f.User", "/.css", "/.user"})
        write(name);
    std::vector<std::string> names;
    for (const auto& [path, content] : files.contents) {
        names.push_back(path.string());
        EXPECT_EQ(content, "é {}");
    }
    EXPECT_THAT(names, ElementsAre("/.css.user.css", "/.user.user.css", "/C.CSS", "/a.user.css",
                                   "/b.css", "/d.user.css", "/e.txt.user.css", "/f.User.css"));
    EXPECT_EQ(files.filesWritten, 0) << "by way of a temporary file";
    EXPECT_THAT(alerts.questions, IsEmpty());
}

TEST_F(StyleExportTest, AsksBeforeANameThatItMadeIsReplacedAndTellsOfFailures) {
    files.contents["/a.user.css"] = "old";
    alerts.answers = {{0}};
    write("/a");
    ASSERT_EQ(alerts.questions.size(), 1U);
    EXPECT_EQ(alerts.questions[0].title, "“a.user.css” exists already. Do you want to replace it?");
    EXPECT_EQ(files.contents["/a.user.css"], "old");
    alerts.answers = {{1}};
    write("/a");
    EXPECT_EQ(files.contents["/a.user.css"], "é {}");

    files.full = true;
    write("/b.css");
    EXPECT_THAT(alerts.taken(), ElementsAre("Error Saving File"));
}

} // namespace
} // namespace tessaril
