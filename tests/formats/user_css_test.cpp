#include "formats/user_css_reader.h"
#include "formats/user_css_writer.h"
#include "formats/variable_declaration.h"
#include "model/database_json.h"
#include "model/text.h"
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

TEST_F(UserCSSReader, readsPlainTextWithDefaults) {
    const std::string text = "a{}\n==/UserStyle== */ /* ==UserStyle==\n@name x";
    const styleContainer style = read(" " + text).value();
    auto expected =
        makeStyleContainer(makeStyleJSON("Style From User CSS", text), "usercss", -1, 42);
    expected.dateModified = style.dateModified;
    EXPECT_EQ(style, expected);
    EXPECT_EQ(read("/* ==UserStyle==\n@name x\n==/UserStyle== */ \n"), std::nullopt);
}

TEST_F(UserCSSReader, readsEveryKeyAndTellsThemApart) {
    const auto style = read("b{}/* ==UserStyle==\r@name\t\tMy Style \r\n @version 1\n@namespace n"
                            "\n@author a\n@homepageURL h\n@supportURL s\n@updateURL\n@license l\n"
                            "@preprocessor Less\n@name x==/UserStyle== */c{}");
    EXPECT_EQ(style->styleData.name, "My Style");
    EXPECT_EQ(style->version + style->namespace_ + style->author + style->homepageURL +
                  style->supportURL + style->license + style->preprocessor,
              "1nahslLess");
    EXPECT_EQ(style->updateURL, "");
    EXPECT_EQ(style->styleData.sections.at(0).code, "b{}c{}");
    EXPECT_EQ(compiled, 0); // "Less" is not "less"

    const auto other = read(fileWith("@name a\n@name b\n@name c @namespace d\n@HomepageURL e\n"
                                     "@homepageurl f\nx @version g\n@authority h"));
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
    const std::vector<userVariable>& variables = style.value().userVariables.value();
    ASSERT_EQ(variables.size(), 2u);
    EXPECT_EQ(variables[0].defaultValue, "b");
    EXPECT_EQ(variables[1].selectOptions,
              (std::vector<variableOption>{{"@icon\nd", "D", "@media e {}"}}));
    EXPECT_EQ(compiled, 1);
}

TEST_F(UserCSSReader, compilesWhatNeedsItButNoCompilersOutput) {
    for (const auto& [lines, times] : {std::pair{"@preprocessor less", 1},
                                       {"@preprocessor stylus", 1},
                                       {"@preprocessor uso", 0}}) {
        EXPECT_EQ(read(fileWith(lines))->userVariables, std::vector<userVariable>()) << lines;
        EXPECT_EQ(compiled, times) << lines;
    }
    const styleContainer output = parseCompiledCSS("a{}@-moz-document domain(b){c}").value();
    EXPECT_TRUE(output.uniqueID == 0 && output.styleData.sections.size() == 2);
    EXPECT_EQ(parseCompiledCSS(" "), std::nullopt);
}

/// What is written for a style of one variable, from its first line to the closing marker.
std::string declared(userVariable variable) {
    styleContainer style;
    style.userVariables = {{std::move(variable)}};
    const std::string text = writeUserCSS(style);
    constexpr std::size_t before = std::string_view("/* ==UserStyle==\n").size();
    return text.substr(before, text.find("==/UserStyle== */\n\n") - before);
}

TEST(UserCSSWriter, writesPropertiesInOrderAndSectionsBehindThem) {
    styleContainer style;
    style.styleData.name = "N";
    style.styleData.sections = {{.code = "a {}"}};
    EXPECT_EQ(writeUserCSS(style), "/* ==UserStyle==\n@name\t\t\tN\n==/UserStyle== */\n\na {}");

    const styleSection ruled{{"u"}, {"p"}, {"d", "e"}, {R"(\d")"}, "b\n\tc"};
    style.styleData.sections = {ruled, {.code = "d"}, {.domains = {"e"}, .code = "f"}};
    style.styleData.name = "\u3000 ";
    style.author = " A ";
    style.description = "D\nE";
    style.version = "1";
    style.namespace_ = "S";
    style.license = "L";
    style.preprocessor = " ";
    style.updateURL = "U";
    style.homepageURL = style.supportURL = "not written";
    EXPECT_EQ(writeUserCSS(style), "/* ==UserStyle==\n"
                                   "@author\t\t\t A \n"
                                   "@description\tD\nE\n"
                                   "@version\t\t1\n"
                                   "@namespace\t\tS\n"
                                   "@license\t\tL\n"
                                   "@preprocessor\t \n"
                                   "@updateURL\t\tU\n"
                                   "==/UserStyle== */\n\n"
                                   "@-moz-document domain(\"d\"), domain(\"e\"), url(\"u\"), "
                                   "url-prefix(\"p\"), regexp(\"\\\\d\"\")\n"
                                   "{\n\tb\n\t\tc\n}\nd\n\n"
                                   "@-moz-document domain(\"e\")\n{\n\tf\n}");
    style.preprocessor = "Stylus";
    EXPECT_THAT(writeUserCSS(style), HasSubstr("d\"\")\n\n\tb\n\t\tc\n\nd"));
}

TEST(UserCSSWriter, declaresEveryTypeOfVariable) {
    const auto number = [](std::string type, std::optional<rangeOpts> bounds) {
        return declared({type, "n", "L", "5", {}, bounds, "9"});
    };
    const auto select = [](std::string type, std::optional<std::vector<variableOption>> options) {
        return declared({type, "n", "L", "1", std::move(options), {}, {}});
    };
    const double most = std::numeric_limits<double>::max();
    for (const auto& [written, expected] : std::vector<std::pair<std::string, std::string>>{
             {declared({"text", "n", "L", "a b", {}, {}, {}}), "@var text n \"L\" a b\n"},
             {declared({"text", "n", "L", "http://a", {}, {}, {}}),
              "@var text n \"L\" \"'http://a'\"\n"},
             {declared({"color", "n", "L", "a:b", {}, {}, "c"}), "@var color n \"L\" a:b\n"},
             {number("number", {{0, 10, 0.5, "px"}}),
              "@var number n \"L\" [5, 0.0, 10.0, 0.5, 'px']\n"},
             {number("number", {{-most, most, 1, "px"}}),
              "@var number n \"L\" [5, null, null, 1.0, 'px']\n"},
             {number("range", {{0, 100, 1, {}}}), "@var range n \"L\" [5]\n"},
             {number("range", {{-0.0, most, 1e-7, {}}}),
              "@var range n \"L\" [5, -0.0, null, 1e-07]\n"},
             {number("range", {{most, 1e22, 123456789012, ""}}),
              "@var range n \"L\" [5, 1.7976931348623157e+308, 1e+22, 123456789012.0, '']\n"},
             {select("select", {{{"a", "a", "x"}, {"a", "B", R"(\/")"}}}),
              "@var select n \"L\" {\n\"a\": `x`,\n\"a:B\": `\\\\\\/\\\"`\n}\n"},
             {select("image", {{{{}, "B", {}}, {"a", {}, "x"}}}),
              "@var select n \"L\" {\n\"B\": ``,\n\"a\": `x`\n}\n"},
             {select("dropdown", {{}}), "@var select n \"L\" {\n}\n"},
             {select("dropdown", {}), ""}})
        EXPECT_EQ(written, expected);
}

/// Draws styles with whatever can be hostile and comes back as it was; what does not is in the
/// writer's contract.
struct StyleGenerator {
    explicit StyleGenerator(unsigned seed) : random(seed) {}

    styleContainer style() {
        styleContainer made = makeStyleContainer({}, sourceUserCSS, noUserstyleID, 7);
        for (std::string* value : {&made.styleData.name, &made.author, &made.version,
                                   &made.namespace_, &made.license, &made.description})
            *value = enclosed(line);
        made.description += text("\n~\n\n~\n@icon~ x~@~'~\"~{~}");
        made.preprocessor = oneOf("~less~stylus~uso~default");
        if (chance(2)) made.updateURL = enclosed(line);
        auto& sections = made.styleData.sections;
        for (auto count = random() % 5; count > 0; --count)
            sections.push_back(ruledSection());
        if (made.preprocessor != "stylus" && sections.size() > 2) sections.back().code.clear();
        if (sections.empty() || chance(2))
            sections.insert(sections.begin() + long(random() % (sections.size() + 1)),
                            {.code = code()});
        for (auto count = random() % 5; count > 0; --count)
            made.userVariables->push_back(variable());
        return made;
    }

    static constexpr const char* line =
        "a~ ~\t~\"~'~`~\\~/~-{~}~[~]~(~)~,~:~;~*~/*~<<<EOT~EOT;~@-moz-document ~@var~@name ~"
        "==UserStyle==~\u00E9~\u3000~\u6F22~\U0001F600~\u0085";
    static constexpr const char* words =
        "a~ b~'~`~\\d~/~-{~}~[~]~,~<<<EOT~EOT;~x\n~x\n@icon~\u00E9~\U0001F600";
    std::mt19937 random;

    bool chance(unsigned of) { return random() % of == 0; }

    std::string oneOf(std::string_view list) {
        const auto parts = split(list, "~");
        return std::string(parts[random() % parts.size()]);
    }
    std::string text(std::string_view parts) {
        std::string made;
        for (auto count = random() % 8; count > 0; --count)
            made += oneOf(parts);
        return made;
    }
    /// Neither empty nor with blanks at its ends.
    std::string enclosed(std::string_view parts) { return "n" + text(parts) + "m"; }

    double number() {
        constexpr double special[] = {0, 1, 100, 2.2250738585072014e-308, -0.1, 1e21, 5e-324};
        if (chance(2)) return special[random() % std::size(special)];
        return std::ldexp(double(random()) - 2e9, int(random() % 200) - 100);
    }
    std::string code() {
        return "a {}" +
               text("\n~\n\t~ ~a { b: \"\\201C }{\" }~\n\n\td { e: url('x') }~/* } \" */~\u00E9") +
               "f { }";
    }
    styleSection ruledSection() {
        const auto rules = [&] {
            std::vector<std::string> made(random() % 3);
            for (std::string& rule : made)
                rule = text("a~ ~.~\\d~/x~\"~'~(~)~[~]~|~*~?~&=~#~}~-{2}~x,b~\u00E9~\U0001F600");
            return made;
        };
        styleSection made{rules(), rules(), rules(), rules(), code()};
        if (made.appliesEverywhere()) made.domains = {"a.example"};
        return made;
    }
    userVariable variable() {
        userVariable made;
        made.type = oneOf("text~color~checkbox~select~number~range");
        made.name = "v" + text("a~-~_~1~\u00E9~\\~/~:~,~{~}~[");
        made.label = text(words);
        made.defaultValue = isNumeric(made) ? oneOf("5~-0.5~1e3~.~a b~\u00E9") : enclosed(words);
        if (made.type == "select") {
            made.selectOptions.emplace(1 + random() % 4);
            for (variableOption& option : *made.selectOptions) {
                option.name = enclosed("a~ b~'~-{~}~[~]~,~@~/~\u00E9");
                option.label = chance(2) ? option.name : enclosed("a~ b~'~-{~}~[~]~,~@~/~\u00E9");
                option.value = text("a~ b~'~/~-{~}~,~:~;~<<<EOT~EOT;~x\n~x\n@x~\u00E9") + "w";
            }
            const std::size_t marked = random() % made.selectOptions->size();
            *made.selectOptions->at(marked).name += '*';
            made.defaultValue = std::to_string(marked);
        }
        if (isNumeric(made))
            made.rangeOptions =
                chance(3) ? defaultBounds(made.type) : rangeOpts{number(), number(), number(), {}};
        if (made.rangeOptions && made.rangeOptions != defaultBounds(made.type) && chance(2))
            made.rangeOptions->units = text("px~%~'~\"~[~]~x\n");
        made.currentValue = "chosen";
        return made;
    }
};

TEST(UserCSSWriter, writesWhatTheReaderReadsBack) {
    StyleGenerator generator(5);
    for (int round = 0; round < 600; ++round) {
        styleContainer expected = generator.style();
        const std::string text = writeUserCSS(expected);
        const auto read = parseUserCSS(text, {[] { return 7; }, [](styleContainer&) {}});
        ASSERT_TRUE(read) << text;
        for (userVariable& variable : *expected.userVariables)
            variable.currentValue = variable.defaultValue;
        expected.dateModified = read->dateModified;
        ASSERT_TRUE(*read == expected) << *encodeStyle(*read) << "\n" << text;
    }
}

} // namespace
} // namespace tessaril
