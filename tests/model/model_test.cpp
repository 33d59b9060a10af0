#include "model/database_json.h"
#include "model/text.h"
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
    return text.replace(text.find(from), from.size(), to);
}

/// A document with one more member in front.
std::string withMember(std::string_view member) {
    return "{" + std::string(member) + R"(,"dbVersion":1,"styles":[],"randomHash":2})";
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

TEST(DatabaseJSON, readsBackWhatItWrote) {
    const styleDatabase database{.dbVersion = -7,
                                 .styles = {fullStyle(4294967295), namedStyle("Plain", 0)},
                                 .randomHash = limits::min(),
                                 .dateModified = 0.1 + 0.2};
    EXPECT_EQ(decodeDatabase(*encodeDatabase(database)), database);
    std::mt19937_64 random(3);
    for (int i = 0; i < 500; ++i) {
        const styleDatabase texts{.styles = {namedStyle(randomText(random), 1)}};
        EXPECT_EQ(decodeDatabase(*encodeDatabase(texts)), texts);
    }
    EXPECT_EQ(decodeDatabase(R"({"styles":[],"randomHash":9223372036854775807,"dbVersion":-7})"),
              (styleDatabase{.dbVersion = -7, .styles = {}, .randomHash = limits::max()}));

    constexpr std::string_view texts =
        "url updateUrl md5Url originalMd5 name version namespace description author homepageURL "
        "supportURL license downloadedFrom preprocessor updateURL systemTheme";
    for (const std::string_view key : split(texts, " ")) {
        const std::string member = '"' + std::string(key) + '"';
        EXPECT_THAT(sampleJSON(), HasSubstr(member + ":" + member));
    }
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
    const std::string member = "\"dateModified\":";
    EXPECT_EQ(decodeDatabase(withMember(member + "100000000000000000000"))->dateModified, 1e20);
    for (const char* number : {"1e999", "1.", ".5", "01.5", "-", "1e", "NaN", "Infinity"})
        EXPECT_FALSE(decodeDatabase(withMember(member + number))) << number;
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

TEST(Text, trimsTheUnicodeSetAndKeepsWhatOnlyLooksBlank) {
    EXPECT_EQ(trimmed(" \t\r\n\v\f\u00A0\u0085\u1680\u2003\u2028\u2029\u202F\u205F\u3000a b\u3000"),
              "a b");
    EXPECT_EQ(trimmed("\u200Ba\uFEFF"), "\u200Ba\uFEFF"); // zero width: not white space
    EXPECT_EQ(trimmed(" \u2028 "), "");
}

TEST(Text, readsWholeNumbersOnly) {
    EXPECT_EQ(parseInteger("9223372036854775807"), INT64_MAX);
    EXPECT_EQ(parseInteger("+5"), 5);
    for (const char* text : {"", "9223372036854775808", "5 ", "5.0", "+-5", "-", "0x5", "\u0665"})
        EXPECT_EQ(parseInteger(text), std::nullopt) << text;

    EXPECT_EQ(parseDouble("+.5"), 0.5);
    EXPECT_EQ(parseDouble("-1.7976931348623157e308"), -1.7976931348623157e308);
    for (const char* text : {"", "null", "inf", "nan", "1e999", "5px", "1,5", "+-1"})
        EXPECT_EQ(parseDouble(text), std::nullopt) << text;
}

TEST(Text, acceptsOnlyUTF8AndDropsTheByteOrderMark) {
    EXPECT_EQ(textFromUTF8("\xEF\xBB\xBF\xC3\xA9"), "\u00E9");
    EXPECT_EQ(textFromUTF8(""), "");
    for (const char* bytes : {"\xFF\xFE", "\xED\xA0\x80", "\xC3"}) // half of a surrogate pair, too
        EXPECT_EQ(textFromUTF8(bytes), std::nullopt) << bytes;

    EXPECT_EQ(validUTF8("\u00FC\xE9.\xE2\x82\u20AC\xC3"), "\u00FC\uFFFD.\uFFFD\uFFFD\u20AC\uFFFD");
}

TEST(Text, isShortAndHasNoControlsInTheLog) {
    EXPECT_EQ(forLog("\x1B[2J\n\xC2\x9B\xFF\u20AC"), "?[2J???\uFFFD\u20AC");
    const std::string line = forLog(replacingAll(std::string(1'000'000, 'x'), "x", "\u20AC"));
    EXPECT_TRUE(line.size() < 400 && line.ends_with("\u20AC..."));
}

} // namespace
} // namespace tessaril
