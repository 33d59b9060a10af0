#include "compile/style_compiler.h"
#include "support/captured_log.h"
#include "support/recording_alerts.h"
#include "support/recording_compiler_errors.h"

#include <gmock/gmock.h>

#include <map>

namespace tessaril {
namespace {

using ::testing::ElementsAre, ::testing::HasSubstr, ::testing::IsEmpty;

using texts = std::map<std::string, std::string, std::less<>>;

std::optional<std::string> textIn(const texts& map, std::string_view key) {
    const auto found = map.find(key);
    return found == map.end() ? std::nullopt : std::optional(found->second);
}

/// An engine that writes down what it is asked and answers from lists.
struct ScriptedEngine : ScriptEngine {
    struct Context : ScriptContext {
        Context(ScriptedEngine& owner, ExceptionHandler handler)
            : engine(owner), onException(std::move(handler)) {}

        std::optional<std::string> evaluate(std::string_view script) override {
            engine.asked.emplace_back(script);
            const auto exception = textIn(engine.exceptions, script);
            if (!exception) return textIn(engine.values, script).value_or("undefined");
            onException(*exception);
            return std::nullopt;
        }
        void setGlobal(std::string_view name, std::string_view value) override {
            engine.asked.push_back("set " + std::string(name));
            engine.source = value;
        }
        std::optional<std::string> global(std::string_view name) override {
            engine.asked.push_back("get " + std::string(name));
            return textIn(engine.globals, name);
        }

        ScriptedEngine& engine;
        ExceptionHandler onException;
    };

    std::unique_ptr<ScriptContext> makeContext(std::span<const scriptSource> scripts,
                                               ExceptionHandler onException) override {
        for (const scriptSource& script : scripts)
            asked.push_back(script.address + script.text);
        if (!loadError.empty()) onException(loadError);
        return std::make_unique<Context>(*this, std::move(onException));
    }

    std::vector<std::string> asked;
    std::string source;    ///< the global that was set
    texts globals;         ///< what global() finds
    texts values;          ///< what evaluating a statement gives
    texts exceptions;      ///< statements that throw
    std::string loadError; ///< what the scripts throw
};

struct ListedResources : Resources {
    std::optional<scriptSource> script(std::string_view name) const override {
        if (name == missing) return std::nullopt;
        return scriptSource{" of " + std::string(name), "file:///" + std::string(name)};
    }
    std::string missing;
};

constexpr auto renderLess =
    "less.render(str).then(result => {compiled = result.css;}, err => {errorMsg = err;});";

class StyleCompilerTest : public ::testing::Test {
protected:
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
        testing::CapturedLog log;
        StyleCompiler(engine, resources, alerts, errors).compileStyle(style);
        return log.take();
    }

    ScriptedEngine engine;
    ListedResources resources;
    testing::RecordingAlerts alerts;
    testing::RecordingCompilerErrors errors;
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
    EXPECT_THAT(alerts.alerts,
                ElementsAre(testing::RecordingAlerts::shown{
                    "Incompatible Preprocessor",
                    "Styles that require the Sass preprocessor are not currently supported. You "
                    "may install the style anyway, but some or all of the style may not function "
                    "correctly."}));

    for (const char* preprocessor : {"sass", "less", "stylus", "uso", "default"}) {
        styleContainer none = styleFor(preprocessor);
        none.userVariables.reset();
        const styleContainer before = none;
        compile(none);
        EXPECT_EQ(none, before) << "there is nothing to compile";
    }
    EXPECT_EQ(alerts.alerts.size(), 1u);
    EXPECT_THAT(engine.asked, IsEmpty());
}

TEST_F(StyleCompilerTest, runsLessInItsOrder) {
    engine.globals["compiled"] = "\n@-moz-document domain(\"site-x\") {\n  b {\n  }\n}\n";
    styleContainer style = styleFor("LESS");
    EXPECT_EQ(compile(style), engine.globals["compiled"] + "\n");
    EXPECT_THAT(engine.asked, ElementsAre("file:///encoding.min.js of encoding.min.js",
                                          "file:///less.min.js of less.min.js",
                                          "function catchError(err){if (err) throw err; }",
                                          "set str", HasSubstr("less.PluginLoader"), renderLess,
                                          "get wantedImports", "get compiled", "get errorMsg"));
    EXPECT_EQ(engine.source, "@v: 1px;\n@w: null;\n\n"
                             "/*[[v]]*/\n\n@-moz-document domain(\"site-x\")\n{\n\tb{}\n\tc{}\n}");

    styleContainer expected = styleFor("LESS"); // nothing but the result is written
    expected.styleData.compSections->front() = {.domains = {"site-x"}, .code = "b {\n  }"};
    EXPECT_EQ(style, expected);
    EXPECT_THAT(errors.errors, IsEmpty());
}

TEST_F(StyleCompilerTest, runsStylusInItsOrder) {
    engine.values["renderer.render();"] = "a {\n  b: c;\n}\n";
    styleContainer style = styleFor("Stylus");
    style.styleData.sections = {{.urls = {"u"}, .code = "body\n  color red"}};
    compile(style);
    EXPECT_THAT(engine.asked,
                ElementsAre("file:///encoding.min.js of encoding.min.js",
                            "file:///stylus-renderer.min.js of stylus-renderer.min.js",
                            "function catchError(err, css){if (err) throw err; console.log(css); }",
                            "set str", "renderer = new StylusRenderer(str);",
                            "renderer.render();"));
    EXPECT_EQ(engine.source,
              "v = 1px;\nw = null;\n\n@-moz-document url(\"u\")\n\n\tbody\n\t  color red\n");
    EXPECT_EQ(firstCompiled(style), "a {\n  b: c;\n}");
}

TEST_F(StyleCompilerTest, keepsTheLastResultWhenThereIsNone) {
    styleContainer style = styleFor("less");
    EXPECT_EQ(compile(style), "") << "no such global";
    for (const char* none : {"undefined", " undefined\u2028\n"}) {
        engine.globals["compiled"] = engine.values["renderer.render();"] = none;
        for (const char* preprocessor : {"less", "stylus"}) {
            style.preprocessor = preprocessor;
            EXPECT_EQ(compile(style), "");
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
        resources.missing = missing;
        styleContainer style = styleFor(preprocessor);
        EXPECT_EQ(compile(style), line);
        EXPECT_EQ(style, styleFor(preprocessor));
    }
    EXPECT_THAT(engine.asked, IsEmpty());
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
