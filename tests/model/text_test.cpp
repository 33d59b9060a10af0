#include "model/text.h"
#include "support/test.h"

namespace tessaril {

TEST(Text, trimsTheUnicodeSetAndKeepsWhatOnlyLooksBlank) {
    EXPECT_EQ(trimmed(" \t\r\n\v\f\u00A0\u0085\u1680\u2003\u2028\u2029\u202F\u205F\u3000a b\u3000"),
              "a b");
    EXPECT_EQ(trimmed("\u200Ba\uFEFF"), "\u200Ba\uFEFF"); // zero width: not white space
    EXPECT_EQ(trimmed(" \u2028 "), "");
}

TEST(Text, dropsWholeCharacters) {
    EXPECT_EQ(dropFirst("ab\u20ACc", 3), "c");
    EXPECT_EQ(dropLast("x\U0001F600"), "x");
    EXPECT_EQ(dropLast("ab", 5), "");
    EXPECT_EQ(dropFirst("", 1), "");
}

TEST(Text, splitsAndReplacesWithoutOverlap) {
    EXPECT_EQ(split("a,,b,", ","), (std::vector<std::string_view>{"a", "", "b", ""}));
    EXPECT_EQ(split("", ","), (std::vector<std::string_view>{""}));
    EXPECT_EQ(replacingAll("x\\\\\\/", "\\\\", "\\"), "x\\\\/");
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

} // namespace tessaril
