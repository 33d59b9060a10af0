#include "compile/color_from_string.h"
#include "compile/style_compiler.h"
#include "compile/substitution.h"
#include "compile/variable_text.h"
#include "support/recording_alerts.h"
#include "support/recording_compiler_errors.h"
#include "support/test.h"

namespace tessaril {
namespace {

using texts = std::map<std::string, std::optional<std::string>, std::less<>>;

/// An engine that answers from lists, with the scripts that it runs.
struct ScriptedEngine : ScriptEngine, Resources {
    struct Context : ScriptContext {
        Context(ScriptedEngine& owner, ExceptionHandler handler)
            : engine(owner), onException(std::move(handler)) {}

        std::optional<std::string> evaluate(std::string_view script) override {
            const auto exception = engine.exceptions[std::string(script)];
            if (!exception) return engine.values[std::string(script)].value_or("undefined");
            onException(*exception);
            return std::nullopt;
        }
        void setGlobal(std::string_view, std::string_view value) override { engine.source = value; }
        std::optional<std::string> global(std::string_view name) override {
            return engine.globals[std::string(name)];
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
    for (const auto& [preprocessor, compiled] : texts{{"", "1px"},
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
    EXPECT_EQ(compile(style), *engine.globals["compiled"] + "\n");
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
         {std::tuple{"encoding.min.js", "less", "Unable to load Less.\n"},
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
    EXPECT_EQ(style.styleData.compSections->front().code, "a{b:c}") << "it counts all the same";

    errors.errors.clear();
    engine.loadError.clear();
    engine.exceptions.erase(renderLess);
    for (const char* error : {"undefined", "null"}) { // null: thrown by the compiler itself
        engine.globals["errorMsg"] = error;
        compile(style);
    }
    style = styleFor("stylus");
    compile(style);
    EXPECT_THAT(errors.errors,
                ElementsAre(compilerError{title, header, "null"},
                            compilerError{title, std::nullopt, "Error: stylus:1:1"}));
    EXPECT_EQ(style, styleFor("stylus"));
}

using enum variableReader;

using text = std::optional<std::string>;

userVariable variable(std::string type, std::string name, text value) {
    return {.type = std::move(type), .name = std::move(name), .currentValue = std::move(value)};
}

userVariable range(std::string name, text value) {
    userVariable made = variable("range", std::move(name), std::move(value));
    made.rangeOptions = rangeOpts{0, 20, 1, "px"};
    return made;
}

userVariable select(text value, std::string defaultValue = "") {
    userVariable made = variable("select", "s", std::move(value));
    made.defaultValue = std::move(defaultValue);
    made.selectOptions = {{"A", "A", "a"}, {"B*", "B", "b*"}, {"C", "C", std::nullopt}};
    return made;
}

styleContainer styleWith(std::vector<userVariable> variables, std::string code) {
    return {.styleData = {.sections = {{.domains = {"a.example"}, .code = std::move(code)}, {}}},
            .userVariables = std::move(variables)};
}

std::string placeholders(std::vector<userVariable> variables, std::string code) {
    styleContainer style = styleWith(std::move(variables), std::move(code));
    compilePlaceholders(style);
    return style.styleData.sections[0].compiledcode.value_or("left as it was");
}

/// "R,G,B" as a placeholder shows it; "-" for no colour.
std::string rgb(std::string_view color) {
    const std::string code = "/*[[c-rgb]]*/";
    const std::string made = placeholders({variable("color", "c", std::string(color))}, code);
    return made == code ? "-" : made;
}

TEST(VariableText, choosesOptions) {
    for (const char* type : {"select", "dropdown", "image"}) {
        userVariable other = select("1");
        other.type = type;
        EXPECT_EQ(variableText(other, page), "b");
    }
    EXPECT_EQ(variableText(select("2"), page), "");
    EXPECT_EQ(variableText(select("2"), compiler), "null");

    userVariable bare = variable("select", "s", "1");
    EXPECT_EQ(variableText(bare, page), "1"); // no options: a text like any other
    bare.selectOptions.emplace();
    EXPECT_EQ(variableText(bare, compiler), "");

    for (const text& wrong :
         {text("3"), text("-1"), text("x"), text("99999999999999999999"), text()})
        EXPECT_EQ(variableText(select(wrong, "1"), compiler), "b") << wrong.value_or("none");
    EXPECT_EQ(variableText(select({}, "7"), compiler), "a");
}

TEST(VariableText, joinsUnitsAndFallsBackFromMissingValues) {
    EXPECT_EQ(variableText(range("r", "12"), page), "12px");
    userVariable invalid = range("r", "x");
    invalid.defaultValue = "4";
    EXPECT_EQ(variableText(invalid, page), "4px");
    userVariable missing = range("r", std::nullopt);
    EXPECT_EQ(variableText(missing, compiler), "");
    missing.defaultValue = "4";
    EXPECT_EQ(variableText(missing, compiler), "4px");
    missing.rangeOptions->units.reset();
    EXPECT_EQ(variableText(missing, compiler), "null");
    EXPECT_EQ(variableText(missing, page), "4");
    EXPECT_EQ(variableText(variable("text", "t", "50%*"), compiler), "50%*");
}

TEST(Colors, areReadInTheirSpellings) {
    for (const auto& [color, bytes] : std::vector<std::pair<std::string_view, std::string_view>>{
             {"#ff8000", "255,128,0"},
             {" #f80; \u2028", "255,136,0"},
             {"#F8", "0,0,248"},  // a number, however short
             {"#12zz", "0,0,18"}, // up to the first character that is no digit
             {"#zz", "0,0,0"},
             {"#1\u00E92", "0,0,17"}, // three characters, one of them of two bytes
             {"#ff112233445566778899", "119,136,153"},
             {"rgb( 1 , 2.9,-3)", "1,2,-3"},
             {"rgba(1,2,3,0.5);", "1,2,3"},
             {"rgb(1e300,-1e300,0)", "1000000000000000000,-1000000000000000000,0"},
             {"RebeccaPurple;", "102,51,153"},
             {"aliceblue", "240,248,255"}, // the table's ends
             {"yellowgreen", "154,205,50"}})
        EXPECT_EQ(rgb(color), bytes) << color;
    EXPECT_EQ(colorFromString("rgba(255,0,51,.25)"), (colorComponents{1, 0, 0.2, 0.25}));
    for (const char* wrong :
         {"", "rgb(1,2)", "rgb(1,2,3,4)", "rgba(1,2,3)", "rgb(1,2,x)", "rgb(10%,2,3)", "rgb(,2,3)",
          "RGB(1,2,3)", "hsl(1,2,3)", "lightgray", "grey", "transparent", "tom ato"})
        EXPECT_EQ(rgb(wrong), "-") << wrong;
}

TEST(Substitution, fillsPlaceholdersInOrder) {
    EXPECT_EQ(placeholders({variable("color", "accent", "#f80")},
                           "/*[[accent]]*/ /*[[accent-rgb]]*/ /*[[ACCENT]]*/ /*[[accent]]*/"),
              "#f80 255,136,0 /*[[ACCENT]]*/ #f80");
    EXPECT_EQ(placeholders({variable("text", "c", "red")}, "/*[[c]]*/ /*[[c-rgb]]*/"),
              "red /*[[c-rgb]]*/");
    EXPECT_EQ(placeholders({variable("text", "a", "/*[[b]]*/"), range("b", "1")}, "x/*[[a]]*/"),
              "x1px"); // what one variable puts in, a later one replaces

    std::vector<userVariable> doubling;
    for (int i = 0; i < 60; ++i) {
        const std::string next = "/*[[v" + std::to_string(i + 1) + "]]*/";
        doubling.push_back(variable("text", "v" + std::to_string(i), next + next));
    }
    CapturedLog log;
    EXPECT_EQ(placeholders(doubling, "/*[[v0]]*/"), "left as it was");
    EXPECT_EQ(log.take(), "A compiled style was too large.\n");
}

TEST(Substitution, declaresCustomPropertiesAndWritesOnlyTheCompiledCode) {
    styleContainer declared = styleWith({range("b", "4"), select("2")}, "x/*[[b]]*/");
    compileCustomProperties(declared);
    EXPECT_EQ(declared.styleData.sections[0].compiledcode,
              ":root {\n\t--b: 4px;\n\t--s: ;\n}\nx/*[[b]]*/");
    declared.userVariables.emplace();
    compileCustomProperties(declared);
    EXPECT_EQ(declared.styleData.sections[0].compiledcode, "x/*[[b]]*/");

    for (auto* compile : {&compilePlaceholders, &compileCustomProperties}) {
        styleContainer style = styleWith({range("a", "1")}, "/*[[a]]*/");
        const styleContainer before = style;
        style.styleData.compSections.emplace();
        compile(style);
        for (styleSection& section : style.styleData.sections) {
            EXPECT_TRUE(section.compiledcode);
            section.compiledcode.reset();
        }
        EXPECT_EQ(style, before);
    }
}

} // namespace
} // namespace tessaril
