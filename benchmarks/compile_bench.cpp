#include "compile/style_compiler.h"
#include "desktop/directory_resources.h"
#include "desktop/javascript_core_engine.h"
#include "quiet_machine.h"
#include "silenced_output.h"

#include <benchmark/benchmark.h>

#include <array>

// What a compilation costs beyond the compiler's own work. The reference is the same compilation in
// a context that has the scripts loaded when the clock starts; since a context serves one
// compilation, making it is left out of the time.
namespace tessaril {

namespace {

class CountedErrors : public CompilerErrors {
public:
    void show(compilerError) override { ++count; }

    int count = 0;
};

struct dialect {
    std::string_view preprocessor;
    std::string_view script;
    std::string_view rule; ///< of the small style
    std::string_view declaration;
    std::vector<std::string_view> statements; ///< of one compilation; the last gives the text
};

const dialect less{
    "less",
    "less.min.js",
    "a {\n  .b { width: @width + 5; color: darken(#f80, 10%); }\n}\n",
    "@width: 10px;\n\n",
    {"less.render(str).then(result => {compiled = result.css;}, err => {errorMsg = err;});",
     "compiled"},
};

const dialect stylus{
    "stylus",
    "stylus-renderer.min.js",
    "a {\n  .b {\n    width: width + 5; color: darken(#f80, 10%);\n  }\n}\n",
    "width = 10px;\n\n",
    {"renderer = new StylusRenderer(str);", "renderer.render();"},
};

std::string code(const dialect& used) {
    std::string text;
    for (int i = 0; i < 5; ++i)
        text += used.rule;
    return text;
}

void figure(benchmark::State& state, const dialect& used) {
    JavaScriptCoreEngine engine;
    const DirectoryResources resources(TESSARIL_RESOURCES);
    bench::NoAlerts alerts;
    CountedErrors errors;
    StyleCompiler compiler(engine, resources, alerts, errors);
    styleContainer style;
    style.preprocessor = used.preprocessor;
    style.userVariables.emplace().resize(1);
    style.userVariables->front().name = "width";
    style.userVariables->front().currentValue = "10px";
    style.styleData.sections.resize(1);
    style.styleData.sections.front().code = code(used);

    const bench::SilencedOutput silence;
    compiler.compileStyle(style); // the first, which parses the scripts
    for (auto _ : state)
        compiler.compileStyle(style);
    if (errors.count != 0 || !style.styleData.compSections)
        state.SkipWithError("the style does not compile");
}

void reference(benchmark::State& state, const dialect& used) {
    JavaScriptCoreEngine engine;
    const DirectoryResources resources(TESSARIL_RESOURCES);
    const std::array scripts{*resources.script("encoding.min.js"), *resources.script(used.script)};
    const std::string text = std::string(used.declaration) + code(used);
    std::string error;
    const auto loaded = [&] {
        return engine.makeContext(scripts, [&error](const std::string& e) { error = e; });
    };
    const auto compile = [&](ScriptContext& context) {
        context.setGlobal("str", text);
        for (const std::string_view statement : used.statements)
            benchmark::DoNotOptimize(context.evaluate(statement));
    };

    compile(*loaded());
    for (auto _ : state) {
        state.PauseTiming();
        auto context = loaded();
        state.ResumeTiming();
        compile(*context);
        state.PauseTiming();
        context.reset();
        state.ResumeTiming();
    }
    if (!error.empty()) state.SkipWithError(error.c_str());
}

BENCHMARK_CAPTURE(figure, less, less)
    ->Name("compileLess/figure")
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(reference, less, less)
    ->Name("compileLess/reference")
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(figure, stylus, stylus)
    ->Name("compileStylus/figure")
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(reference, stylus, stylus)
    ->Name("compileStylus/reference")
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

} // namespace

} // namespace tessaril
