#include "compile/style_compiler.h"
#include "support/captured_log.h"
#include "support/recording_alerts.h"
#include "support/recording_compiler_errors.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

namespace tessaril {

namespace {

using testing::CapturedLog;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

using globals = std::map<std::string, std::string, std::less<>>;

/// An engine that writes down what it is asked and answers from lists.
class ScriptedEngine : public ScriptEngine {
public:
    std::unique_ptr<ScriptContext> makeContext(std::span<const scriptSource> scripts,
                                               ExceptionHandler onException) override {
        ++contexts;
        for (const scriptSource& script : scripts)
            statements.push_back(script.address + " " + script.text);
        for (const std::string& exception : loadExceptions)
            onException(exception);
        return std::make_unique<Context>(*this, std::move(onException));
    }

    int contexts = 0;
    std::vector<std::string> statements;
    globals input;
    globals output;                          ///< what global() finds
    globals values;                          ///< what evaluating a statement gives
    globals exceptions;                      ///< statements that throw
    std::vector<std::string> loadExceptions; ///< what the scripts throw

private:
    class Context : public ScriptContext {
    public:
        Context(ScriptedEngine& owner, ExceptionHandler handler)
            : engine(owner), onException(std::move(handler)) {}

        std::optional<std::string> evaluate(std::string_view script) override {
            engine.statements.emplace_back(script);
            if (const auto found = engine.exceptions.find(script);
                found != engine.exceptions.end()) {
                onException(found->second);
                return std::nullopt;
            }
            return valueIn(engine.values, script).value_or("undefined");
        }

        void setGlobal(std::string_view name, std::string_view value) override {
            engine.statements.push_back("set " + std::string(name));
            engine.input[std::string(name)] = value;
        }

        std::optional<std::string> global(std::string_view name) override {
            engine.statements.push_back("get " + std::string(name));
            return valueIn(engine.output, name);
        }

    private:
        static std::optional<std::string> valueIn(const globals& map, std::string_view key) {
            const auto found = map.find(key);
            if (found == map.end()) return std::nullopt;
            return found->second;
        }

        ScriptedEngine& engine;
        ExceptionHandler onException;
    };
};

class ListedResources : public Resources {
public:
    std::optional<scriptSource> script(std::string_view name) const override {
        if (name == missing) return std::nullopt;
        return scriptSource{"text of " + std::string(name), "file:///" + std::string(name)};
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
        style.styleData.sections.resize(2);
        style.styleData.sections[0].code = "a{}";
        style.styleData.sections[1].code = "b{}\nc{}";
        style.styleData.sections[1].domains = {"site-x"};
        style.styleData.compSections.emplace().resize(1);
        style.styleData.compSections->front().code = "before";
        userVariable text;
        text.type = "text";
        text.name = "v";
        text.currentValue = "1px";
        userVariable absent = text;
        absent.name = "w";
        absent.currentValue.reset();
        style.userVariables = {text, absent};
        return style;
    }

    static std::string firstCompiled(const styleContainer& style) {
        return style.styleData.compSections->front().code;
    }

    /// Compiles, and gives what was logged.
    std::string compile(styleContainer& style) {
        CapturedLog log;
        StyleCompiler(engine, resources, alerts, errors).compileStyle(style);
        return log.take();
    }

    ScriptedEngine engine;
    ListedResources resources;
    testing::RecordingAlerts alerts;
    testing::RecordingCompilerErrors errors;
};

TEST_F(StyleCompilerTest, choosesTheModeByThePreprocessor) {
    const auto changed = [&](const char* preprocessor) {
        styleContainer style = styleFor(preprocessor);
        style.styleData.sections[0].code = "/*[[v]]*/";
        const styleContainer before = style;
        compile(style);
        return style == before ? "nothing" : *style.styleData.sections[0].compiledcode;
    };
    for (const char* placeholders : {"", "uso", "USO"})
        EXPECT_EQ(changed(placeholders), "1px") << placeholders;
    for (const char* properties : {"default", "Default"})
        EXPECT_EQ(changed(properties), ":root {\n\t--v: 1px;\n\t--w: ;\n}\n/*[[v]]*/");
    for (const char* other : {" ", "scss", "default ", "sass"})
        EXPECT_EQ(changed(other), "nothing") << other;
    EXPECT_EQ(engine.contexts, 0);
}

TEST_F(StyleCompilerTest, warnsAboutSassOnlyWhereThereIsSomethingToCompile) {
    styleContainer style = styleFor("Sass");
    compile(style);
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
        EXPECT_EQ(none, before);
    }
    EXPECT_EQ(alerts.alerts.size(), 1u);
    EXPECT_EQ(engine.contexts, 0);
}

TEST_F(StyleCompilerTest, runsLessInItsOrder) {
    engine.output["compiled"] = "\n@-moz-document domain(\"site-x\") {\n  b {\n    c: d;\n  }\n}\n";
    styleContainer style = styleFor("LESS");
    styleContainer expected = style;
    EXPECT_EQ(compile(style), engine.output["compiled"] + "\n");

    EXPECT_THAT(engine.statements,
                ElementsAre("file:///encoding.min.js text of encoding.min.js",
                            "file:///less.min.js text of less.min.js",
                            "function catchError(err){if (err) throw err; }", "set str", renderLess,
                            "get compiled", "get errorMsg"));
    EXPECT_EQ(engine.input["str"], "@v: 1px;\n@w: null;\n\n"
                                   "a{}\n\n@-moz-document domain(\"site-x\")\n{\n\tb{}\n\tc{}\n}");
    ASSERT_EQ(style.styleData.compSections->size(), 1u);
    EXPECT_THAT(style.styleData.compSections->front().domains, ElementsAre("site-x"));
    EXPECT_THAT(firstCompiled(style), ::testing::HasSubstr("c: d;"));

    expected.styleData.compSections = style.styleData.compSections;
    EXPECT_EQ(style, expected); // nothing else is written
    EXPECT_THAT(errors.errors, IsEmpty());
}

TEST_F(StyleCompilerTest, runsStylusInItsOrder) {
    engine.values["renderer.render();"] = "a {\n  b: c;\n}\n";
    styleContainer style = styleFor("Stylus");
    style.styleData.sections = {styleSection{}};
    style.styleData.sections[0].urls = {"u"};
    style.styleData.sections[0].code = "body\n  color red";
    compile(style);

    EXPECT_THAT(engine.statements,
                ElementsAre("file:///encoding.min.js text of encoding.min.js",
                            "file:///stylus-renderer.min.js text of stylus-renderer.min.js",
                            "function catchError(err, css){if (err) throw err; console.log(css); }",
                            "set str", "renderer = new StylusRenderer(str);",
                            "renderer.render();"));
    EXPECT_EQ(engine.input["str"],
              "v = 1px;\nw = null;\n\n@-moz-document url(\"u\")\n\n\tbody\n\t  color red\n");
    EXPECT_EQ(firstCompiled(style), "a {\n  b: c;\n}");
}

TEST_F(StyleCompilerTest, keepsTheLastResultWhenThereIsNone) {
    for (const std::string& none : {std::string("undefined"), std::string(" undefined\u2028\n")}) {
        engine.output["compiled"] = none;
        engine.values["renderer.render();"] = none;
        for (const char* preprocessor : {"less", "stylus"}) {
            styleContainer style = styleFor(preprocessor);
            EXPECT_EQ(compile(style), "");
            EXPECT_EQ(firstCompiled(style), "before");
        }
    }
    engine.output.clear();
    styleContainer style = styleFor("less");
    EXPECT_EQ(compile(style), "");
    EXPECT_EQ(firstCompiled(style), "before");

    engine.output["compiled"] = " \n"; // a text, but no style
    EXPECT_EQ(compile(style), " \n\ncompiled style was nil\n");
    EXPECT_EQ(firstCompiled(style), "before");
}

TEST_F(StyleCompilerTest, logsMissingScripts) {
    for (const char* missing : {"less.min.js", "stylus-renderer.min.js", "encoding.min.js"}) {
        resources.missing = missing;
        for (const char* preprocessor : {"less", "stylus"}) {
            if (missing == std::string_view("less.min.js") && *preprocessor == 's') continue;
            if (missing == std::string_view("stylus-renderer.min.js") && *preprocessor == 'l')
                continue;
            styleContainer style = styleFor(preprocessor);
            const styleContainer before = style;
            EXPECT_EQ(compile(style),
                      *preprocessor == 'l' ? "Unable to load Less.\n" : "Unable to load Stylus.\n");
            EXPECT_EQ(style, before);
        }
    }
    EXPECT_EQ(engine.contexts, 0);
    EXPECT_THAT(errors.errors, IsEmpty());
}

TEST_F(StyleCompilerTest, opensAWindowForEachError) {
    engine.loadExceptions = {"first", "second"};
    engine.exceptions[renderLess] = "third";
    engine.output["errorMsg"] = "ParseError: x\n    at Error.captureStackTrace (y)\n    at z";
    engine.output["compiled"] = "a{b:c}";
    styleContainer style = styleFor("less");
    compile(style);
    const std::string title = "Compiler Error (Name)";
    const std::string header = "A Less compilation error occurred.";
    EXPECT_THAT(errors.errors, ElementsAre(compilerError{title, header, "first"},
                                           compilerError{title, header, "second"},
                                           compilerError{title, header, "third"},
                                           compilerError{title, header, "ParseError: x\n    at "}));
    EXPECT_EQ(firstCompiled(style), "a{b:c}"); // what there is counts all the same

    errors.errors.clear();
    engine.loadExceptions.clear();
    engine.exceptions = {{"renderer.render();", "Error: stylus:1:1"}};
    styleContainer stylus = styleFor("stylus");
    compile(stylus);
    EXPECT_THAT(errors.errors,
                ElementsAre(compilerError{title, std::nullopt, "Error: stylus:1:1"}));
    EXPECT_EQ(firstCompiled(stylus), "before");
}

TEST_F(StyleCompilerTest, takesNoUndefinedErrorForOne) {
    engine.output["errorMsg"] = "undefined";
    styleContainer style = styleFor("less");
    compile(style);
    EXPECT_THAT(errors.errors, IsEmpty());

    engine.output["errorMsg"] = "null"; // thrown by the compiler itself
    compile(style);
    EXPECT_EQ(errors.errors.size(), 1u);
}

} // namespace

} // namespace tessaril
