#include "compile/color_from_string.h"
#include "compile/substitution.h"
#include "compile/variable_text.h"
#include "support/test.h"

namespace tessaril {
namespace {

using enum variableReader;

using text = std::optional<std::string>;

userVariable variable(std::string type, std::string name, text value) {
    return {.type = std::move(type), .name = std::move(name), .currentValue = std::move(value)};
}

userVariable range(std::string name, text value) {
    userVariable made = variable("range", std::move(name), std::move(value));
    made.rangeOptions = rangeOpts{0, 20, 1, "px"};
    return made;
}

userVariable select(text value, std::string defaultValue = "") {
    userVariable made = variable("select", "s", std::move(value));
    made.defaultValue = std::move(defaultValue);
    made.selectOptions = {{"A", "A", "a"}, {"B*", "B", "b*"}, {"C", "C", std::nullopt}};
    return made;
}

styleContainer styleWith(std::vector<userVariable> variables, std::vector<std::string> codes) {
    styleContainer style;
    style.userVariables = std::move(variables);
    for (std::string& code : codes)
        style.styleData.sections.push_back({.domains = {"a.example"}, .code = std::move(code)});
    return style;
}

std::string placeholders(std::vector<userVariable> variables, std::string code) {
    styleContainer style = styleWith(std::move(variables), {std::move(code)});
    compilePlaceholders(style);
    return style.styleData.sections[0].compiledcode.value_or("left as it was");
}

/// "R,G,B" as a placeholder shows it; "-" for no colour.
std::string rgb(std::string_view color) {
    const std::string code = "/*[[c-rgb]]*/";
    const std::string made = placeholders({variable("color", "c", std::string(color))}, code);
    return made == code ? "-" : made;
}

} // namespace

TEST(VariableText, choosesOptions) {
    EXPECT_EQ(variableText(select("0"), page), "a");
    for (const char* type : {"select", "dropdown", "image"}) {
        userVariable other = select("1");
        other.type = type;
        EXPECT_EQ(variableText(other, page), "b");
    }
    EXPECT_EQ(variableText(select("2"), page), "");
    EXPECT_EQ(variableText(select("2"), compiler), "null");

    userVariable bare = variable("select", "s", "1");
    EXPECT_EQ(variableText(bare, page), "1"); // no options: a text like any other
    bare.selectOptions.emplace();
    EXPECT_EQ(variableText(bare, compiler), "");

    for (const char* wrong : {"3", "-1", "x", "99999999999999999999"})
        EXPECT_EQ(variableText(select(wrong, "1"), compiler), "b") << wrong;
    EXPECT_EQ(variableText(select({}, "1"), compiler), "b");
    EXPECT_EQ(variableText(select({}, "7"), compiler), "a");
}

TEST(VariableText, joinsUnitsAndFallsBackFromMissingValues) {
    EXPECT_EQ(variableText(range("r", "12"), page), "12px");
    userVariable invalid = range("r", "x");
    invalid.defaultValue = "4";
    EXPECT_EQ(variableText(invalid, page), "4px");
    userVariable missing = range("r", std::nullopt);
    EXPECT_EQ(variableText(missing, compiler), "");
    missing.defaultValue = "4";
    EXPECT_EQ(variableText(missing, compiler), "4px");
    missing.rangeOptions->units.reset();
    EXPECT_EQ(variableText(missing, compiler), "null");
    EXPECT_EQ(variableText(missing, page), "4");
    EXPECT_EQ(variableText(variable("range", "r", "12"), compiler), "12");
    EXPECT_EQ(variableText(variable("text", "t", "50%*"), compiler), "50%*");
}

TEST(Colors, areReadInTheirSpellings) {
    for (const auto& [color, bytes] : std::vector<std::pair<std::string_view, std::string_view>>{
             {"#ff8000", "255,128,0"},
             {" #f80; \u2028", "255,136,0"},
             {"#F8", "0,0,248"},  // a number, however short
             {"#12zz", "0,0,18"}, // up to the first character that is no digit
             {"#zz", "0,0,0"},
             {"#1\u00E92", "0,0,17"}, // three characters, one of them of two bytes
             {"#ff112233445566778899", "119,136,153"},
             {"rgb( 1 , 2.9,-3)", "1,2,-3"},
             {"rgba(1,2,3,0.5);", "1,2,3"},
             {"rgb(1e300,-1e300,0)", "1000000000000000000,-1000000000000000000,0"},
             {"RebeccaPurple;", "102,51,153"},
             {"aliceblue", "240,248,255"}, // the table's ends
             {"yellowgreen", "154,205,50"},
             {"lightgrey", "211,211,211"}})
        EXPECT_EQ(rgb(color), bytes) << color;
    EXPECT_EQ(colorFromString("rgba(255,0,51,.25)"), (colorComponents{1, 0, 0.2, 0.25}));
    for (int value = 0; value <= 255; ++value) { // no byte loses one in the division
        const std::string red = std::to_string(value);
        EXPECT_EQ(rgb("rgb(" + red + ",0,0)"), red + ",0,0");
    }
    for (const char* wrong :
         {"", "rgb(1,2)", "rgb(1,2,3,4)", "rgba(1,2,3)", "rgb(1,2,x)", "rgb(10%,2,3)", "rgb(,2,3)",
          "RGB(1,2,3)", "hsl(1,2,3)", "lightgray", "grey", "transparent", "tom ato"})
        EXPECT_EQ(rgb(wrong), "-") << wrong;
}

TEST(Substitution, fillsPlaceholdersInOrder) {
    EXPECT_EQ(placeholders({variable("color", "accent", "#f80")},
                           "/*[[accent]]*/ /*[[accent-rgb]]*/ /*[[ACCENT]]*/ /*[[accent]]*/"),
              "#f80 255,136,0 /*[[ACCENT]]*/ #f80");
    EXPECT_EQ(placeholders({variable("text", "c", "red")}, "/*[[c]]*/ /*[[c-rgb]]*/"),
              "red /*[[c-rgb]]*/");
    EXPECT_EQ(placeholders({variable("text", "a", "/*[[b]]*/"), range("b", "1")}, "x/*[[a]]*/"),
              "x1px"); // what one variable puts in, a later one replaces

    std::vector<userVariable> doubling;
    for (int i = 0; i < 60; ++i) {
        const std::string next = "/*[[v" + std::to_string(i + 1) + "]]*/";
        doubling.push_back(variable("text", "v" + std::to_string(i), next + next));
    }
    CapturedLog log;
    EXPECT_EQ(placeholders(doubling, "/*[[v0]]*/"), "left as it was");
    EXPECT_EQ(log.take(), "A compiled style was too large.\n");
}

TEST(Substitution, declaresCustomPropertiesAndWritesOnlyTheCompiledCode) {
    styleContainer declared = styleWith({range("b", "4"), select("2")}, {"", "x/*[[b]]*/"});
    compileCustomProperties(declared);
    EXPECT_EQ(declared.styleData.sections[1].compiledcode,
              ":root {\n\t--b: 4px;\n\t--s: ;\n}\nx/*[[b]]*/");
    declared.userVariables.emplace();
    compileCustomProperties(declared);
    EXPECT_EQ(declared.styleData.sections[1].compiledcode, "x/*[[b]]*/");

    for (auto* compile : {&compilePlaceholders, &compileCustomProperties}) {
        styleContainer style = styleWith({range("a", "1")}, {"/*[[a]]*/", ""});
        const styleContainer before = style;
        style.styleData.compSections.emplace();
        compile(style);
        for (styleSection& section : style.styleData.sections) {
            EXPECT_TRUE(section.compiledcode);
            section.compiledcode.reset();
        }
        EXPECT_EQ(style, before);
    }
}

} // namespace tessaril
