#include "compile/style_compiler.h"

#include "compile/substitution.h"
#include "compile/variable_text.h"
#include "formats/moz_document.h"
#include "formats/user_css_reader.h"
#include "model/log.h"
#include "model/text.h"

#include <array>

namespace tessaril {

namespace {

constexpr std::string_view sassTitle = "Incompatible Preprocessor";
constexpr std::string_view sassText =
    "Styles that require the Sass preprocessor are not currently supported. You may install the "
    "style anyway, but some or all of the style may not function correctly.";

constexpr std::string_view lessHeader = "A Less compilation error occurred.";
constexpr std::string_view undefined = "undefined"; // the text of the value undefined

/// Everything in which Less and Stylus differ apart from how they are run.
struct compilerDialect {
    std::string_view script;
    std::string_view missing; ///< logged when a script can't be loaded
    std::string_view catchError;
    std::string_view declarationStart;
    std::string_view declarationMiddle;
    std::optional<std::string_view> errorHeader;
};

constexpr compilerDialect less{
    "less.min.js",
    "Unable to load Less.",
    "function catchError(err){if (err) throw err; }",
    "@",
    ": ",
    lessHeader,
};

constexpr compilerDialect stylus{
    "stylus-renderer.min.js",
    "Unable to load Stylus.",
    "function catchError(err, css){if (err) throw err; console.log(css); }",
    "",
    " = ",
    std::nullopt,
};

constexpr std::string_view renderLess =
    "less.render(str).then(result => {compiled = result.css;}, err => {errorMsg = err;});";

/// One compilation by a script: its context and the style that it serves.
class ScriptCompilation {
public:
    ScriptCompilation(const styleContainer& compiledStyle, const compilerDialect& usedDialect,
                      CompilerErrors& compilerErrors)
        : style(compiledStyle), dialect(usedDialect), errors(compilerErrors) {}

    /// Whether the compiler's scripts could be loaded.
    bool start(ScriptEngine& engine, const Resources& resources) {
        auto compiler = resources.script(dialect.script);
        auto encoding = resources.script("encoding.min.js");
        if (!compiler || !encoding) {
            logLine(dialect.missing);
            return false;
        }
        const std::array scripts{std::move(*encoding), std::move(*compiler)};
        context = engine.makeContext(scripts, [this](const std::string& text) { showError(text); });
        context->evaluate(dialect.catchError);
        context->setGlobal("str", source());
        return true;
    }

    /// The compiled text; nothing or "undefined" when there is none.
    std::optional<std::string> runLess() {
        context->evaluate(renderLess);
        auto compiled = context->global("compiled");
        const auto error = context->global("errorMsg");
        if (error && *error != undefined) showError(*error);
        return compiled;
    }

    /// The same for Stylus, whose errors are exceptions.
    std::optional<std::string> runStylus() {
        context->evaluate("renderer = new StylusRenderer(str);");
        return context->evaluate("renderer.render();");
    }

private:
    std::string source() const {
        std::string text;
        for (const userVariable& variable : *style.userVariables) {
            text += dialect.declarationStart;
            text += variable.name;
            text += dialect.declarationMiddle;
            text += variableText(variable, variableReader::compiler);
            text += ";\n";
        }
        return text + "\n" + joinSectionsForPreprocessor(style);
    }

    void showError(std::string_view text) {
        // From there on it is the compiler's own stack, of no use to the user.
        text = text.substr(0, text.find("Error.captureStackTrace"));
        std::optional<std::string> header;
        if (dialect.errorHeader) header = *dialect.errorHeader;
        errors.show({"Compiler Error (" + style.styleData.name + ")", header, std::string(text)});
    }

    const styleContainer& style;
    const compilerDialect& dialect;
    CompilerErrors& errors;
    std::unique_ptr<ScriptContext> context;
};

void storeCompiled(styleContainer& style, const std::optional<std::string>& compiled) {
    if (!compiled || trimmed(*compiled) == undefined) return;
    logLine(*compiled);
    auto read = parseCompiledCSS(*compiled);
    if (!read) {
        logLine("compiled style was nil");
        return;
    }
    style.styleData.compSections = std::move(read->styleData.sections);
}

} // namespace

StyleCompiler::StyleCompiler(ScriptEngine& scriptEngine, const Resources& scriptResources,
                             Alerts& userAlerts, CompilerErrors& compilerErrors)
    : engine(scriptEngine)
    , resources(scriptResources)
    , alerts(userAlerts)
    , errors(compilerErrors) {}

void StyleCompiler::compileStyle(styleContainer& style) {
    if (!style.userVariables) return;

    const std::string preprocessor = lowercasedASCII(style.preprocessor);
    if (preprocessor == "sass") return alerts.showAlert(sassTitle, sassText);
    if (preprocessor.empty() || preprocessor == "uso") return compilePlaceholders(style);
    if (preprocessor == "default") return compileCustomProperties(style);

    if (preprocessor == "less") {
        ScriptCompilation compilation(style, less, errors);
        if (compilation.start(engine, resources)) storeCompiled(style, compilation.runLess());
    } else if (preprocessor == "stylus") {
        ScriptCompilation compilation(style, stylus, errors);
        if (compilation.start(engine, resources)) storeCompiled(style, compilation.runStylus());
    }
}

} // namespace tessaril
