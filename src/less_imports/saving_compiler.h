#pragma once

#include "less_imports/importing_compiler.h"
#include "platform/dispatcher.h"
#include "platform/file_system.h"
#include "store/style_store.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <mutex>
#include <set>

namespace tessaril {

/// Compiles styles that are saved, without having the save wait for what they import: what is not
/// kept yet is loaded once the style is stored, which is then compiled again, as it stands by then.
/// Styles that wait for that are marked by a file each, so that the next start can go on where this
/// run is quit or killed.
class SavingCompiler {
public:
    /// All outlive it.
    /// - folder: exists, for the marks; may hold other files; empty for none
    SavingCompiler(ImportingCompiler& compiler, StyleStore& store, Dispatcher& dispatcher,
                   FileSystem& files, std::filesystem::path folder);

    /// A `QuietCompile` that never waits for the network; what it gives is to be called once the
    /// style is stored. Where files have to be loaded first it tells of errors only after that.
    [[nodiscard]] std::function<void()> compile(styleContainer& style);

    /// Compiles the styles that were waiting when the last run ended. Once, with the styles open.
    void resume();

private:
    std::filesystem::path markOf(std::int64_t id) const;
    void loadLater(std::int64_t id);
    void loadAndCompile(std::int64_t id);

    ImportingCompiler& compiler;
    StyleStore& store;
    Dispatcher& dispatcher;
    FileSystem& files;
    const std::filesystem::path folder;
    std::mutex mutex;                ///< guards what follows
    std::set<std::int64_t> awaiting; ///< styles to be compiled again
};

} // namespace tessaril
