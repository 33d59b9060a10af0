#include "less_imports/importing_compiler.h"
#include "less_imports/saving_compiler.h"
#include "model/text.h"
#include "support/map_url_loader.h"
#include "support/recording_compiler_errors.h"
#include "support/store_machine.h"
#include "support/test.h"

namespace tessaril {
namespace {

using namespace std::chrono_literals;

/// Plays Less with code of words: "@ADDRESS" imports a file, others are its CSS.
struct ImportingEngine : ScriptEngine, Resources {
    struct Context : ScriptContext {
        std::optional<std::string> evaluate(std::string_view script) override {
            if (script.starts_with("less.render")) take(source);
            if (script == "answerImports();")
                for (const std::string& address : std::exchange(wanted, {}))
                    takeAnswer(address);
            return "";
        }
        void setGlobal(std::string_view name, std::string_view value) override {
            (name == "str" ? source : answers) = value;
        }
        std::optional<std::string> global(std::string_view name) override {
            if (name == "errorMsg") return error;
            if (name == "compiled") return error ? std::nullopt : std::optional(css);
            std::string addresses;
            for (const std::string& address : wanted)
                addresses += (addresses.empty() ? "" : "\n") + address;
            return addresses;
        }

        void take(std::string_view code) {
            std::istringstream words{std::string(code)};
            for (std::string word; words >> word;) {
                if (word.starts_with('@'))
                    wanted.push_back(word.substr(1));
                else
                    css += word;
            }
        }
        void takeAnswer(const std::string& address) {
            const std::string start = "\"" + address + "\":{\"text\":\"";
            const std::size_t at = answers.find(start), begin = at + start.size();
            if (at == std::string::npos)
                error = "'" + address + "' wasn't found";
            else
                take(std::string(answers, begin, answers.find('"', begin) - begin));
        }

        std::string source, answers, css;
        std::vector<std::string> wanted;
        std::optional<std::string> error;
    };

    std::unique_ptr<ScriptContext> makeContext(std::span<const scriptSource>,
                                               ExceptionHandler) override {
        return std::make_unique<Context>();
    }
    std::optional<scriptSource> script(std::string_view) const override { return scriptSource{}; }
};

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
    /// Stores the code and gives what its CSS becomes.
    std::string save(std::string code) {
        store.applyEditorChanges(7, lessStyle(std::move(code)));
        dispatcher.runAll();
        return compiled(store.styleWithID(7).value());
    }
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
    EXPECT_EQ(compiled(store.styleWithID(7).value()), "new{}");
    files.contents["/imports/007.unfinished"] = "not ours";
    next.resume();
    EXPECT_THAT(dispatcher.backgroundTasks, IsEmpty());
}

TEST_F(LessImportsTest, aSaveTellsOnceOfWhatCannotBeHadAndEnds) {
    putDocument({lessStyle("old{}")});
    save("@https://a.example/gone @https://a.example/none");
    EXPECT_THAT(errors.errors, SizeIs(1));
    EXPECT_THAT(errors.errors[0].text, HasSubstr("https://a.example/gone"));
    EXPECT_THAT(loader.taken(), SizeIs(2));
    save("@https://a.example/gone a{}");
    EXPECT_THAT(errors.errors, SizeIs(2));
    EXPECT_THAT(loader.taken(), IsEmpty()) << "it failed a moment ago";
    files.now += 2min;
    serve("https://a.example/gone", "here{}");
    EXPECT_EQ(save("@https://a.example/gone a{}"), "a{}here{}");

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
