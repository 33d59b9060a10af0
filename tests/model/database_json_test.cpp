#include "model/database_json.h"
#include "support/sample_styles.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>

namespace tessaril {

namespace {

using testing::fullStyle;
using testing::namedStyle;

styleDatabase sampleDatabase() {
    return {.dbVersion = 7,
            .styles = {fullStyle(4294967295), namedStyle("Plain", 0)},
            .randomHash = std::numeric_limits<std::int64_t>::min(),
            .dateModified = 0.1 + 0.2};
}

std::string sampleJSON() {
    return *encodeDatabase(sampleDatabase());
}

std::string withReplaced(std::string text, std::string_view from, std::string_view to) {
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    if (at != std::string::npos) text.replace(at, from.size(), to);
    return text;
}

/// A document with one more member in front.
std::string withMember(std::string_view member) {
    return "{" + std::string(member) + R"(,"dbVersion":1,"styles":[],"randomHash":2})";
}

} // namespace

TEST(DatabaseJSON, readsBackWhatItWrote) {
    const styleDatabase database = sampleDatabase();
    EXPECT_EQ(decodeDatabase(*encodeDatabase(database)), database);
    EXPECT_EQ(decodeDatabase(R"({"styles":[],"randomHash":9223372036854775807,"dbVersion":-7})"),
              (styleDatabase{.dbVersion = -7,
                             .styles = {},
                             .randomHash = std::numeric_limits<std::int64_t>::max(),
                             .dateModified = std::nullopt}));
}

TEST(DatabaseJSON, leavesAbsentFieldsOutAndReadsNullAsAbsent) {
    styleContainer style = namedStyle("Plain", 1);
    style.dateModified.reset();
    style.userVariables.reset();
    style.allowIframe.reset();
    const std::string json = *encodeStyle(style);
    for (const char* key : {"excl", "allowIframe", "updateURL", "systemTheme", "userVariables",
                            "dateModified", "compSections", "compiledcode", "sectionName", "null"})
        EXPECT_EQ(json.find(key), std::string::npos) << key;

    const std::string document = *encodeDatabase({.styles = {style}});
    const std::string withNull =
        withReplaced(document, R"("version":)", R"("allowIframe":null,"exclURL":null,"version":)");
    EXPECT_EQ(decodeDatabase(withNull), decodeDatabase(document));

    style.userVariables.emplace();
    EXPECT_NE(encodeStyle(style)->find(R"("userVariables":[])"), std::string::npos);
}

TEST(DatabaseJSON, refusesEveryRequiredFieldMissingNullOrOfAnotherForm) {
    const std::string good = sampleJSON();
    // The first occurrence of each stands at the depth named.
    const std::vector<std::pair<std::string, std::string>> members = {
        {R"("dbVersion":7)", "document"},          {R"("uniqueID":4294967295)", "style"},
        {R"("isEnabled":false)", "style"},         {R"("source":"usorg")", "style"},
        {R"("userstyleID":0)", "style"},           {R"("namespace":"n")", "style"},
        {R"("preprocessor":"less")", "style"},     {R"("originalMd5":"o")", "styleData"},
        {R"("domains":["c.example"])", "section"}, {R"("type":"select")", "variable"},
        {R"("defaultValue":"0")", "variable"},     {R"("step":0.1)", "range"},
    };
    for (const auto& [member, depth] : members) {
        const std::string key = member.substr(0, member.find(':') + 1);
        EXPECT_FALSE(decodeDatabase(withReplaced(good, member, R"("unknown":1)"))) << member;
        for (const char* value : {"null", "{}", "\"x", "[1]"})
            EXPECT_FALSE(decodeDatabase(withReplaced(good, member, key + value)))
                << member << " as " << value;
    }
    // Of another form than its own, an optional field refuses the document as well.
    for (const auto& [member, other] : std::vector<std::pair<std::string, std::string>>{
             {R"("allowIframe":false)", R"("allowIframe":0)"},
             {R"("exclDomain":["x"])", R"("exclDomain":"x")"},
             {R"("exclDomain":["x"])", R"("exclDomain":[null])"},
             {R"("systemTheme":"dark")", R"("systemTheme":1)"},
             {R"("currentValue":"")", R"("currentValue":false)"}})
        EXPECT_FALSE(decodeDatabase(withReplaced(good, member, other))) << other;
}

TEST(DatabaseJSON, keepsIntegersAndDoublesExact) {
    for (const char* integer : {"5.0", "1e3", "9223372036854775808", "-9223372036854775809", "01",
                                "+1", "0x1", "true", "\"1\"", "-"})
        EXPECT_FALSE(decodeDatabase(R"({"dbVersion":1,"styles":[],"randomHash":)" +
                                    std::string(integer) + "}"))
            << integer;

    std::vector<double> values = {0.0,  -0.0, 5.0,    1e22,   1e21,     1180591620717411303424.0,
                                  1e15, 1e16, 1e-308, 5e-324, 631152000};
    values.push_back(std::numeric_limits<double>::max());
    std::mt19937_64 random(7);
    for (int i = 0; i < 2000; ++i) {
        const auto value = std::bit_cast<double>(random());
        if (std::isfinite(value)) values.push_back(value);
    }
    for (const double value : values) {
        const auto json = encodeDatabase({.dateModified = value});
        const auto read = decodeDatabase(*json);
        ASSERT_TRUE(read) << *json;
        EXPECT_EQ(std::bit_cast<std::uint64_t>(*read->dateModified),
                  std::bit_cast<std::uint64_t>(value))
            << *json;
    }
    // Spelled by others: integers beyond 64 bits are doubles like any other.
    EXPECT_EQ(decodeDatabase(withMember(R"("dateModified":100000000000000000000)"))->dateModified,
              1e20);
    EXPECT_FALSE(decodeDatabase(withMember(R"("dateModified":1e999)")));
    for (const char* number : {"1.", ".5", "01.5", "-", "1e", "NaN", "Infinity"})
        EXPECT_FALSE(decodeDatabase(withMember(R"("dateModified":)" + std::string(number))))
            << number;
}

TEST(DatabaseJSON, refusesWhatCannotBeRepresented) {
    EXPECT_FALSE(encodeDatabase({.dateModified = std::numeric_limits<double>::infinity()}));
    styleContainer style = namedStyle("x", 1);
    style.userVariables = {{.rangeOptions = rangeOpts{.max = std::nan("")}}};
    EXPECT_FALSE(encodeStyle(style));
    EXPECT_FALSE(encodeStyle(namedStyle("half \xC3", 1)));
    EXPECT_FALSE(encodeFrame(1, 2, std::numeric_limits<double>::infinity()));
}

TEST(DatabaseJSON, ignoresUnknownMembersButOnlyJSONOnes) {
    for (const char* member :
         {R"("x":null)", R"("x":[1,{"y":[true,false,-1.5e-7,"\u00e9"]},[]])",
          R"("x":123456789012345678901234567890)", R"("":{})", R"("x":1e999)", R"("x" : 0 )"})
        EXPECT_TRUE(decodeDatabase(withMember(member))) << member;
    for (const char* member :
         {R"("x":nul)", R"("x":tru)", R"("x":01)", R"("x":1.)", R"("x":"\q")", R"("x":[1 2])",
          R"("x":{"a"})", R"("x":{"a":1,})", R"("x":)", R"("x":'a')", R"("x":1x)", R"("x":-)",
          "\"x\":\"\n\"", R"("x":"\ud800")", R"("\q":1)"})
        EXPECT_FALSE(decodeDatabase(withMember(member))) << member;

    EXPECT_EQ(decodeDatabase(withMember(R"("randomHash":1)"))->randomHash, 2) << "the last counts";
    EXPECT_TRUE(decodeDatabase(R"({"\u0064bVersion":1,"styles":[],"randomHash":2})"));
    const std::string deep = std::string(100000, '[') + std::string(100000, ']');
    EXPECT_NO_FATAL_FAILURE(decodeDatabase(withMember("\"x\":" + deep)));
}

TEST(DatabaseJSON, refusesAnyPieceOfADocumentAndAnythingBehindIt) {
    const std::string good = *encodeDatabase({.styles = {fullStyle(1)}});
    for (std::size_t size = 0; size < good.size(); ++size)
        ASSERT_FALSE(decodeDatabase(good.substr(0, size))) << size;
    EXPECT_TRUE(decodeDatabase(" \n" + good + "\t\r\n"));
    for (const char* tail : {"x", "{}", "]", "}", ",", "\"", "0"})
        EXPECT_FALSE(decodeDatabase(good + tail)) << tail;
    for (const char* text : {"", " ", "null", "[]", "\"x\"", "1", "{", "{}"})
        EXPECT_FALSE(decodeDatabase(text)) << text;
    EXPECT_FALSE(decodeDatabase(withReplaced(good, "Full", "F\xFFll")));
    EXPECT_FALSE(decodeDatabase("\xEF\xBB" + good));
}

TEST(DatabaseJSON, survivesFlippedBytes) {
    const std::string good = *encodeDatabase({.styles = {fullStyle(1)}});
    std::mt19937 random(1);
    for (int i = 0; i < 20000; ++i) {
        std::string bytes = good;
        bytes[random() % bytes.size()] = static_cast<char>(random());
        // Whatever was read can be written.
        if (const auto read = decodeDatabase(bytes)) {
            ASSERT_TRUE(encodeDatabase(*read));
        }
    }
}

TEST(DatabaseJSON, decodesTheSharingSitesStyle) {
    const std::string json =
        R"({"name":"N","url":"","updateUrl":"u","md5Url":"m","originalMd5":"o","extra":{},
            "sections":[{"urls":[],"urlPrefixes":[],"domains":["d"],"regexps":[],"code":"c"}]})";
    const auto data = decodeStyleJSON(json);
    ASSERT_TRUE(data);
    EXPECT_EQ(data->sections.at(0).domains, std::vector<std::string>{"d"});
    EXPECT_FALSE(data->compSections);
    EXPECT_FALSE(decodeStyleJSON(withReplaced(json, R"("code":"c")", R"("code":null)")));
}

} // namespace tessaril
