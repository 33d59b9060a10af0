#include "less_imports/saving_compiler.h"

#include <utility>

namespace tessaril {

SavingCompiler::SavingCompiler(ImportingCompiler& importing, StyleStore& styleStore,
                               Dispatcher& taskDispatcher)
    : compiler(importing), store(styleStore), dispatcher(taskDispatcher) {}

std::function<void()> SavingCompiler::compile(styleContainer& style) {
    auto result = compiler.compileFromKept(style);
    if (!result.hasMoreToLoad) return std::move(result.tellErrors);
    return [this, id = style.uniqueID] { loadLater(id); };
}

void SavingCompiler::loadLater(std::int64_t id) {
    {
        const std::lock_guard lock(mutex);
        if (!awaiting.insert(id).second) return;
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
    if (!compiler.isStopping()) store.recompileStyle(id);
}

} // namespace tessaril
