#include "compile/style_compiler.h"
#include "desktop/directory_resources.h"
#include "desktop/javascript_core_engine.h"
#include "support/captured_log.h"
#include "support/recording_alerts.h"
#include "support/recording_compiler_errors.h"

#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <thread>

namespace tessaril {

namespace {

using ::testing::AllOf;
using testing::CapturedLog;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// The size of the program in memory, in MB.
long residentMegabytes() {
    std::ifstream file("/proc/self/statm");
    long whole = 0;
    long resident = 0;
    file >> whole >> resident;
    return resident * sysconf(_SC_PAGESIZE) / (1024 * 1024);
}

class RealCompilersTest : public ::testing::Test {
protected:
    static styleContainer styleFor(std::string preprocessor, std::string code) {
        styleContainer style;
        style.preprocessor = std::move(preprocessor);
        style.styleData.name = "Name";
        style.styleData.sections.resize(1);
        style.styleData.sections[0].code = std::move(code);
        style.styleData.sections[0].regexps = {"https://a\\.b/.*"};
        userVariable width;
        width.type = "text";
        width.name = "width";
        width.currentValue = "10px";
        style.userVariables = {width};
        return style;
    }

    styleContainer compiled(std::string preprocessor, std::string code) {
        styleContainer style = styleFor(std::move(preprocessor), std::move(code));
        const CapturedLog log;
        compiler.compileStyle(style);
        return style;
    }

    /// The only section's CSS without its white space; the error's text where it failed.
    std::string css(std::string preprocessor, std::string code) {
        errors.errors.clear();
        const styleContainer style = compiled(std::move(preprocessor), std::move(code));
        if (!errors.errors.empty()) return errors.errors.front().text;
        if (!style.styleData.compSections || style.styleData.compSections->size() != 1)
            return "not one section";
        const styleSection& section = style.styleData.compSections->front();
        EXPECT_THAT(section.regexps, ElementsAre("https://a\\.b/.*"));
        std::string text = section.code;
        std::erase_if(text, [](char c) { return c == ' ' || c == '\n' || c == '\t'; });
        return text;
    }

    JavaScriptCoreEngine engine;
    DirectoryResources resources{TESSARIL_RESOURCES};
    testing::RecordingAlerts alerts;
    testing::RecordingCompilerErrors errors;
    StyleCompiler compiler{engine, resources, alerts, errors};
};

TEST_F(RealCompilersTest, compileWithTheirVariables) {
    EXPECT_EQ(css("less", "a { b { width: @width + 5; color: darken(#fff, 100%) } } // end"),
              "ab{width:15px;color:#000000;}");
    EXPECT_EQ(css("stylus", "a\n\tb\n\t\twidth width + 5\n\t\tcontent '\U0001F600'"),
              "ab{width:15px;content:'\U0001F600';}");
    EXPECT_EQ(css("stylus", "a {\n b {\n  width: width\n }\n}"), "ab{width:10px;}");
}

TEST_F(RealCompilersTest, sayWhatIsWrongAndWhere) {
    EXPECT_THAT(css("less", "a {\n  color: @nope;\n}"),
                AllOf(HasSubstr("variable @nope is undefined"), HasSubstr("line 6, column 11"),
                      HasSubstr("color: @nope;")));
    EXPECT_THAT(css("less", "a { b("), HasSubstr("line"));
    EXPECT_EQ(errors.errors.front().header, "A Less compilation error occurred.");
    EXPECT_THAT(css("stylus", "a {\n  b: $c(\n}"),
                AllOf(HasSubstr("stylus:7:"), HasSubstr("expected")));
    EXPECT_EQ(errors.errors.front().title, "Compiler Error (Name)");
    EXPECT_EQ(errors.errors.front().header, std::nullopt);

    styleContainer style = styleFor("less", "a {");
    style.styleData.compSections = {styleSection{}};
    compiler.compileStyle(style);
    EXPECT_EQ(style.styleData.compSections, std::vector{styleSection{}});
}

TEST_F(RealCompilersTest, reachNeitherTheNetworkNorScriptsInAStyle) {
    for (const char* import :
         {"@import \"https://example.org/lib.less\";",
          "@import (inline) \"//example.org/lib.css\";", "@import (reference) \"../lib.less\";"})
        EXPECT_THAT(css("less", import),
                    AllOf(HasSubstr("lib."), HasSubstr("wasn't found"), HasSubstr("network")));
    EXPECT_THAT(css("less", "@import \"https://example.org/lib.less\";"),
                HasSubstr("'https://example.org/lib.less'"));
    EXPECT_THAT(css("less", "@plugin \"https://example.org/p.js\";"), HasSubstr("not allowed"));
    EXPECT_THAT(css("less", "a { w: `1 + 1` }"), HasSubstr("JavaScript is not enabled"));
    EXPECT_THAT(css("stylus", "@import 'lib'"), HasSubstr("failed to locate"));
    EXPECT_THAT(css("stylus", "use('p.js')\na { b: json('c.json') }"), HasSubstr("c.json"));
}

TEST_F(RealCompilersTest, stopAStyleThatNeverEnds) {
    JavaScriptCoreEngine impatient(std::chrono::milliseconds(700));
    StyleCompiler hasty(impatient, resources, alerts, errors);
    const std::string endlessLess = ".m(@i) when (@i > 0) { .m(@i) } "
                                    ".n(@i) when (@i > 0) { .n(@i - 1); .n(@i - 1) } "
                                    "a { .n(60) }";
    const std::string endlessStylus = "n(i)\n\tif i > 0\n\t\tn(i - 1)\n\t\tn(i - 1)\na\n\tn(60)";
    for (auto& [preprocessor, code] :
         {std::pair{"less", endlessLess}, std::pair{"stylus", endlessStylus}}) {
        errors.errors.clear();
        styleContainer style = styleFor(preprocessor, code);
        const CapturedLog log;
        hasty.compileStyle(style);
        ASSERT_FALSE(errors.errors.empty());
        EXPECT_THAT(errors.errors.front().text, HasSubstr("stopped"));
        EXPECT_FALSE(style.styleData.compSections);
    }
}

TEST_F(RealCompilersTest, giveMemoryBackAfterAThousandCompilations) {
    const CapturedLog log;
    const auto compileMany = [&](int count) {
        for (int i = 0; i < count; ++i) {
            styleContainer style = i % 10 == 0 ? styleFor("stylus", "a\n\twidth width + 1")
                                               : styleFor("less", "a { width: @width + 1 }");
            compiler.compileStyle(style);
            ASSERT_TRUE(style.styleData.compSections);
        }
    };
    compileMany(100); // the engine's own working set
    const long before = residentMegabytes();
    compileMany(1000);
    EXPECT_LT(residentMegabytes(), before + 60);
    EXPECT_THAT(errors.errors, IsEmpty());
}

TEST_F(RealCompilersTest, workFromSeveralThreads) {
    const CapturedLog log;
    std::vector<std::thread> threads;
    for (int number = 1; number <= 4; ++number)
        threads.emplace_back([&, number] {
            for (int i = 0; i < 10; ++i) {
                const std::string width = std::to_string(number * 100 + i) + "px";
                styleContainer less = styleFor("less", "a { width: " + width + " }");
                styleContainer stylus = styleFor("stylus", "a\n\twidth " + width);
                for (styleContainer* style : {&less, &stylus}) {
                    compiler.compileStyle(*style);
                    ASSERT_TRUE(style->styleData.compSections);
                    EXPECT_THAT(style->styleData.compSections->front().code, HasSubstr(width));
                }
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_THAT(errors.errors, IsEmpty());
}

TEST(DirectoryResourcesTest, readsTextFilesAnew) {
    const QTemporaryDir folder;
    const std::filesystem::path path(folder.path().toStdString());
    const DirectoryResources resources(path);
    const auto write = [&](const char* name, const char* text) {
        std::ofstream(path / name) << text;
    };
    EXPECT_EQ(resources.script("a b.js"), std::nullopt);
    write("a b.js", "one");
    EXPECT_EQ(resources.script("a b.js"),
              (scriptSource{"one", "file://" + path.string() + "/a b.js"}));
    write("a b.js", "two");
    EXPECT_EQ(resources.script("a b.js")->text, "two");
    write("a b.js", "\xFF");
    EXPECT_EQ(resources.script("a b.js"), std::nullopt);
    EXPECT_EQ(resources.script(""), std::nullopt); // the folder itself
}

} // namespace

} // namespace tessaril
