#pragma once

#include "compile/less_imports.h"
#include "model/style_container.h"
#include "platform/alerts.h"
#include "platform/compiler_errors.h"
#include "platform/resources.h"
#include "platform/script_engine.h"

#include <functional>
#include <string>
#include <vector>

namespace tessaril {

struct quietCompilation {
    std::function<void()> tellErrors; ///< shows the user alerts and errors; empty if it compiled
    std::vector<std::string> missing; ///< what Less asked for and the look-up did not have
};

/// Turns a style's code and variables into the CSS that the extension injects. Holds no state
/// between calls; may be called from any thread.
class StyleCompiler {
public:
    StyleCompiler(ScriptEngine& engine, const Resources& resources, Alerts& alerts,
                  CompilerErrors& errors);

    /// Recomputes the compiled output of `style` in place and blocks until it is done. Plain CSS
    /// ("default", "uso" or no preprocessor) writes each section's `compiledcode` and clears
    /// `compSections`; Less and Stylus replace `compSections`, or leave it as it is when they fail.
    /// A style without `userVariables` or of another preprocessor stays as it is, with an alert
    /// where it is "sass". Compiler errors open windows of their own, shown later; a missing script
    /// is a line in the log.
    void compileStyle(styleContainer& style);

    /// A `QuietCompile`. To be called from any thread while this lives.
    [[nodiscard]] std::function<void()> compileQuietly(styleContainer& style);

    /// The same for a style whose Less may import files, which `lookUp` gives; the others have
    /// none. A file that is missing is an error, except where the style says that it need not be
    /// there. To be compiled again, from the style as it was, once there is more to give.
    [[nodiscard]] quietCompilation compileWithImports(styleContainer& style,
                                                      const ImportLookup& lookUp);

private:
    ScriptEngine& engine;
    const Resources& resources;
    Alerts& alerts;
    CompilerErrors& errors;
};

} // namespace tessaril
