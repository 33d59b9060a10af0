#include "formats/moz_document.h"
#include "support/test.h"

namespace tessaril {
namespace {

/// A section in one line: its rules by kind, then its code.
std::string brief(const styleSection& section) {
    std::string text;
    for (const auto& [kind, rules] : {std::pair{"d:", &section.domains},
                                      {"u:", &section.urls},
                                      {"p:", &section.urlPrefixes},
                                      {"r:", &section.regexps}})
        for (const std::string& rule : *rules)
            text.append(kind).append(rule).append(" ");
    return text.append("|").append(section.code);
}

/// How a block for the domain "a" begins.
const std::string block = "@-moz-document domain(\"a\") {";

struct reading {
    std::string css;
    std::vector<std::string> sections;
    std::string preprocessor = "";
};

void expectReadings(const std::vector<reading>& readings) {
    for (const auto& [css, sections, preprocessor] : readings) {
        std::vector<std::string> read;
        for (const styleSection& section : sectionsFromCSS(css, preprocessor))
            read.push_back(brief(section));
        EXPECT_EQ(read, sections) << css;
    }
}

} // namespace

TEST(MozDocument, cutsAtKeywordsOutsideComments) {
    const std::vector<std::pair<std::string_view, std::vector<std::string_view>>> cuts = {
        {" \n\u3000", {""}},
        {" @-moz-document x", {"", "@-moz-document x"}},
        {"a'@-moz-document b", {"a'", "@-moz-document b"}},
        {"/* @-moz-document */a", {"/* @-moz-document */a"}},
        {"/*/@-moz-document a", {"/*/", "@-moz-document a"}}, // opens and closes
        {"/**/@-moz-document a", {"/**/", "@-moz-document a"}},
        {"/*/*@-moz-document a", {"/*/*@-moz-document a"}},
        {"*/@-moz-document a/*@-moz-document b", {"*/", "@-moz-document a/*@-moz-document b"}}};
    for (const auto& [text, chunks] : cuts)
        EXPECT_EQ(splitAtMozDocument(text), chunks) << text;
}

TEST(MozDocument, readsHeaders) {
    const std::vector<std::pair<std::string_view, std::string>> headers = {
        {R"(@-moz-document domain("a"), url('b'), url-prefix(c), regexp("d"))", "d:a u:b p:c r:d "},
        {R"(url-prefix("b"),domain('a)", "p:b "}, // the quote of the last function never closes
        {R"(domain("a")", "d:a "},                // cut before the parenthesis
        {R"(regexp("^https?:\/\/x\\.y\\/"))", R"(r:^https?://x\.y/ )"},
        {R"(regexp(a), media("b"), Domain("c"))", ""},
        {R"(domain(""), domain("a"), domain("a"))", "d: d:a d:a "},
        {R"(domain("a") , url("b"))", R"(d:a") , url("b )"},
        {R"(domain("), url(x"))", "u:x\" "},
        {"@-moz-document\u00E9domain(a)", "d:a "}, // one whole character after the keyword
        {"@-moz-document", ""}};
    for (const auto& [header, rules] : headers)
        EXPECT_EQ(brief(parseSectionHeader(header, "x")), rules + "|x") << header;
}

TEST(MozDocument, findsTheHeadersEndAndTheBlock) {
    const std::string a = "@-moz-document domain(\"a\")";
    expectReadings({{"", {}},
                    {" \r\n", {}},
                    {" a{}\r\n b{} ", {"|a{}\r\n b{}"}},
                    {"x{} " + a + " { b{} } " + a + "{c{}}", {"|x{}", "d:a |b{}", "d:a |c{}"}},
                    {a + "\r\n{b{}}", {"d:a |b{}"}},
                    {a + "\n{b {}}", {"d:a |b {}"}},
                    {a + "{}" + a + " { }", {"d:a |"}},    // empty: dropped; a space: kept
                    {a + " {b{}" + a + "{c}", {"d:a |c"}}, // never balances
                    {a + " }{b{}", {}},
                    {a + "\t{b {c}}", {"d:a |c", "|}"}},
                    {block + "/*}*/b}", {"d:a |/*}*/b"}},
                    {block + "/*/}", {"d:a |/*/"}},
                    {block + "b:'}'}", {"d:a |b:'", "|'}"}},
                    {block + "\r\n\t\tb {\r\n\t\t}\r\tc\r\n}", {"d:a |b {\n\t}\nc"}}});
}

TEST(MozDocument, knowsLineCommentsAndIndentedBlocksByPreprocessor) {
    expectReadings(
        {{block + "b // }\n}", {"d:a |b // }"}, "LESS"},
         {block + "b // }\r}", {"d:a |b // }"}, "stylus"},
         {block + "b // }\n}", {"d:a |b //", "|}"}, "css"},
         {block + "/* // */ }\n}", {"d:a |/* // */ }"}, "less"}, // hides the rest of that line
         {"@-moz-document url(http://a){b}", {"u:http://a |b"}, "less"}, // not in the header
         {"@-moz-document\nurl-prefix(http://a) {b}", {"p:http://a |b"}, "less"},
         {"@-moz-document domain(a)\r\nb\n\tc d", {"d:a |\nb\n\tc d"}, "Stylus"},
         {"@-moz-document domain(a)\nb", {}, "less"},
         {"@-moz-document domain(a)", {}, "stylus"},
         {block + "\n    b\n        c  d}", {"d:a |b\n\tc  d"}, "stylus"},
         {block + "\n    b\n        c  d}", {"d:a |b\n        c  d"}, "Stylus"},
         {block + "b    c\r    d}", {"d:a |b    c\n    d"}, "stylus"}});
}

TEST(MozDocument, givesWhatStandsBetweenBlocksItsPlace) {
    expectReadings({{block + "b} /* c */ " + block + "d}" + block + "e}",
                     {"d:a |b", "d:a |/* c */\n\nd", "d:a |e"}},
                    {block + "b}\n// c\r" + block + "d}", {"d:a |b", "d:a |// c\n\nd"}},
                    {block + "b} // c\rd", {"d:a |b", "|// c\nd"}},
                    {block + "b}/*c*//*d*/" + block + "e}", {"d:a |b", "|/*c*//*d*/", "d:a |e"}},
                    {block + "b}/*/" + block + "e}", {"d:a |b", "d:a |/*/\n\ne"}},
                    {block + "b}/*c*/" + block + "{" + block + " }", {"d:a |b", "d:a |/*c*/\n\n"}},
                    {block + "b}/*c*/", {"d:a |b"}},
                    {block + "b} c{}\r\nd{} ", {"d:a |b", "|c{}\n\nd{}"}}});
}

TEST(MozDocument, tellsOfAHeaderThatAppliesEverywhere) {
    CapturedLog log;
    const std::string header = "@-moz-document regexp(a)," + std::string(60, '\n') + "\u20AC\u20AC";
    expectReadings({{header + " {b}" + block + "c}", {"|b", "d:a |c"}}});
    EXPECT_EQ(log.take(), "A section without a readable rule applies to every page: "
                          "@-moz-document regexp(a),                                        "
                          "               \n");
}

} // namespace tessaril
