#include "bench_folder.h"
#include "compile/style_compiler.h"
#include "desktop/directory_resources.h"
#include "desktop/folder_message_channel.h"
#include "desktop/javascript_core_engine.h"
#include "desktop/posix_file_system.h"
#include "model/database_json.h"
#include "quiet_machine.h"
#include "sample_code.h"
#include "silenced_output.h"
#include "store/style_store.h"
#include "style_editor/editor_saves.h"

#include <benchmark/benchmark.h>

// What a Style Editor's save takes until 200 KB of Less are compiled and stored. The reference is
// the compilation and the durable write of the same document alone.
namespace {

using namespace tessaril;

class NoErrors : public CompilerErrors {
    void show(compilerError) override { std::abort(); }
};

/// Carries every task out at once, so that all of a save is measured.
class AtOnce : public Dispatcher {
    void onMain(Task task) override { task(); }
    void onMainAfter(std::chrono::milliseconds, Task) override {}
    void inBackground(taskPriority, Task task) override { task(); }
};

styleContainer sampleStyle() {
    styleContainer style;
    style.styleData.name = "Sample";
    style.source = sourceCustom;
    style.preprocessor = "less";
    style.uniqueID = 1;
    style.userVariables.emplace();
    style.styleData.sections = {
        {.code = bench::sampleCode(
             ".panel {\n\t> a:hover { color: darken(#452a00, 10%); }\n\twidth: (7px + 2);\n}\n")}};
    return style;
}

struct Compiled {
    bench::NoAlerts alerts;
    NoErrors errors;
    JavaScriptCoreEngine engine;
    DirectoryResources resources{TESSARIL_RESOURCES};
    StyleCompiler compiler{engine, resources, alerts, errors};
};

void saveStyle(benchmark::State& state) {
    const bench::Folder folder;
    Compiled machine;
    PosixFileSystem files;
    FolderMessageChannel channel(files, folder.path);
    AtOnce dispatcher;
    NotificationCenter center;
    bench::NoPreferences stored;
    Preferences preferences(stored);
    StyleStore store({.files = files,
                      .channel = channel,
                      .alerts = machine.alerts,
                      .dispatcher = dispatcher,
                      .center = center,
                      .preferences = preferences,
                      .compileStyle =
                          [&](styleContainer& style) {
                              machine.compiler.compileStyle(style);
                              return [] {};
                          }},
                     folder.path);
    StyleDrafts drafts(files, folder.path);
    EditorSaves saves(store, drafts, center, dispatcher);
    const styleContainer style = sampleStyle();
    store.appendStyle(style);
    const bench::SilencedOutput silence;
    for (auto _ : state) {
        saves.save(style);
        store.finishSaves();
    }
    if (!store.findStyle(1)->styleData.compSections) state.SkipWithError("it does not compile");
}

void compileAndWrite(benchmark::State& state) {
    const bench::Folder folder;
    Compiled machine;
    PosixFileSystem files;
    const styleContainer style = sampleStyle();
    const bench::SilencedOutput silence;
    styleContainer compiled = style;
    machine.compiler.compileStyle(compiled);
    const std::string bytes = *encodeDatabase({.styles = {compiled}});
    const std::string_view piece = bytes;
    for (auto _ : state) {
        styleContainer copy = style;
        machine.compiler.compileStyle(copy);
        if (!files.stage(folder.path, std::span(&piece, 1))->publishAs(folder.path / "document"))
            std::abort();
    }
}

BENCHMARK(saveStyle)
    ->Name("saveStyle/figure")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(5);
BENCHMARK(compileAndWrite)
    ->Name("saveStyle/reference")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(5);

} // namespace
