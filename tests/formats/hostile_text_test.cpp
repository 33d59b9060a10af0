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

/// The parts of a list that "~" separates.
std::vector<std::string_view> parts(std::string_view list) {
    return split(list, "~");
}

/// Every text that came out of a reader, each closed by a space: text that was cut inside a
/// character does not become whole again beside its neighbour.
std::string allTexts(const std::vector<styleSection>& sections) {
    std::string all;
    for (const styleSection& section : sections) {
        for (const auto* rules :
             {&section.domains, &section.urls, &section.urlPrefixes, &section.regexps})
            for (const std::string& rule : *rules)
                all.append(rule).append(" ");
        all.append(section.code).append(" ");
    }
    return all;
}

std::string allTexts(const userVariable& variable) {
    std::string all = variable.name + " " + variable.label + " " + variable.defaultValue + " ";
    if (variable.rangeOptions) all += variable.rangeOptions->units.value_or("") + " ";
    if (variable.selectOptions)
        for (const auto& [name, label, value] : *variable.selectOptions)
            all.append(*name).append(" ").append(*label).append(" ").append(*value).append(" ");
    return all;
}

std::string allTexts(const styleContainer& style) {
    std::string all = style.styleData.name + " " + style.description + " " + style.author + " " +
                      style.preprocessor + " " + allTexts(style.styleData.sections);
    for (const userVariable& variable : *style.userVariables)
        all += allTexts(variable);
    return all;
}

} // namespace

TEST(HostileText, isReadOrRefusedWholeWhateverItsOrder) {
    const auto tokens = parts(
        "@-moz-document ~domain(~regexp(~url-prefix('~\")~)~,~'~\"~`~{~ {~}~[~]~/*~*/~/~\\~//~"
        "\r\n~\n~\n    ~\t~ ~*~:~\":~5~<<<EOT~EOT;~/* ==UserStyle==~==/UserStyle== */~\n@name ~"
        "\n@description~\n@Var ~\n@preprocessor stylus\n~\n@preprocessor less\n~"
        "\n@var select a 'A' ~\n@var range b \"B\" ~\n@var text c\"~"
        "\n@advanced dropdown d \"D\"{~\u00E9~\u3000~\u20AC~\U0001F600");
    testing::CapturedLog log;
    std::mt19937 random(11);
    int styles = 0;
    std::string broken; // reported later: the captured log would swallow a failure's own message
    for (int round = 0; round < 20000; ++round) {
        std::string text = random() % 2 ? "/* ==UserStyle==" : "";
        for (auto count = random() % 40; count > 0; --count)
            text += tokens[random() % tokens.size()];
        if (random() % 2) text += "==/UserStyle== */a{}";
        for (const char* preprocessor : {"less", "stylus"})
            if (!isValidUTF8(allTexts(sectionsFromCSS(text, preprocessor)))) broken = text;
        const auto style = read(text);
        if (!style) continue;
        ++styles;
        if (!isValidUTF8(allTexts(*style))) broken = text;
    }
    EXPECT_TRUE(isValidUTF8(log.take()));
    EXPECT_EQ(broken, "");
    EXPECT_GT(styles, 5000);
}

TEST(HostileText, costsNoMorePerByteThanOtherText) {
    testing::CapturedLog log;
    constexpr std::size_t size = 500'000;
    const std::string start = "@-moz-document domain(a) {";
    std::string grown;
    for (const std::string_view part :
         parts("{~}~ {~\n{~\"~'~/~*~/*~/*/~*/~//~\n~\r\n~\n\t~ "
               "~\u3000~),~(\"~{/*~{}~//}\n~@-moz-document~"
               "@-moz-document\n~@-moz-document {~/*@-moz-document*/~==/UserStyle== */~"
               "/* ==UserStyle==")) {
        const std::string text = repeated(part, size);
        for (const char* preprocessor : {"", "stylus"})
            for (const std::string& css : {start + text, text + start + "}"})
                if (allTexts(sectionsFromCSS(css, preprocessor)).size() > css.size() + 1)
                    grown = part;
        parseSectionHeader("domain(" + text, "");
        read(text);
    }
    for (const std::string_view part :
         parts("\n~\r\n~@var\n~@var text a A b\n~@Name\n~x\n~@~@description\nx\n~@name "
               "@namespace\n")) {
        const std::string text = "/* ==UserStyle==\n@description d\n" + repeated(part, size) +
                                 "@var select s S {\n" + repeated(part, size) +
                                 "==/UserStyle== */a{}";
        if (allTexts(read(text).value()).size() > text.size()) grown = part;
    }
    log.take();
    EXPECT_EQ(grown, "");
}

TEST(HostileText, costsNoMorePerByteInDeclarations) {
    testing::CapturedLog log;
    constexpr std::size_t size = 300'000;
    std::string grown;
    for (const std::string_view part :
         parts("\"~'~`~,~{~}~[~]~ ~\t~\n~:~\":~\\~\\/~\\\"~'{~\",\"~EOT;~<<<EOT~a \"b\" c EOT;~"
               "\"a:b\":\"c\",~5,~'a',")) {
        const std::string text = repeated(part, size);
        for (const char* type : {"select", "dropdown", "range", "text"})
            for (const char* open : {" a A {", " a A {<<<EOT", " a A [", " a \"A\" ", " a"}) {
                const auto variable = parseVariableDeclaration(type + (open + text) +
                                                               (contains(open, "[") ? "]" : "}"));
                // A name may stand for label and value too.
                if (variable && allTexts(*variable).size() > 3 * size + 100) grown = part;
            }
    }
    log.take();
    EXPECT_EQ(grown, "");
}

} // namespace tessaril
