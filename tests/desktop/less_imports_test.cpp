#include "desktop/directory_resources.h"
#include "desktop/javascript_core_engine.h"
#include "desktop/qt_dispatcher.h"
#include "less_imports/importing_compiler.h"
#include "support/map_url_loader.h"
#include "support/memory_files.h"
#include "support/recording_alerts.h"
#include "support/recording_compiler_errors.h"
#include "support/stepped_dispatcher.h"
#include "support/test.h"

#include <latch>

namespace tessaril {
namespace {

/// The real Less on files from a network in memory.
struct LessImportsTest : ::testing::Test {
    void serve(std::string address, std::string text) {
        loader.responses[std::move(address)] = {.body = std::move(text)};
    }

    /// The CSS without its white space, or the only error.
    std::string css(std::string code, bool refreshed = false) {
        styleContainer style;
        style.preprocessor = "less";
        style.styleData.sections = {{.code = std::move(code)}};
        style.userVariables = {{.type = "text", .name = "lib", .currentValue = "\"lib\""}};
        errors.errors.clear();
        const auto tell = refreshed ? compiler.refreshing()(style) : compiler.compileLoading(style);
        if (tell) tell();
        EXPECT_LE(errors.errors.size(), 1u);
        if (!errors.errors.empty()) return errors.errors.front().text;
        std::string text = style.styleData.compSections.value().front().code;
        std::erase_if(text, [](char c) { return c == ' ' || c == '\n'; });
        return text;
    }

    const CapturedLog log;
    JavaScriptCoreEngine engine;
    DirectoryResources resources{TESSARIL_RESOURCES};
    RecordingAlerts alerts;
    RecordingCompilerErrors errors;
    StyleCompiler less{engine, resources, alerts, errors};
    MapUrlLoader loader;
    MemoryFiles memory;
    ImportedFiles files{loader, memory, "/imports"};
    SteppedDispatcher dispatcher;
    ImportingCompiler compiler{less, files, dispatcher};
};

TEST_F(LessImportsTest, resolveAsOnAPageAndCostTheNetworkOnce) {
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
    EXPECT_THAT(css(code), AllOf(Not(HasSubstr("never")), HasSubstr("raw{}"),
                                 HasSubstr("a{c:d;e:f;}"), HasSubstr("b{c:d;}")));
    EXPECT_THAT(loader.asked, SizeIs(7)) << "with the one that need not be there";
    EXPECT_TRUE(loader.allForPublicHosts);
    loader.asked.clear();
    EXPECT_THAT(css(code), HasSubstr("a{c:d;e:f;}"));
    EXPECT_THAT(loader.taken(), SizeIs(1)) << "only what failed is asked for again";

    serve("https://a.example/top.less", "@v: new;");
    loader.responses.erase("https://a.example/x/lib.less");
    EXPECT_THAT(css(code), HasSubstr("e:f;"));
    loader.taken();
    EXPECT_THAT(css(code, true), AllOf(HasSubstr("c:d;"), HasSubstr("e:new;")));
    EXPECT_THAT(loader.asked, SizeIs(7)) << "each once";
    EXPECT_THAT(css(code), HasSubstr("e:new;"));
}

TEST_F(LessImportsTest, nameEveryFileThatCannotBeHad) {
    serve("https://a.example/good.less", "@import \"bad.less\";");
    serve("https://a.example/late.less", "g { h: i }");
    EXPECT_THAT(css("@import \"https://a.example/good.less\";\n@import \"near.less\";\n"
                    "@import \"https://a.example/gone.less\";\n"
                    "@import \"https://a.example/late.less\";\na { b: c }"),
                AllOf(HasSubstr("https://a.example/gone.less"), HasSubstr("/near.less"),
                      HasSubstr("' wasn't found (it could not be loaded)"),
                      HasSubstr("(only files with a whole address"),
                      HasSubstr("https://a.example/bad.less")));
}

TEST_F(LessImportsTest, runNoScriptOfTheirs) {
    serve("https://a.example/plugger.less", "@plugin \"plugin.js\"; a { b: ran() }");
    serve("https://a.example/plugin.js", "functions.add('ran', () => 'it')");
    serve("https://a.example/inline.less", "a { b: `1 + 1` }");
    EXPECT_THAT(css("@import \"https://a.example/plugger.less\";"),
                HasSubstr("@plugin is not allowed: plugin.js"));
    EXPECT_THAT(css("@import \"https://a.example/inline.less\";"), HasSubstr("JavaScript"));
    EXPECT_THAT(loader.asked, SizeIs(2)) << "not for the script";
}

TEST_F(LessImportsTest, endWhateverTheFilesImport) {
    serve("https://a.example/one.less", "@import \"two.less\"; a { b: c }");
    serve("https://a.example/two.less", "@import \"one.less\"; d { e: f }");
    EXPECT_EQ(css("@import \"https://a.example/one.less\";"), "d{e:f;}a{b:c;}");
    std::string code;
    for (int i = 0; i < 150; ++i) {
        const std::string name = std::to_string(i);
        serve("https://a.example/deep" + name + ".less",
              "@import \"deep" + std::to_string(i + 1) + ".less\";");
        serve("https://a.example/wide" + name + ".less", "");
        code += "@import \"https://a.example/wide" + name + ".less\";\n";
    }
    loader.asked.clear();
    EXPECT_THAT(css(code), AllOf(HasSubstr("wide149.less' wasn't found (the style imports too "
                                           "many files)"),
                                 HasSubstr("wide100.less (the")));
    EXPECT_THAT(loader.asked, SizeIs(mostImportedFiles));
    EXPECT_THAT(css("@import \"https://a.example/deep0.less\";"),
                HasSubstr("deep40.less' wasn't found (the style's imports import too deep)"));

    code.clear();
    for (int i = 0; i < 4; ++i) {
        const std::string address = "https://a.example/large" + std::to_string(i) + ".less";
        serve(address, "/*" + std::string(3 << 20, ' ') + "*/");
        code += "@import \"" + address + "\";\n";
    }
    EXPECT_THAT(css(code), AllOf(HasSubstr("large3.less' wasn't found (the style imports too "
                                           "large files)"),
                                 HasSubstr("large2.less (the style imports too large")));
}

TEST(QtDispatcherTest, startsOtherTasksBesideThoseThatWait) {
    QtDispatcher dispatcher;
    constexpr int waiting = 12;
    std::latch started(waiting);
    std::latch saved(1);
    for (int i = 0; i < waiting; ++i)
        dispatcher.inBackground(taskPriority::utility, [&] {
            dispatcher.whileWaiting([&] {
                started.count_down();
                saved.wait();
            });
        });
    started.wait();
    dispatcher.inBackground(taskPriority::utility, [&] { saved.count_down(); });
    dispatcher.finish(); // would never return
    EXPECT_TRUE(saved.try_wait());
}

} // namespace
} // namespace tessaril
