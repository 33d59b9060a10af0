#include "preferences/ini_text.h"
#include "support/test.h"

namespace tessaril {
namespace {

TEST(IniText, ChangesOneValueAndLeavesWhatOthersWroteAsItIs) {
    auto ini = IniText::parse("\xEF\xBB\xBF; mine\r\n[ general ] ; us\r\nauthor = Doe, Jane ; who\n"
                              "theme=old\ntheme=\"a\\x41\\\"g\\t\"\n\n[Other]\ntheme=theirs\n\n");
    ASSERT_TRUE(ini);
    EXPECT_EQ(ini->value("author"), "Doe, Jane");
    EXPECT_EQ(ini->value("theme"), "aA\"g\t") << "the last one counts";
    EXPECT_FALSE(ini->value("mine"));
    ini->set("theme", "dark");
    ini->set("font", " Fira");
    EXPECT_EQ(ini->text(),
              "; mine\n[ general ] ; us\nauthor = Doe, Jane ; who\ntheme=dark\ntheme=dark\n"
              "font=\" Fira\"\n\n[Other]\ntheme=theirs\n\n");

    auto other = IniText::parse("[Other]\nx=1\n");
    other->set("x", "2");
    EXPECT_EQ(other->text(), "[Other]\nx=1\n[General]\nx=2\n");
    other->remove("x");
    EXPECT_EQ(other->text(), "[Other]\nx=1\n[General]\n");
}

TEST(IniText, BringsBackEveryTextAndNeverWritesWhatItCannotRead) {
    std::string nul("a\0b", 3);
    for (const std::string& text :
         {std::string(), std::string("@Invalid()"), std::string("@@"),
          std::string("\x01"
                      "1 \x7F"
                      "f"),
          std::string(" \u00A0"), nul, std::string("a;b=c\\,\"'\r\n\u2028\U0001F600"),
          std::string("[x]"), std::string("%41 #")}) {
        IniText ini;
        ini.set("key", text);
        const auto read = IniText::parse(ini.text());
        ASSERT_TRUE(read) << ini.text();
        EXPECT_EQ(read->value("key"), text) << ini.text();
    }
    IniText ini;
    ini.set("key", "a\xFF");
    EXPECT_EQ(IniText::parse(ini.text())->value("key"), "a\uFFFD");
}

TEST(IniText, TellsDamageFromText) {
    for (const std::string& bytes :
         {std::string("x=\xFF\n"), std::string("x=\0\n", 4), std::string("[General\nx=1"),
          std::string("x=1\nstray\n"), std::string("=1\n")})
        EXPECT_FALSE(IniText::parse(bytes)) << bytes;
    for (const char* bytes : {"", "\n", "[General]", "# note", "x=\\", "x=\\xD800", "x=\"a"})
        EXPECT_TRUE(IniText::parse(bytes)) << bytes;
    EXPECT_TRUE(IniText::parse("[General]\n; x=1\n")->isEmpty());
    const std::string whole = "x=1\ny=\u00E4\U0001F600";
    for (std::size_t length = 4; length <= whole.size(); ++length) {
        const auto cut = IniText::parse(whole.substr(0, length));
        EXPECT_TRUE(cut && cut->value("x") && !cut->value("y")) << length;
        EXPECT_EQ(cut->isCutShort(), length > 4);
    }
    EXPECT_EQ(IniText::parse("x=\\xD800\n")->value("x"), "\uFFFD\uFFFD\uFFFD");
    EXPECT_EQ(IniText::parse("x= \u00A0a \t\r\n")->value("x"), "\u00A0a");
}

} // namespace
} // namespace tessaril
