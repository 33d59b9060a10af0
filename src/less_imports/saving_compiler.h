#pragma once

#include "less_imports/importing_compiler.h"
#include "platform/dispatcher.h"
#include "store/style_store.h"

#include <cstdint>
#include <functional>
#include <mutex>
#include <set>

namespace tessaril {

/// Compiles styles that are saved, without having the save wait for what they import: what is not
/// kept yet is loaded once the style is stored, which is then compiled again, as it stands by then.
class SavingCompiler {
public:
    /// All outlive it.
    SavingCompiler(ImportingCompiler& compiler, StyleStore& store, Dispatcher& dispatcher);

    /// A `QuietCompile` that never waits for the network; what it gives is to be called once the
    /// style is stored. Where files have to be loaded first it tells of errors only after that.
    [[nodiscard]] std::function<void()> compile(styleContainer& style);

private:
    void loadLater(std::int64_t id);
    void loadAndCompile(std::int64_t id);

    ImportingCompiler& compiler;
    StyleStore& store;
    Dispatcher& dispatcher;
    std::mutex mutex;                ///< guards what follows
    std::set<std::int64_t> awaiting; ///< styles to be compiled again
};

} // namespace tessaril
