#include "formats/moz_document.h"
#include "formats/user_css_reader.h"
#include "formats/variable_declaration.h"
#include "model/text.h"
#include "support/captured_log.h"

#include <gtest/gtest.h>

#include <random>

// Texts that no author means. The large ones would take minutes with a reader that goes back over
// what it has read.
namespace tessaril {

namespace {

std::string repeated(std::string_view part, std::size_t size) {
    std::string text;
    text.reserve(size + part.size());
    while (text.size() < size)
        text += part;
    return text;
}

std::optional<styleContainer> read(std::string_view text) {
    return parseUserCSS(text, {[] { return 1; }, [](styleContainer&) {}});
}

/// Whether every text that the style holds is UTF-8.
bool isValid(const styleContainer& style) {
    std::string all = style.styleData.name + style.version + style.namespace_ + style.description +
                      style.author + style.license + style.preprocessor;
    for (const styleSection& section : style.styleData.sections) {
        for (const auto* rules :
             {&section.domains, &section.urls, &section.urlPrefixes, &section.regexps})
            for (const std::string& rule : *rules)
                all.append(rule).append(isValidUTF8(rule) ? "" : "\xFF");
        all.append(section.code).append(isValidUTF8(section.code) ? "" : "\xFF");
    }
    for (const userVariable& variable : *style.userVariables) {
        all += variable.type + " " + variable.name + " " + variable.label + " " +
               variable.defaultValue + " ";
        if (variable.rangeOptions) all += variable.rangeOptions->units.value_or("") + " ";
        if (!variable.selectOptions) continue;
        for (const auto& [name, label, value] : *variable.selectOptions)
            all += *name + " " + *label + " " + *value + " ";
    }
    return isValidUTF8(all);
}

} // namespace

TEST(HostileText, isReadOrRefusedWholeWhateverItsOrder) {
    const std::vector<std::string> tokens = {"@-moz-document ",
                                             "domain(",
                                             "regexp(",
                                             "url-prefix('",
                                             "\")",
                                             ")",
                                             ",",
                                             "'",
                                             "\"",
                                             "`",
                                             "{",
                                             " {",
                                             "}",
                                             "[",
                                             "]",
                                             "/*",
                                             "*/",
                                             "/",
                                             "\\",
                                             "//",
                                             "\r\n",
                                             "\n",
                                             "\n    ",
                                             "\t",
                                             " ",
                                             "/* ==UserStyle==",
                                             "==/UserStyle== */",
                                             "\n@name ",
                                             "\n@description",
                                             "\n@Var ",
                                             "\n@preprocessor stylus\n",
                                             "\n@preprocessor less\n",
                                             "\n@var select a 'A' ",
                                             "\n@var range b \"B\" ",
                                             "\n@var text c\"",
                                             "\n@advanced dropdown d \"D\"{",
                                             "<<<EOT",
                                             "EOT;",
                                             "\":",
                                             "*",
                                             ":",
                                             "5",
                                             "\u00E9",
                                             "\u3000",
                                             "\u20AC",
                                             "\U0001F600"};
    testing::CapturedLog log;
    std::mt19937 random(11);
    int styles = 0;
    std::string broken; // the captured log would swallow a failure's own message
    for (int round = 0; round < 20000; ++round) {
        std::string text = random() % 2 ? "/* ==UserStyle==" : "";
        for (auto count = random() % 40; count > 0; --count)
            text += tokens[random() % tokens.size()];
        if (random() % 2) text += "==/UserStyle== */a{}";
        const auto style = read(text);
        if (!style) continue;
        ++styles;
        if (!isValid(*style)) broken = text;
        for (const char* preprocessor : {"less", "stylus"})
            for (const styleSection& section : sectionsFromCSS(text, preprocessor))
                if (!isValidUTF8(section.code)) broken = text;
    }
    EXPECT_TRUE(isValidUTF8(log.take()));
    EXPECT_EQ(broken, "");
    EXPECT_GT(styles, 5000);
}

TEST(HostileText, costsNoMorePerByteThanOtherText) {
    testing::CapturedLog log;
    constexpr std::size_t size = 500'000;
    const std::string start = "@-moz-document domain(a) {";
    for (const char* part : {"{",
                             "}",
                             " {",
                             "\n{",
                             "\"",
                             "'",
                             "/",
                             "*",
                             "/*",
                             "/*/",
                             "*/",
                             "//",
                             "\n",
                             "\r\n",
                             "\n\t",
                             " ",
                             "\u3000",
                             "),",
                             "(\"",
                             "@-moz-document",
                             "@-moz-document\n",
                             "@-moz-document {",
                             "/*@-moz-document*/",
                             "{/*",
                             "{}",
                             "//}\n",
                             "==/UserStyle== */",
                             "/* ==UserStyle=="}) {
        const std::string text = repeated(part, size);
        for (const char* preprocessor : {"", "stylus"}) {
            sectionsFromCSS(start + text, preprocessor);
            sectionsFromCSS(text + start + "}", preprocessor);
        }
        parseSectionHeader("domain(" + text, "");
        read(text);
    }
    for (const char* part : {"\n", "\r\n", "@var\n", "@var text a A b\n", "@Name\n", "x\n", "@",
                             "@description\nx\n", "@name @namespace\n"})
        read("/* ==UserStyle==\n@description d\n" + repeated(part, size) + "@var select s S {\n" +
             repeated(part, size) + "==/UserStyle== */a{}");
}

TEST(HostileText, costsNoMorePerByteInDeclarations) {
    constexpr std::size_t size = 300'000;
    for (const char* part : {"\"",
                             "'",
                             "`",
                             ",",
                             "{",
                             "}",
                             "[",
                             "]",
                             " ",
                             "\t",
                             "\n",
                             ":",
                             "\":",
                             "\\",
                             "\\/",
                             "\\\"",
                             "'{",
                             "\",\"",
                             "EOT;",
                             "<<<EOT",
                             "a \"b\" c EOT;",
                             "\"a:b\":\"c\",",
                             "5,",
                             "'a',"}) {
        const std::string text = repeated(part, size);
        for (const char* type : {"select", "dropdown", "range", "text"})
            for (const char* open : {" a A {", " a A {<<<EOT", " a A [", " a \"A\" ", " a"})
                parseVariableDeclaration(type + (open + text) + (contains(open, "[") ? "]" : "}"));
    }
}

} // namespace tessaril
