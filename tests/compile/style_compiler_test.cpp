#include "compile/style_compiler.h"
#include "support/recording_alerts.h"
#include "support/recording_compiler_errors.h"
#include "support/test.h"

namespace tessaril {
namespace {

using texts = std::map<std::string, std::string, std::less<>>;

std::optional<std::string> textIn(const texts& map, std::string_view key) {
    const auto found = map.find(key);
    return found == map.end() ? std::nullopt : std::optional(found->second);
}

/// An engine that answers from lists, with the scripts that it runs.
struct ScriptedEngine : ScriptEngine, Resources {
    struct Context : ScriptContext {
        Context(ScriptedEngine& owner, ExceptionHandler handler)
            : engine(owner), onException(std::move(handler)) {}

        std::optional<std::string> evaluate(std::string_view script) override {
            const auto exception = textIn(engine.exceptions, script);
            if (!exception) return textIn(engine.values, script).value_or("undefined");
            onException(*exception);
            return std::nullopt;
        }
        void setGlobal(std::string_view, std::string_view value) override { engine.source = value; }
        std::optional<std::string> global(std::string_view name) override {
            return textIn(engine.globals, name);
        }

        ScriptedEngine& engine;
        ExceptionHandler onException;
    };

    std::unique_ptr<ScriptContext> makeContext(std::span<const scriptSource>,
                                               ExceptionHandler onException) override {
        ++contexts;
        if (!loadError.empty()) onException(loadError);
        return std::make_unique<Context>(*this, std::move(onException));
    }
    std::optional<scriptSource> script(std::string_view name) const override {
        return name == missing ? std::nullopt : std::optional(scriptSource{});
    }

    int contexts = 0;
    std::string missing;   ///< the script that is not there
    std::string source;    ///< the global that was set
    texts globals;         ///< what global() finds
    texts values;          ///< what evaluating a statement gives
    texts exceptions;      ///< statements that throw
    std::string loadError; ///< what the scripts throw
};

constexpr auto renderLess =
    "less.render(str).then(result => {compiled = result.css;}, err => {errorMsg = err;});";

struct StyleCompilerTest : ::testing::Test {
    static styleContainer styleFor(std::string preprocessor) {
        styleContainer style;
        style.preprocessor = std::move(preprocessor);
        style.styleData.name = "Name";
        style.styleData.sections = {{.code = "/*[[v]]*/"},
                                    {.domains = {"site-x"}, .code = "b{}\nc{}"}};
        style.styleData.compSections.emplace(1).front().code = "before";
        style.userVariables = {{.type = "text", .name = "v", .currentValue = "1px"},
                               {.type = "text", .name = "w"}};
        return style;
    }

    static std::string firstCompiled(const styleContainer& style) {
        return style.styleData.compSections->front().code;
    }

    /// Compiles, and gives what was logged.
    std::string compile(styleContainer& style) {
        CapturedLog log;
        compiler.compileStyle(style);
        return log.take();
    }

    ScriptedEngine engine;
    RecordingAlerts alerts;
    RecordingCompilerErrors errors;
    StyleCompiler compiler{engine, engine, alerts, errors};
};

TEST_F(StyleCompilerTest, choosesTheModeByThePreprocessor) {
    const std::string properties = ":root {\n\t--v: 1px;\n\t--w: ;\n}\n/*[[v]]*/";
    for (const auto& [preprocessor, compiled] :
         std::map<std::string, std::optional<std::string>>{{"", "1px"},
                                                           {"USO", "1px"},
                                                           {"Default", properties},
                                                           {"default ", {}},
                                                           {"Sass", {}}}) {
        styleContainer style = styleFor(preprocessor);
        compile(style);
        EXPECT_EQ(style.styleData.sections[0].compiledcode, compiled) << preprocessor;
        EXPECT_EQ(style == styleFor(preprocessor), !compiled) << preprocessor;
    }
    for (const char* preprocessor : {"sass", "less", "stylus", "uso", "default"}) {
        styleContainer none = styleFor(preprocessor);
        none.userVariables.reset();
        const styleContainer before = none;
        compile(none);
        EXPECT_EQ(none, before) << "there is nothing to compile";
    }
    EXPECT_THAT(alerts.taken(), ElementsAre("Incompatible Preprocessor")) << "of the one above";
    EXPECT_EQ(engine.contexts, 0);
}

TEST_F(StyleCompilerTest, givesLessTheVariablesAndTheJoinedSections) {
    engine.globals["compiled"] = "\n@-moz-document domain(\"site-x\") {\n  b {\n  }\n}\n";
    styleContainer style = styleFor("LESS");
    EXPECT_EQ(compile(style), engine.globals["compiled"] + "\n");
    EXPECT_EQ(engine.source, "@v: 1px;\n@w: null;\n\n"
                             "/*[[v]]*/\n\n@-moz-document domain(\"site-x\")\n{\n\tb{}\n\tc{}\n}");

    styleContainer expected = styleFor("LESS"); // nothing but the result is written
    expected.styleData.compSections->front() = {.domains = {"site-x"}, .code = "b {\n  }"};
    EXPECT_EQ(style, expected);
    EXPECT_THAT(errors.errors, IsEmpty());
}

TEST_F(StyleCompilerTest, keepsTheLastResultWhenThereIsNone) {
    styleContainer style = styleFor("less");
    EXPECT_EQ(compile(style), "") << "no such global";
    for (const char* none : {"undefined", " undefined\u2028\n"}) {
        engine.globals["compiled"] = engine.values["renderer.render();"] = none;
        for (const char* preprocessor : {"less", "stylus"}) {
            style.preprocessor = preprocessor;
            EXPECT_EQ(compile(style), "");
            EXPECT_TRUE(compiler.compileQuietly(style));
        }
    }
    style.preprocessor = "less";
    engine.globals["compiled"] = " \n"; // a text, but no style
    EXPECT_EQ(compile(style), " \n\ncompiled style was nil\n");
    EXPECT_EQ(style, styleFor("less"));
}

TEST_F(StyleCompilerTest, logsMissingScripts) {
    for (const auto& [missing, preprocessor, line] :
         {std::tuple{"less.min.js", "less", "Unable to load Less.\n"},
          {"encoding.min.js", "less", "Unable to load Less.\n"},
          {"encoding.min.js", "stylus", "Unable to load Stylus.\n"},
          {"stylus-renderer.min.js", "stylus", "Unable to load Stylus.\n"}}) {
        engine.missing = missing;
        styleContainer style = styleFor(preprocessor);
        EXPECT_EQ(compile(style), line);
        EXPECT_EQ(style, styleFor(preprocessor));
        const CapturedLog log;
        EXPECT_TRUE(compiler.compileQuietly(style)) << "not as if it were compiled to nothing";
    }
    EXPECT_EQ(engine.contexts, 0);
    EXPECT_THAT(errors.errors, IsEmpty());
}

TEST_F(StyleCompilerTest, opensAWindowForEachError) {
    engine.loadError = "first";
    engine.exceptions = {{renderLess, "second"}, {"renderer.render();", "Error: stylus:1:1"}};
    engine.globals["errorMsg"] = "ParseError: x\n    at Error.captureStackTrace (y)\n    at z";
    engine.globals["compiled"] = "a{b:c}";
    styleContainer style = styleFor("less");
    compile(style);
    const std::string title = "Compiler Error (Name)";
    const std::string header = "A Less compilation error occurred.";
    EXPECT_THAT(errors.errors, ElementsAre(compilerError{title, header, "first"},
                                           compilerError{title, header, "second"},
                                           compilerError{title, header, "ParseError: x\n    at "}));
    EXPECT_EQ(firstCompiled(style), "a{b:c}"); // what there is counts all the same

    errors.errors.clear();
    engine.loadError.clear();
    engine.exceptions.erase(renderLess);
    for (const char* error : {"undefined", "null"}) { // null: thrown by the compiler itself
        engine.globals["errorMsg"] = error;
        compile(style);
    }
    EXPECT_THAT(errors.errors, ElementsAre(compilerError{title, header, "null"}));

    errors.errors.clear();
    style = styleFor("stylus");
    compile(style);
    EXPECT_THAT(errors.errors,
                ElementsAre(compilerError{title, std::nullopt, "Error: stylus:1:1"}));
    EXPECT_EQ(firstCompiled(style), "before");
}

} // namespace
} // namespace tessaril
