#include "formats/user_css_reader.h"
#include "support/test.h"

namespace tessaril {
namespace {

/// A style file with these lines of metadata and one rule.
std::string fileWith(std::string_view lines) {
    return "/* ==UserStyle==\n" + std::string(lines) + "\n==/UserStyle== */\na{}";
}

struct UserCSSReader : ::testing::Test {
    std::optional<styleContainer> read(std::string_view text) {
        compiled = 0;
        return parseUserCSS(text, {[] { return 42; }, [this](styleContainer&) { ++compiled; }});
    }

    int compiled = 0;
};

} // namespace

TEST_F(UserCSSReader, readsPlainTextWithDefaults) {
    const auto style = read(" a{}\n==/UserStyle== */ /* ==UserStyle==\n@name x");
    ASSERT_TRUE(style);
    styleContainer expected = makeStyleContainer(
        makeStyleJSON("Style From User CSS", "a{}\n==/UserStyle== */ /* ==UserStyle==\n@name x"),
        "usercss", -1, 42);
    expected.dateModified = style->dateModified;
    EXPECT_EQ(style, expected);
    EXPECT_EQ(read("/* ==UserStyle==\n@name x\n==/UserStyle== */ \n"), std::nullopt);
}

TEST_F(UserCSSReader, readsEveryKeyAndTellsThemApart) {
    const auto style = read("b{}/* ==UserStyle==\r@name\t\tMy Style \r\n @version 1\n@namespace n"
                            "\n@author a\n@homepageURL h\n@supportURL s\n@updateURL\n@license l\n"
                            "@preprocessor Less\n@name x==/UserStyle== */c{}");
    ASSERT_TRUE(style);
    EXPECT_EQ(style->styleData.name, "My Style");
    EXPECT_EQ(style->version + style->namespace_ + style->author + style->homepageURL +
                  style->supportURL + style->license + style->preprocessor,
              "1nahslLess");
    EXPECT_EQ(style->updateURL, "");
    EXPECT_EQ(style->styleData.sections.at(0).code, "b{}c{}");
    EXPECT_EQ(compiled, 0); // "Less" is not "less"

    const auto other = read(fileWith("@name a\n@name b\n@name c @namespace d\n@HomepageURL e\n"
                                     "@homepageurl f\nx @version g\n@authority h"));
    ASSERT_TRUE(other);
    EXPECT_EQ(other->styleData.name, "b");
    EXPECT_EQ(other->namespace_ + other->homepageURL + other->version, "");
    EXPECT_EQ(other->author, "ity h");
}

TEST_F(UserCSSReader, continuesDescriptions) {
    for (const auto& [lines, description] : std::vector<std::pair<const char*, const char*>>{
             {"@description a \n  b\n\tc \n@author x\ny", "a\n  b\n\tc "},
             {"@description a\n\n@author x", "a\n"},
             {"@description a\n@icon b\n @Name c\nd", "a\n@icon b"},
             {"@description a\n@description\nb", "\nb"},
             {"@description a\n@var text a A b\nc", "a"},
             {"@description a\r\nb", "a\n\nb"}}) // both halves of the pair are line breaks
        EXPECT_EQ(read(fileWith(lines))->description, description) << lines;
}

TEST_F(UserCSSReader, collectsVariablesUntilTheNextKey) {
    const auto style = read(fileWith("@var text a A b\n@advanced dropdown c \"C\" {\n@icon\n"
                                     "d \"D\" <<<EOT\n\n@media e {}\n EOT; }\n@NAME\nx\n"
                                     "@var bad f F g\n@var color h\nH #fff\nrest"));
    ASSERT_TRUE(style);
    ASSERT_EQ(style->userVariables->size(), 2u);
    EXPECT_EQ(style->userVariables->at(0).defaultValue, "b");
    EXPECT_EQ(style->userVariables->at(1).selectOptions->at(0).name, "@icon\nd");
    EXPECT_EQ(style->userVariables->at(1).selectOptions->at(0).value, "@media e {}");
    EXPECT_EQ(compiled, 1);
}

TEST_F(UserCSSReader, compilesWhatNeedsItButNoCompilersOutput) {
    for (const auto& [lines, times] : {std::pair{"@preprocessor less", 1},
                                       {"@preprocessor stylus", 1},
                                       {"@preprocessor uso", 0}}) {
        EXPECT_EQ(read(fileWith(lines))->userVariables, std::vector<userVariable>()) << lines;
        EXPECT_EQ(compiled, times) << lines;
    }
    const auto output = parseCompiledCSS("a{}@-moz-document domain(b){c}");
    ASSERT_TRUE(output);
    EXPECT_EQ(output->uniqueID, 0);
    EXPECT_EQ(output->styleData.sections.size(), 2u);
    EXPECT_EQ(parseCompiledCSS(" "), std::nullopt);
}

} // namespace tessaril
