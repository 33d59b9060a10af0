#include "formats/moz_document.h"
#include "formats/user_css_reader.h"
#include "formats/variable_declaration.h"
#include "model/database_json.h"
#include "model/text.h"
#include "support/test.h"

// Texts that no author means. The large ones would take minutes with a reader that goes back over
// what it has read.
namespace tessaril {
namespace {

std::string repeated(std::string_view part, std::size_t size) {
    std::string text;
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

/// What a reader made, in its persisted form. Nothing when a text was cut inside a character.
std::optional<std::string> json(std::vector<styleSection> sections) {
    return encodeStyle({.styleData = {.sections = std::move(sections)}});
}

/// More than this for a byte that was read, names of fields included: text was copied about.
constexpr std::size_t mostPerByte = 20;

// Failures are reported late: a captured log would swallow their messages.
struct HostileText : ::testing::Test {
    ~HostileText() override {
        EXPECT_TRUE(isValidUTF8(log.take()));
        EXPECT_EQ(culprit, "");
    }

    CapturedLog log;
    std::string culprit;
};

} // namespace

TEST_F(HostileText, isReadOrRefusedWholeWhateverItsOrder) {
    const auto tokens = parts(
        "@-moz-document ~domain(~regexp(~url-prefix('~\")~)~,~'~\"~`~{~ {~}~[~]~/*~*/~/~\\~//~"
        "\r\n~\n~\n    ~\t~ ~*~:~\":~5~<<<EOT~EOT;~/* ==UserStyle==~==/UserStyle== */~\n@name ~"
        "\n@description~\n@Var ~\n@preprocessor stylus\n~\n@preprocessor less\n~"
        "\n@var select a 'A' ~\n@var range b \"B\" ~\n@var text c\"~"
        "\n@advanced dropdown d \"D\"{~\u00E9~\u3000~\u20AC~\U0001F600");
    std::mt19937 random(11);
    int styles = 0;
    for (int round = 0; round < 20000; ++round) {
        std::string text = random() % 2 ? "/* ==UserStyle==" : "";
        for (auto count = random() % 40; count > 0; --count)
            text += tokens[random() % tokens.size()];
        if (random() % 2) text += "==/UserStyle== */a{}";
        for (const char* preprocessor : {"less", "stylus"})
            if (!json(sectionsFromCSS(text, preprocessor))) culprit = text;
        const auto style = read(text);
        if (!style) continue;
        ++styles;
        if (!encodeStyle(*style)) culprit = text;
    }
    EXPECT_GT(styles, 5000);
}

TEST_F(HostileText, costsNoMorePerByteThanOtherText) {
    constexpr std::size_t size = 500'000;
    const std::string start = "@-moz-document domain(a) {";
    for (const std::string_view part :
         parts("{~}~ {~\n{~\"~'~/~*~/*~/*/~*/~//~\n~\r\n~\n\t~ "
               "~\u3000~),~(\"~{/*~{}~//}\n~@-moz-document~"
               "@-moz-document\n~@-moz-document {~/*@-moz-document*/~==/UserStyle== */~"
               "/* ==UserStyle==")) {
        const std::string text = repeated(part, size);
        for (const char* preprocessor : {"", "stylus"})
            for (const std::string& css : {start + text, text + start + "}"})
                if (json(sectionsFromCSS(css, preprocessor))->size() > mostPerByte * css.size())
                    culprit = part;
        parseSectionHeader("domain(" + text, "");
        read(text);
    }
    for (const std::string_view part :
         parts("\n~\r\n~@var\n~@var text a A b\n~@Name\n~x\n~@~@description\nx\n~@name "
               "@namespace\n")) {
        const std::string text = "/* ==UserStyle==\n@description d\n" + repeated(part, size) +
                                 "@var select s S {\n" + repeated(part, size) +
                                 "==/UserStyle== */a{}";
        if (encodeStyle(read(text).value())->size() > mostPerByte * text.size()) culprit = part;
    }
}

TEST_F(HostileText, costsNoMorePerByteInDeclarations) {
    constexpr std::size_t size = 300'000;
    for (const std::string_view part :
         parts("\"~'~`~,~{~}~[~]~ ~\t~\n~:~\":~\\~\\/~\\\"~'{~\",\"~EOT;~<<<EOT~a \"b\" c EOT;~"
               "\"a:b\":\"c\",~5,~'a',")) {
        const std::string text = repeated(part, size);
        for (const char* type : {"select", "dropdown", "range", "text"})
            for (const char* open : {" a A {", " a A {<<<EOT", " a A [", " a \"A\" ", " a"}) {
                const auto variable = parseVariableDeclaration(type + (open + text) +
                                                               (contains(open, "[") ? "]" : "}"));
                // A name may stand for label and value too.
                if (variable &&
                    encodeStyle({.userVariables = {{*variable}}})->size() > mostPerByte * size)
                    culprit = part;
            }
    }
}

} // namespace tessaril
