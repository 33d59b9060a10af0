#pragma once

#include "compile/style_compiler.h"
#include "less_imports/imported_files.h"
#include "model/style_making.h"
#include "platform/dispatcher.h"

#include <functional>
#include <stop_token>

namespace tessaril {

/// Whether what the style imports may come from the user's own network; see below.
bool mayImportFromOwnNetwork(const styleContainer& style);

/// Has a style whose text came from elsewhere, by its own address or by a redirect, be updated from
/// there, so that the text cannot make it one that may.
/// - asked, given: the addresses before and after redirects
void keepFromOwnNetwork(styleContainer& style, const std::string& asked, const std::string& given);

/// Compiles styles, for Less with the files that it imports by their addresses. The compiler itself
/// reads only what is kept or was loaded before; it is run again when there is more.
///
/// Styles are strangers' texts, and what they import becomes part of pages. So their imports reach
/// hosts on the public internet only. A style that was downloaded from an address without a public
/// name (`downloadedFrom`), as on a developer's machine, came from the user's own network and may
/// import from there, unless its `updateURL` leads elsewhere. What such a style imports, directly
/// or not, is trusted as it is; so is the address that an imported database gives.
///
/// Safe to use from any thread.
class ImportingCompiler {
public:
    /// All outlive it.
    ImportingCompiler(StyleCompiler& compiler, ImportedFiles& files, Dispatcher& dispatcher);

    /// A `QuietCompile` that first loads what is not kept. Waits for the network: background tasks
    /// only.
    [[nodiscard]] std::function<void()> compileLoading(styleContainer& style);

    /// The same, but all files are loaded anew, each once, however often it is called; one that
    /// cannot be had now is the one that was kept. For one style, on one thread.
    [[nodiscard]] QuietCompile refreshing();

    struct keptCompilation {
        std::function<void()> tellErrors;
        bool hasMoreToLoad = false; ///< whether files are missing that could be loaded
    };

    /// Compiles with what is kept, and never waits for the network.
    [[nodiscard]] keptCompilation compileFromKept(styleContainer& style);

    /// Loads what the style imports and is not kept. Waits for the network.
    void loadImports(styleContainer style);

    /// Ends what is being loaded, and loads nothing more; for quitting.
    void stop() { stopping.request_stop(); }
    bool isStopping() const { return stopping.stop_requested(); }

private:
    class Run;
    std::function<void()> compileWith(Run& run, styleContainer& style);

    StyleCompiler& compiler;
    ImportedFiles& files;
    Dispatcher& dispatcher;
    std::stop_source stopping;
};

} // namespace tessaril
