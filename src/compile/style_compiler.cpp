#include "compile/style_compiler.h"

#include "compile/substitution.h"
#include "compile/variable_text.h"
#include "formats/moz_document.h"
#include "formats/user_css_reader.h"
#include "model/log.h"
#include "model/text.h"

#include <array>
#include <utility>
#include <vector>

namespace tessaril {

namespace {

constexpr std::string_view sassTitle = "Incompatible Preprocessor";
constexpr std::string_view sassText =
    "Styles that require the Sass preprocessor are not currently supported. You may install the "
    "style anyway, but some or all of the style may not function correctly.";

constexpr std::string_view lessHeader = "A Less compilation error occurred.";
constexpr std::string_view undefined = "undefined"; // the text of the value undefined

using ErrorHandler = ScriptEngine::ExceptionHandler;

/// Less takes the option against plugins into no file that a style imports, and a plugin is a
/// stranger's script.
constexpr std::string_view refusePlugins = R"(
less.PluginLoader = class {
    loadPlugin(file) {
        return Promise.reject({message: `@plugin is not allowed: ${file}`});
    }
    loadPluginSync(file) {
        return {error: {message: `@plugin is not allowed: ${file}`}};
    }
};
)";

constexpr std::string_view renderLess =
    "less.render(str).then(result => {compiled = result.css;}, err => {errorMsg = err;});";

std::optional<std::string> runLess(ScriptContext& context, const ErrorHandler& showError,
                                   const ImportLookup& lookUp, std::vector<std::string>& missing) {
    context.evaluate(refusePlugins);
    context.evaluate(renderLess);
    importOutcome imports = deliverImports(context, lookUp);
    auto compiled = context.global("compiled");
    const auto error = context.global("errorMsg");
    if (error && *error != undefined) showError(withAllRefused(*error, imports.refused));
    missing = std::move(imports.missing);
    return compiled;
}

/// The errors of Stylus are exceptions. It has no imports.
std::optional<std::string> runStylus(ScriptContext& context, const ErrorHandler&,
                                     const ImportLookup&, std::vector<std::string>&) {
    context.evaluate("renderer = new StylusRenderer(str);");
    return context.evaluate("renderer.render();");
}

/// Everything in which Less and Stylus differ.
struct compilerDialect {
    std::string_view script;
    std::string_view missing; ///< logged when a script can't be loaded
    std::string_view catchError;
    std::string_view declarationStart;
    std::string_view declarationMiddle;
    std::optional<std::string_view> errorHeader;
    std::optional<std::string> (*run)(ScriptContext& context, const ErrorHandler& showError,
                                      const ImportLookup& lookUp,
                                      std::vector<std::string>& missing);
};

constexpr compilerDialect less{
    "less.min.js",
    "Unable to load Less.",
    "function catchError(err){if (err) throw err; }",
    "@",
    ": ",
    lessHeader,
    runLess,
};

constexpr compilerDialect stylus{
    "stylus-renderer.min.js",
    "Unable to load Stylus.",
    "function catchError(err, css){if (err) throw err; console.log(css); }",
    "",
    " = ",
    std::nullopt,
    runStylus,
};

std::string sourceFor(const styleContainer& style, const compilerDialect& dialect) {
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

compilerError errorFor(const styleContainer& style, const compilerDialect& dialect,
                       std::string_view text) {
    // From there on it is the compiler's own stack, of no use to the user.
    text = text.substr(0, text.find("Error.captureStackTrace"));
    std::optional<std::string> header;
    if (dialect.errorHeader) header = *dialect.errorHeader;
    return {"Compiler Error (" + style.styleData.name + ")", header, std::string(text)};
}

/// What a compilation finds beside its result.
struct foundInCompiling {
    std::vector<compilerError> errors;
    std::vector<std::string> missing; ///< addresses of imported files
};

/// What the compiler makes of `style`; nothing when it gives no text.
std::optional<std::string> compiledText(const styleContainer& style, const compilerDialect& dialect,
                                        ScriptEngine& engine, const Resources& resources,
                                        const ImportLookup& lookUp, foundInCompiling& found) {
    auto compiler = resources.script(dialect.script);
    auto encoding = resources.script("encoding.min.js");
    if (!compiler || !encoding) {
        logLine(dialect.missing);
        return std::nullopt;
    }
    const ErrorHandler showError = [&](const std::string& text) {
        found.errors.push_back(errorFor(style, dialect, text));
    };
    const std::array scripts{std::move(*encoding), std::move(*compiler)};
    const auto context = engine.makeContext(scripts, showError);
    context->evaluate(dialect.catchError);
    context->setGlobal("str", sourceFor(style, dialect));
    auto text = dialect.run(*context, showError, lookUp, found.missing);
    if (text && trimmed(*text) == undefined) return std::nullopt;
    return text;
}

void storeCompiled(styleContainer& style, const std::optional<std::string>& compiled) {
    if (!compiled) return;
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
    if (const auto tellErrors = compileQuietly(style)) tellErrors();
}

std::function<void()> StyleCompiler::compileQuietly(styleContainer& style) {
    return compileWithImports(style, [](const std::string&) { return std::nullopt; }).tellErrors;
}

quietCompilation StyleCompiler::compileWithImports(styleContainer& style,
                                                   const ImportLookup& lookUp) {
    if (!style.userVariables) return {};

    const std::string preprocessor = lowercasedASCII(style.preprocessor);
    if (preprocessor == "sass") return {[this] { alerts.showAlert(sassTitle, sassText); }, {}};
    if (preprocessor.empty() || preprocessor == "uso") compilePlaceholders(style);
    if (preprocessor == "default") compileCustomProperties(style);

    const compilerDialect* dialect = nullptr;
    if (preprocessor == "less") dialect = &less;
    if (preprocessor == "stylus") dialect = &stylus;
    if (dialect == nullptr) return {};
    foundInCompiling found;
    const auto text = compiledText(style, *dialect, engine, resources, lookUp, found);
    storeCompiled(style, text);
    if (text && found.errors.empty()) return {{}, std::move(found.missing)};
    const auto tellErrors = [this, told = std::move(found.errors)] {
        for (const compilerError& error : told)
            errors.show(error);
    };
    return {tellErrors, std::move(found.missing)};
}

} // namespace tessaril
