#include "formats/variable_declaration.h"
#include "support/test.h"

namespace tessaril {
namespace {

/// A variable in one line: `type|name|label|default`, then its options as `(name|label|value)` or
/// its bounds as `<min max step units>`.
std::string brief(const std::optional<userVariable>& variable) {
    if (!variable) return "none";
    EXPECT_EQ(variable->currentValue, variable->defaultValue);
    std::ostringstream text;
    text << variable->type << '|' << variable->name << '|' << variable->label << '|'
         << variable->defaultValue;
    if (variable->selectOptions)
        for (const auto& [name, label, value] : *variable->selectOptions)
            text << '(' << *name << '|' << *label << '|' << *value << ')';
    if (const auto& range = variable->rangeOptions)
        text << '<' << range->min << ' ' << range->max << ' ' << range->step << ' '
             << range->units.value_or("-") << '>';
    return text.str();
}

void expectReadings(const std::vector<std::pair<std::string_view, std::string_view>>& readings) {
    for (const auto& [declaration, expected] : readings)
        EXPECT_EQ(brief(parseVariableDeclaration(declaration)), expected) << declaration;
}

} // namespace

TEST(VariableDeclaration, separatesItsPartsAndLogsUnknownTypes) {
    CapturedLog log;
    expectReadings({{"Select a A b", "none"},
                    {"", "none"},
                    {"text a \"A\" Value", "text|a|A|Value"},
                    {"\ttext\t \ta\r\t'A  b' c\t\td\n ", "text|a|A b|c d"},
                    {"text a'A b' c", "text|a|A b|c"},
                    {"text a\"A 'b'\" c", "text|a|A 'b'|c"},
                    {"text a\"A'b\" c", "none"}, // the single quote is cut first, and never closes
                    {"text \"A b\" c", "text|\"A|b\"|c"},
                    {"text a \"A\"\n#fff", "text|a|A|#fff"},
                    {"text a \"A\"\u00E9b", "text|a|A|b"}, // one whole character after the label
                    {"text a \"A\"", "text|a|A|"},
                    {"text a \"A", "none"},
                    {"text a A", "none"},
                    {"text", "none"}});
    EXPECT_EQ(log.take(), "Invalid variable type.\nInvalid variable type.\n");
}

TEST(VariableDeclaration, readsPlainDefaults) {
    expectReadings({{R"(text a A "b \/ c")", "text|a|A|b / c"},
                    {"text a A 'b'", "text|a|A|b"},
                    {"text a A \"b", "text|a|A|\"b"},
                    {"checkbox a A maybe", "checkbox|a|A|maybe"},
                    {"image a A {b} [c]", "image|a|A|{b} [c]"},
                    {"range a A 5", "range|a|A|5<0 100 1 ->"},
                    {"range a A Value", "none"},
                    {"dropdown a A [b]", "none"}});
}

TEST(VariableDeclaration, readsBounds) {
    expectReadings({{"range a A [50, 0, 200, 5]", "range|a|A|50<0 200 5 ->"},
                    {"range a A [5, null, null, x, 7]", "range|a|A|5<0 100 1 ->"},
                    {"range a A [\"px\", 5,-1e1 ,,2.5]", "range|a|A|5<-10 2.5 1 px>"},
                    {"range a A ['px', 5, 'em', 3]", "range|a|A|5<0 3 1 px>"},
                    {"range a A [ , 1, 2]", "range|a|A|<1 2 1 ->"},
                    {"range a A ['px']", "none"},
                    {"number a A []", "none"},
                    {"number a A [500]", "number|a|A|500<-1.79769e+308 1.79769e+308 1 ->"}});
}

TEST(VariableDeclaration, readsOptions) {
    expectReadings(
        {{R"(select a "A"{"x": "1", 'y*:Why': '2', `z:Zed:q`: `3, "4, 5", it's\/`})",
          R"(select|a|A|1(x|x|1)(y*|Why|2)(z|Zed|3, "4, 5", it's/))"},
         {R"(select a A {"x\",y": "1", "z:Z*":2,"w":})",
          R"(select|a|A|0(x\",y|x\",y|1)(z|Z*|2)(w|w|))"},
         {R"(select a A {"b": "c":d"})", R"(select|a|A|0(b|b|c":d))"},
         {R"(select a A {x: "1"})", "none"},
         {R"(select a A {"x" : "1"})", "none"},
         {R"(select a A {"x": "1",})", "none"},
         {"select a A {}", "none"},
         {R"(select a A ["x", , "y*", 'z:Zed, "z"', w:W"])",
          "select|a|A|1(x|x|x)(y*|y*|y*)(z|Zed, \"z\"|z)(w|W|w)"},
         {R"(select a A [" b : B ", "c:C:d*"])", "select|a|A|0(b|B|b)(c|C|c)"},
         {"select a A [ ]", "none"},
         {"dropdown a \"A\" {\n x \"X y\" <<<EOT\n b {c\\/d: \"e\"} EOT;\n y* \"\" z EOT;\nq EOT; "
          "\n}",
          "dropdown|a|A|0(x|X y|b {c/d: \"e\"})(y*||z)"},
         {"dropdown a A {x \"X\" \u00E9 EOT;}", "none"},
         {"dropdown a A {x \"X\" <<<EOT b}", "none"},
         {"dropdown a A {x <<<EOT b EOT;}", "none"}});
}

} // namespace tessaril
