#include "desktop/directory_resources.h"
#include "desktop/javascript_core_engine.h"
#include "less_imports/importing_compiler.h"
#include "support/map_url_loader.h"
#include "support/memory_files.h"
#include "support/recording_alerts.h"
#include "support/recording_compiler_errors.h"
#include "support/stepped_dispatcher.h"
#include "support/test.h"

#include <unistd.h>

#include <thread>

namespace tessaril {
namespace {

/// The real compilers, on files from a network in memory.
struct CompilersTest : ::testing::Test {
    void serve(std::string address, std::string text) {
        loader.responses[std::move(address)] = {.body = std::move(text)};
    }

    /// The only section's CSS without its white space, or the only error.
    std::string css(std::string preprocessor, std::string code, bool refreshed = false) {
        RecordingCompilerErrors errors;
        StyleCompiler plain(engine, resources, alerts, errors);
        ImportingCompiler compiler(plain, files, dispatcher);
        styleContainer style;
        style.preprocessor = std::move(preprocessor);
        style.styleData.sections = {{.regexps = {"https://a\\.b/.*"}, .code = std::move(code)}};
        style.userVariables = {{{.type = "text", .name = "width", .currentValue = "10px"},
                                {.type = "text", .name = "lib", .currentValue = "\"lib\""}}};
        const auto tell = refreshed ? compiler.refreshing()(style) : compiler.compileLoading(style);
        if (tell) tell();
        const auto& sections = style.styleData.compSections;
        EXPECT_EQ(errors.errors.size(), sections.has_value() ? 0U : 1U);
        if (!sections) return errors.errors.empty() ? "" : errors.errors.front().text;
        EXPECT_THAT(sections->front().regexps, ElementsAre("https://a\\.b/.*"));
        std::string text = sections->front().code;
        std::erase_if(text, [](char c) { return c == ' ' || c == '\n' || c == '\t'; });
        return text;
    }
    std::string less(std::string code) { return css("less", std::move(code)); }

    const CapturedLog log;
    JavaScriptCoreEngine engine;
    DirectoryResources resources{TESSARIL_RESOURCES};
    RecordingAlerts alerts;
    MapUrlLoader loader;
    MemoryFiles memory;
    ImportedFiles files{loader, memory, "/imports"};
    SteppedDispatcher dispatcher;
};

TEST_F(CompilersTest, compileWithTheirVariablesOrSayWhatIsWrongAndWhere) {
    EXPECT_EQ(less("a { b { width: @width + 5; color: darken(#fff, 100%) } } // end"),
              "ab{width:15px;color:#000000;}");
    EXPECT_EQ(css("stylus", "a\n\tb\n\t\twidth width + 5\n\t\tcontent '\U0001F600'"),
              "ab{width:15px;content:'\U0001F600';}");
    EXPECT_THAT(less("a {\n  color: @nope;\n}"),
                AllOf(HasSubstr("variable @nope is undefined"), HasSubstr("line 7, column 11")));
    EXPECT_THAT(css("stylus", "a {\n  b: c)\n}"), HasSubstr("stylus:7:9")); // not the engine's own
}

TEST_F(CompilersTest, neitherReachTheNetworkNorRunScriptsNorDoImportedFiles) {
    serve("https://a.example/plugger.less", "@plugin \"plugin.js\"; a { b: ran() }");
    serve("https://a.example/plugin.js", "functions.add('ran', () => 'it')");
    serve("https://a.example/inline.less", "a { b: `1 + 1` }");
    for (const auto& [preprocessor, code, error] : std::vector<std::array<const char*, 3>>{
             {"less", "@import \"https://a.example/lib.less\";", "lib.less' wasn't found"},
             {"less", "@plugin \"https://a.example/plugin.js\";", "not allowed"},
             {"less", "a { w: `1 + 1` }", "JavaScript is not enabled"},
             {"less", "@import \"https://a.example/plugger.less\";", "not allowed: plugin.js"},
             {"less", "@import \"https://a.example/inline.less\";", "JavaScript"},
             {"stylus", "@import 'lib'", "failed to locate"},
             {"stylus", "use('p.js')\na { b: json('c.json') }", "c.json"}})
        EXPECT_THAT(css(preprocessor, code), HasSubstr(error));
    EXPECT_THAT(loader.asked, SizeIs(3)) << "not for the script";
}

TEST_F(CompilersTest, giveMemoryBackAfterManyCompilations) {
    const auto residentPages = [] {
        long whole = 0;
        long resident = 0;
        std::ifstream("/proc/self/statm") >> whole >> resident;
        return resident;
    };
    const auto compileMany = [&](int count) {
        for (int i = 0; i < count; ++i)
            EXPECT_EQ(less("a { width: @width }"), "a{width:10px;}");
    };
    compileMany(60); // the engine's own working set
    const long before = residentPages();
    compileMany(300);
    EXPECT_LT(residentPages(), before + (40 << 20) / ::sysconf(_SC_PAGESIZE));
}

TEST_F(CompilersTest, workFromSeveralThreads) {
    std::vector<std::thread> threads;
    for (int number = 1; number <= 4; ++number)
        threads.emplace_back([&, number] {
            for (int i = 0; i < 5; ++i) {
                const std::string width = std::to_string(number * 100 + i) + "px";
                EXPECT_EQ(less("a { width: " + width + " }"), "a{width:" + width + ";}");
                EXPECT_EQ(css("stylus", "a\n\twidth " + width), "a{width:" + width + ";}");
            }
        });
    for (std::thread& thread : threads)
        thread.join();
}

TEST_F(CompilersTest, resolveImportsAsOnAPageAndCostTheNetworkOnce) {
    serve("https://a.example/x/lib.less",
          "@import \"sub/more.less\";\n@import (inline) '../raw.txt';\n.m() { c: d }");
    serve("https://a.example/x/sub/more.less", "@import \"../../top\"; .n() { e: @v }");
    serve("https://a.example/top.less", "@v: f;");
    serve("https://a.example/raw.txt", "raw{}");
    serve("https://b.example/lib.less?v=1", "@import (reference) \"ref.less\"; b { c: d }");
    serve("https://b.example/ref.less", "never{}");
    const std::string code = "@import \"https://a.example/x/@{lib}.less\";\n"
                             "@import \"//b.example/lib.less?v=1\";\n"
                             "@import (css) \"https://c.example/left.css\";\n"
                             "@import (optional) \"https://c.example/none.less\";\n"
                             "a { .m(); .n() }";
    EXPECT_THAT(less(code), AllOf(Not(HasSubstr("never")), HasSubstr("raw{}"),
                                  HasSubstr("a{c:d;e:f;}"), HasSubstr("b{c:d;}")));
    EXPECT_THAT(loader.asked, SizeIs(7)) << "with the one that need not be there";
    EXPECT_TRUE(loader.allForPublicHosts);
    loader.asked.clear();
    EXPECT_THAT(less(code), HasSubstr("a{c:d;e:f;}"));
    EXPECT_THAT(loader.taken(), SizeIs(1)) << "only what failed is asked for again";

    serve("https://a.example/top.less", "@v: new;");
    loader.responses.erase("https://a.example/x/lib.less");
    EXPECT_THAT(less(code), HasSubstr("e:f;"));
    loader.taken();
    EXPECT_THAT(css("less", code, true), AllOf(HasSubstr("c:d;"), HasSubstr("e:new;")));
    EXPECT_THAT(loader.asked, SizeIs(7)) << "each once";
    EXPECT_THAT(less(code), HasSubstr("e:new;"));
}

TEST_F(CompilersTest, nameEveryFileThatCannotBeHad) {
    serve("https://a.example/good.less", "@import \"bad.less\";");
    serve("https://a.example/late.less", "g { h: i }");
    EXPECT_THAT(less("@import \"https://a.example/good.less\";\n@import \"near.less\";\n"
                     "@import \"https://a.example/gone.less\";\n"
                     "@import \"https://a.example/late.less\";\na { b: c }"),
                AllOf(HasSubstr("https://a.example/gone.less"), HasSubstr("/near.less"),
                      HasSubstr("' wasn't found (it could not be loaded)"),
                      HasSubstr("(only files with a whole address"),
                      HasSubstr("https://a.example/bad.less")));
}

TEST_F(CompilersTest, endWhateverTheFilesImport) {
    serve("https://a.example/one.less", "@import \"two.less\"; a { b: c }");
    serve("https://a.example/two.less", "@import \"one.less\"; d { e: f }");
    EXPECT_EQ(less("@import \"https://a.example/one.less\";"), "d{e:f;}a{b:c;}");
    std::string code;
    for (int i = 0; i < 150; ++i) {
        const std::string name = std::to_string(i);
        serve("https://a.example/deep" + name + ".less",
              "@import \"deep" + std::to_string(i + 1) + ".less\";");
        serve("https://a.example/wide" + name + ".less", "");
        code += "@import \"https://a.example/wide" + name + ".less\";\n";
    }
    loader.asked.clear();
    EXPECT_THAT(less(code), AllOf(HasSubstr("wide149.less' wasn't found (the style imports too "
                                            "many files)"),
                                  HasSubstr("wide100.less (the")));
    EXPECT_THAT(loader.asked, SizeIs(mostImportedFiles));
    EXPECT_THAT(less("@import \"https://a.example/deep0.less\";"),
                HasSubstr("deep40.less' wasn't found (the style's imports import too deep)"));

    code.clear();
    for (int i = 0; i < 4; ++i) {
        const std::string address = "https://a.example/large" + std::to_string(i) + ".less";
        serve(address, "/*" + std::string(3 << 20, ' ') + "*/");
        code += "@import \"" + address + "\";\n";
    }
    EXPECT_THAT(less(code), AllOf(HasSubstr("large3.less' wasn't found (the style imports too "
                                            "large files)"),
                                  HasSubstr("large2.less (the style imports too large")));
}

} // namespace
} // namespace tessaril
