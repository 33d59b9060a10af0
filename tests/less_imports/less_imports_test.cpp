#include "less_imports/importing_compiler.h"
#include "less_imports/saving_compiler.h"
#include "support/importing_engine.h"
#include "support/map_url_loader.h"
#include "support/recording_compiler_errors.h"
#include "support/store_machine.h"
#include "support/test.h"

namespace tessaril {
namespace {

using namespace std::chrono_literals;

struct LessImportsTest : ::testing::Test, StoreMachine<> {
    LessImportsTest() {
        compile = [this](styleContainer& style) { compileWith(saving, style); };
    }

    void compileWith(SavingCompiler& savingOne, styleContainer& style) {
        auto tell = savingOne.compile(style);
        afterStoring = tell ? std::move(tell) : [] {};
    }
    void serve(std::string address, std::string text) {
        loader.responses[std::move(address)] = {.body = std::move(text)};
    }
    static styleContainer lessStyle(std::string code) {
        styleContainer style = namedStyle("Name", 7);
        style.preprocessor = "less";
        style.userVariables.emplace();
        style.styleData.sections = {{.code = std::move(code)}};
        return style;
    }
    static std::string compiled(const styleContainer& style) {
        const auto& sections = style.styleData.compSections;
        return sections && !sections->empty() ? sections->front().code : "";
    }
    std::string storedCSS() { return compiled(store.styleWithID(7).value()); }
    std::string loaded(std::string code, std::string downloadedFrom = {}) {
        styleContainer style = lessStyle(std::move(code));
        style.downloadedFrom = std::move(downloadedFrom);
        if (const auto tell = importing.compileLoading(style)) tell();
        return compiled(style);
    }

    const CapturedLog capturedLog;
    MapUrlLoader loader;
    ImportingEngine engine;
    RecordingCompilerErrors errors;
    StyleCompiler compiler{engine, engine, alerts, errors};
    ImportedFiles imported{loader, files, "/imports", [this] { return files.now; }};
    ImportingCompiler importing{compiler, imported, dispatcher};
    SavingCompiler saving{importing, store, dispatcher, files, "/imports"};
};

TEST_F(LessImportsTest, aSaveStoresAtOnceAndCompilesAgainWhenTheFilesHaveCome) {
    putDocument({lessStyle("old{}")});
    serve("https://a.example/lib", "lib{} @https://a.example/more");
    serve("https://a.example/more", "more{}");
    store.applyEditorChanges(7, lessStyle("@https://a.example/lib one{}"));
    EXPECT_EQ(store.styleWithID(7)->styleData.sections[0].code, "@https://a.example/lib one{}");
    EXPECT_THAT(loader.asked, IsEmpty());
    // The next save comes before the files of the first one.
    store.applyEditorChanges(7, lessStyle("@https://a.example/lib two{}"));
    EXPECT_THAT(errors.errors, IsEmpty());
    dispatcher.runAll();
    EXPECT_EQ(storedCSS(), "two{}lib{}more{}");
    EXPECT_EQ(compiled(written().styles[0]), "two{}lib{}more{}");
    EXPECT_THAT(loader.taken(), SizeIs(2));

    // The run is killed before the files of a save have come.
    serve("https://a.example/new", "new{}");
    store.applyEditorChanges(7, lessStyle("@https://a.example/new"));
    dispatcher.backgroundTasks.clear();
    SavingCompiler next{importing, store, dispatcher, files, "/imports"};
    compile = [&](styleContainer& style) { compileWith(next, style); };
    next.resume();
    dispatcher.runAll();
    EXPECT_EQ(storedCSS(), "new{}");
    files.contents["/imports/007.unfinished"] = "not ours";
    next.resume();
    EXPECT_THAT(dispatcher.backgroundTasks, IsEmpty());
}

TEST_F(LessImportsTest, aSaveTellsOnceOfWhatCannotBeHadAndEnds) {
    putDocument({lessStyle("old{}")});
    const auto save = [this](std::string code) {
        store.applyEditorChanges(7, lessStyle(std::move(code)));
        dispatcher.runAll();
    };
    save("@https://a.example/gone @https://a.example/none");
    EXPECT_THAT(errors.errors, SizeIs(1));
    EXPECT_THAT(errors.errors[0].text, HasSubstr("https://a.example/gone"));
    EXPECT_THAT(loader.taken(), SizeIs(2));
    save("@https://a.example/gone a{}");
    EXPECT_THAT(errors.errors, SizeIs(2));
    EXPECT_THAT(loader.taken(), IsEmpty()) << "it failed a moment ago";
    files.now += 2min;
    serve("https://a.example/gone", "here{}");
    save("@https://a.example/gone a{}");
    EXPECT_EQ(storedCSS(), "a{}here{}");

    // Nothing is kept where the disk is full; it must not be loaded again and again for that.
    files.full = true;
    files.contents.clear();
    serve("https://a.example/late", "late{}");
    loader.taken();
    save("@https://a.example/late");
    EXPECT_THAT(loader.taken(), SizeIs(1));
    EXPECT_EQ(loaded("@https://a.example/late2"), "");

    // A style that is gone by the time its files come, and an application that quits.
    files.full = false;
    files.now += 2min;
    store.applyEditorChanges(7, lessStyle("@https://a.example/late"));
    store.deleteStyle(0);
    dispatcher.runAll();
    EXPECT_EQ(store.countStyles(), 0u);
    const std::size_t told = errors.errors.size();
    importing.stop();
    loader.taken();
    loaded("@https://a.example/other");
    EXPECT_THAT(loader.taken(), IsEmpty());
    EXPECT_THAT(errors.errors, SizeIs(told));
    styleContainer other = lessStyle("@https://a.example/other");
    EXPECT_TRUE(importing.refreshing()(other)) << "not as if it were compiled";
}

TEST_F(LessImportsTest, aStrangersStyleSeesNothingOfTheOwnNetwork) {
    const std::string page = "http://192.168.0.1/page";
    serve(page, "secret{}");
    for (const char* own :
         {"http://localhost:8000/x.user.css", "http://192.168.0.9/x", "https://machine.lan/x"}) {
        loader.allForPublicHosts = true;
        files.contents.clear();
        EXPECT_EQ(loaded("@" + page, own), "secret{}") << own;
        EXPECT_FALSE(loader.allForPublicHosts);
    }
    loader.allForPublicHosts = true;
    loader.responses.clear();
    for (const char* stranger : {"", "https://a.example/x.user.css", "no address",
                                 "http://8.8.8.8/x.less", "http://evil.8.8.8.8.in-addr.arpa/x"}) {
        EXPECT_EQ(loaded("@" + page, stranger), "") << "not even what is kept";
        styleContainer style = lessStyle("@" + page);
        style.downloadedFrom = *stranger ? "http://localhost/x" : "";
        style.updateURL = *stranger ? stranger : "http://localhost/x";
        styleContainer own = style;
        own.downloadedFrom = "http://localhost/x";
        own.updateURL.reset();
        const QuietCompile compileBoth = importing.refreshing();
        compileBoth(own);
        loader.allForPublicHosts = true;
        compileBoth(style);
        EXPECT_EQ(compiled(style), "") << "not even what another version has had";
    }
    EXPECT_TRUE(loader.allForPublicHosts);
    EXPECT_EQ(loaded("@" + page, "http://localhost/"), "secret{}");
    for (const char* odd : {"file:///etc/passwd", "ftp://a.example/x", "style:///lib.less"}) {
        loader.taken();
        EXPECT_EQ(loaded(std::string("@") + odd, "http://localhost/"), "");
        EXPECT_THAT(loader.taken(), IsEmpty()) << odd;
    }
}

TEST_F(LessImportsTest, keepTheFilesThatAreUsed) {
    serve("https://a.example/used", "used{}");
    loaded("@https://a.example/used");
    const std::string text(1 << 20, 'x');
    for (int i = 0; i < 80; ++i) {
        files.now += 2h;
        const std::string address = "https://a.example/" + std::to_string(i);
        serve(address, text);
        loaded("@" + address);
        loaded("@https://a.example/used");
    }
    EXPECT_LE(files.contents.size(), 65u);
    EXPECT_EQ(std::ranges::count(loader.asked, "https://a.example/used"), 1);
    EXPECT_FALSE(imported.kept({"https://a.example/0"}));
}

} // namespace
} // namespace tessaril
