#include "model/database_json.h"
#include "support/sample_styles.h"
#include "support/test.h"

#include <bit>

namespace tessaril {
namespace {

using limits = std::numeric_limits<std::int64_t>;

std::string sampleJSON() {
    return *encodeDatabase({.dbVersion = 7, .styles = {fullStyle(4294967295)}});
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

std::string withDate(std::string_view number) {
    return withMember("\"dateModified\":" + std::string(number));
}

/// Text of all kinds of characters, the awkward ones often.
std::string randomText(std::mt19937_64& random) {
    constexpr const char* pieces[] = {"a",      "\"",     "\\",         "/",      "\n", "\r\n",
                                      "\t",     "\x01",   "\x1f",       "\x7f",   "\b", "\f",
                                      "\u00e9", "\u2028", "\U0001F600", "\uffff", "<>", "\\u0041"};
    std::string text;
    for (auto size = random() % (random() % 20 ? 40 : 4000); size > 0; --size)
        text += pieces[random() % std::size(pieces)];
    return text;
}

} // namespace

TEST(DatabaseJSON, readsBackWhatItWrote) {
    const styleDatabase database{.dbVersion = -7,
                                 .styles = {fullStyle(4294967295), namedStyle("Plain", 0)},
                                 .randomHash = limits::min(),
                                 .dateModified = 0.1 + 0.2};
    EXPECT_EQ(decodeDatabase(*encodeDatabase(database)), database);
    EXPECT_THAT(*encodeStyle(namedStyle("\"\\\n\t\r\x01\x1F/\x7F", 1)),
                HasSubstr(R"("name":"\"\\\n\t\r\u0001\u001f/)"
                          "\x7F\""));
    std::mt19937_64 random(3);
    for (int i = 0; i < 500; ++i) {
        const styleDatabase texts{.styles = {namedStyle(randomText(random), 1)}};
        EXPECT_EQ(decodeDatabase(*encodeDatabase(texts)), texts);
    }
    EXPECT_EQ(decodeDatabase(R"({"styles":[],"randomHash":9223372036854775807,"dbVersion":-7})"),
              (styleDatabase{.dbVersion = -7, .styles = {}, .randomHash = limits::max()}));

    const std::string json = sampleJSON();
    for (const std::string key :
         {"url", "updateUrl", "md5Url", "originalMd5", "name", "version", "namespace",
          "description", "author", "homepageURL", "supportURL", "license", "downloadedFrom",
          "preprocessor", "updateURL", "systemTheme"})
        EXPECT_NE(json.find("\"" + key + "\":\"" + key + "\""), std::string::npos) << key;
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
    for (const std::string member : // of the document, a style, its data and what these hold
         {R"("dbVersion":7)", R"("uniqueID":4294967295)", R"("isEnabled":false)",
          R"("source":"usorg")", R"("userstyleID":0)", R"("namespace":"namespace")",
          R"("preprocessor":"preprocessor")", R"("originalMd5":"originalMd5")",
          R"("domains":["c.example"])", R"("type":"select")", R"("defaultValue":"0")",
          R"("step":0.1)"}) {
        const std::string key = member.substr(0, member.find(':') + 1);
        EXPECT_FALSE(decodeDatabase(withReplaced(good, member, R"("unknown":1)"))) << member;
        for (const char* value : {"null", "{}", "\"x", "[1]"})
            EXPECT_FALSE(decodeDatabase(withReplaced(good, member, key + value)))
                << member << " as " << value;
    }
    // Of another form than its own, an optional field refuses the document as well.
    for (const auto& [member, other] :
         {std::pair{R"("allowIframe":false)", R"("allowIframe":0)"},
          {R"("exclDomain":["exclDomain"])", R"("exclDomain":"x")"},
          {R"("exclDomain":["exclDomain"])", R"("exclDomain":[null])"},
          {R"("systemTheme":"systemTheme")", R"("systemTheme":1)"},
          {R"("currentValue":"")", R"("currentValue":false)"}})
        EXPECT_FALSE(decodeDatabase(withReplaced(good, member, other))) << other;
}

TEST(DatabaseJSON, keepsIntegersAndDoublesExact) {
    for (const std::string integer : {"5.0", "1e3", "9223372036854775808", "-9223372036854775809",
                                      "01", "+1", "0x1", "true", "\"1\"", "-"})
        EXPECT_FALSE(decodeDatabase(R"({"dbVersion":1,"styles":[],"randomHash":)" + integer + "}"))
            << integer;

    std::vector<double> values = {0.0,  -0.0, 5.0,    1e22,   1e21,      1180591620717411303424.0,
                                  1e15, 1e16, 1e-308, 5e-324, 631152000, 1.7976931348623157e308};
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
    // Integers to other readers, which lose a zero's sign and refuse more than 64 bits.
    for (const double value : {-0.0, 1180591620717411303424.0})
        EXPECT_NE(encodeDatabase({.dateModified = value})->find('.'), std::string::npos) << value;
    // Spelled by others: integers beyond 64 bits are doubles like any other.
    EXPECT_EQ(decodeDatabase(withDate("100000000000000000000"))->dateModified, 1e20);
    for (const char* number : {"1e999", "1.", ".5", "01.5", "-", "1e", "NaN", "Infinity"})
        EXPECT_FALSE(decodeDatabase(withDate(number))) << number;
}

TEST(DatabaseJSON, refusesWhatCannotBeRepresented) {
    EXPECT_FALSE(encodeDatabase({.dateModified = std::numeric_limits<double>::infinity()}));
    EXPECT_FALSE(encodeFrame(1, 2, std::numeric_limits<double>::infinity()));
    styleContainer style = namedStyle("x", 1);
    style.userVariables = {{.rangeOptions = rangeOpts{.max = std::nan("")}}};
    EXPECT_FALSE(encodeStyle(style));
    EXPECT_FALSE(encodeStyle(namedStyle("half \xC3", 1)));
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
    const std::string good = sampleJSON();
    for (std::size_t size = 0; size < good.size(); ++size)
        ASSERT_FALSE(decodeDatabase(good.substr(0, size))) << size;
    EXPECT_TRUE(decodeDatabase(" \n" + good + "\t\r\n"));
    for (const char* tail : {"x", "{}", "]", "}", ",", "\"", "0"})
        EXPECT_FALSE(decodeDatabase(good + tail)) << tail;
    for (const char* text : {"", " ", "null", "[]", "\"x\"", "1", "{", "{}"})
        EXPECT_FALSE(decodeDatabase(text)) << text;
    for (const char* text : {"\xFF", "\\ud800", "\\udc00", "\\q"})
        EXPECT_FALSE(decodeDatabase(withReplaced(good, "c.example", text))) << text;
    EXPECT_FALSE(decodeDatabase("\xEF\xBB" + good));
}

TEST(DatabaseJSON, survivesFlippedBytes) {
    const std::string good = sampleJSON();
    std::mt19937 random(1);
    for (int i = 0; i < 20000; ++i) {
        std::string bytes = good;
        bytes[random() % bytes.size()] = static_cast<char>(random());
        const auto read = decodeDatabase(bytes);
        ASSERT_TRUE(!read || encodeDatabase(*read)) << "whatever was read can be written";
    }
}

TEST(DatabaseJSON, decodesTheSharingSitesStyle) {
    const std::string json =
        R"({"name":"N","url":"","updateUrl":"u","md5Url":"m","originalMd5":"o","extra":{},
            "sections":[{"urls":[],"urlPrefixes":[],"domains":["d"],"regexps":[],"code":"c"}]})";
    EXPECT_EQ(decodeStyleJSON(json),
              (styleJSON{"", "u", "m", "o", "N", {{.domains = {"d"}, .code = "c"}}, {}}));
    EXPECT_FALSE(decodeStyleJSON(withReplaced(json, R"("code":"c")", R"("code":null)")));
}

} // namespace tessaril
