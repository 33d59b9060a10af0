#include "less_imports/saving_compiler.h"

#include "model/text.h"

#include <string>
#include <utility>

namespace tessaril {

namespace {

constexpr const char* markExtension = ".unfinished";

} // namespace

SavingCompiler::SavingCompiler(ImportingCompiler& importing, StyleStore& styleStore,
                               Dispatcher& taskDispatcher, FileSystem& fileSystem,
                               std::filesystem::path markFolder)
    : compiler(importing)
    , store(styleStore)
    , dispatcher(taskDispatcher)
    , files(fileSystem)
    , folder(std::move(markFolder)) {}

std::function<void()> SavingCompiler::compile(styleContainer& style) {
    auto result = compiler.compileFromKept(style);
    if (!result.hasMoreToLoad) return std::move(result.tellErrors);
    return [this, id = style.uniqueID] { loadLater(id); };
}

void SavingCompiler::resume() {
    if (folder.empty()) return;
    for (const fileEntry& file : files.list(folder))
        if (const auto id = parseInteger(file.path.stem().native()))
            if (file.path == markOf(*id)) loadLater(*id);
}

std::filesystem::path SavingCompiler::markOf(std::int64_t id) const {
    return folder / (std::to_string(id) + markExtension);
}

void SavingCompiler::loadLater(std::int64_t id) {
    {
        const std::lock_guard lock(mutex);
        if (!awaiting.insert(id).second) return;
        if (!folder.empty() && !files.exists(markOf(id))) files.overwrite(markOf(id), "");
    }
    dispatcher.inBackground(taskPriority::background, [this, id] { loadAndCompile(id); });
}

void SavingCompiler::loadAndCompile(std::int64_t id) {
    if (const auto style = store.findStyle(id)) compiler.loadImports(*style);
    {
        // Before the style is read again: one that is stored from here on waits anew.
        const std::lock_guard lock(mutex);
        awaiting.erase(id);
    }
    if (compiler.isStopping()) return;
    store.recompileStyle(id);
    const std::lock_guard lock(mutex);
    if (!awaiting.contains(id) && !folder.empty()) files.remove(markOf(id));
}

} // namespace tessaril
