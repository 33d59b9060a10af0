#include "formats/user_css_reader.h"
#include "formats/user_css_writer.h"
#include "formats/variable_declaration.h"
#include "model/database_json.h"
#include "model/text.h"
#include "support/test.h"

namespace tessaril {
namespace {

using limits = std::numeric_limits<double>;

/// What is written for a style of one variable, from its first line to the closing marker.
std::string declared(userVariable variable) {
    styleContainer style;
    style.userVariables = {{std::move(variable)}};
    const std::string text = writeUserCSS(style);
    constexpr std::size_t before = std::string_view("/* ==UserStyle==\n").size();
    return text.substr(before, text.find("==/UserStyle== */\n\n") - before);
}

styleSection section(std::string domain, std::string code) {
    styleSection made;
    made.code = std::move(code);
    if (!domain.empty()) made.domains = {std::move(domain)};
    return made;
}

TEST(UserCSSWriter, writesPropertiesInOrderAndSectionsBehindThem) {
    styleContainer style;
    style.styleData.name = "N";
    style.styleData.sections = {section("", "a {}")};
    EXPECT_EQ(writeUserCSS(style), "/* ==UserStyle==\n@name\t\t\tN\n==/UserStyle== */\n\na {}");

    style.styleData.sections = {section("a", "b\n\tc"), section("", "d"), section("e", "f")};
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
                                   "@-moz-document domain(\"a\")\n{\n\tb\n\t\tc\n}\nd\n\n"
                                   "@-moz-document domain(\"e\")\n{\n\tf\n}");
    style.preprocessor = "Stylus";
    EXPECT_NE(writeUserCSS(style).find("domain(\"a\")\n\n\tb\n\t\tc\n\nd"), std::string::npos);
}

TEST(UserCSSWriter, declaresEveryTypeOfVariable) {
    const auto number = [](std::string type, std::optional<rangeOpts> bounds) {
        return declared({type, "n", "L", "5", {}, bounds, "9"});
    };
    const auto select = [](std::string type, std::optional<std::vector<variableOption>> options) {
        return declared({type, "n", "L", "1", std::move(options), {}, {}});
    };
    const double most = limits::max();
    for (const auto& [written, expected] : std::vector<std::pair<std::string, std::string>>{
             {declared({"text", "n", "L", "a b", {}, {}, {}}), "@var text n \"L\" a b\n"},
             {declared({"text", "n", "L", "http://a", {}, {}, {}}),
              "@var text n \"L\" \"'http://a'\"\n"},
             {declared({"color", "n", "L", "a:b", {}, {}, "c"}), "@var color n \"L\" a:b\n"},
             {declared({"own", "n", "", "", {}, {}, {}}), "@var own n \"\" \n"},
             {number("number", {{-most, most, 1, {}}}), "@var number n \"L\" [5]\n"},
             {number("number", {{0, 10, 0.5, "px"}}),
              "@var number n \"L\" [5, 0.0, 10.0, 0.5, 'px']\n"},
             {number("number", {{-most, most, 1, "px"}}),
              "@var number n \"L\" [5, null, null, 1.0, 'px']\n"},
             {number("number", {}), "@var number n \"L\" [5]\n"},
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
        for (auto count = random() % 5; count > 0; --count)
            made.styleData.sections.push_back(ruledSection());
        if (made.preprocessor != "stylus" && made.styleData.sections.size() > 2)
            made.styleData.sections.back().code.clear();
        if (made.styleData.sections.empty() || chance(2))
            made.styleData.sections.insert(
                made.styleData.sections.begin() +
                    static_cast<long>(random() % (made.styleData.sections.size() + 1)),
                section("", code()));
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
        constexpr double special[] = {0, 1, 100, limits::min(), -0.1, 1e21, 5e-324};
        return chance(2) ? special[random() % std::size(special)]
                         : std::ldexp(static_cast<double>(random()) - 2e9,
                                      static_cast<int>(random() % 200) - 100);
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
        styleSection made{rules(), rules(), rules(), rules(), code(), {}, {}};
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
        ASSERT_TRUE(*read == expected) << *encodeStyle(*read) << "\n"
                                       << *encodeStyle(expected) << "\n"
                                       << text;
    }
}

} // namespace
} // namespace tessaril
