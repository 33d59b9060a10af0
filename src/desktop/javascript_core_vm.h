#pragma once

#include "platform/script_engine.h"

#include <JavaScriptCore/JavaScript.h>

#include <chrono>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tessaril {

/// What came of running a script.
struct scriptOutcome {
    std::optional<std::string> value;    ///< the value as text, where there is one
    std::vector<std::string> exceptions; ///< the texts of uncaught exceptions, in order
};

/// The exception text of a compilation that was stopped after `timeLimit`.
std::string scriptStoppedText(std::chrono::milliseconds timeLimit);

/// The exception text of a compilation that was stopped for the memory that it took.
inline constexpr std::string_view scriptTooLargeText =
    "The compiler was stopped: it used too much memory.";

/// One virtual machine of JavaScriptCore, used from one thread only. It serves one compilation
/// after another, each in a global context of its own; what outlives a context is the bytecode of
/// the scripts, which is why loading them again takes a tenth of the first time.
class JavaScriptCoreVM {
public:
    using Milliseconds = std::chrono::milliseconds;

    /// `timeLimit` is the processor time that one compilation gets, over all its evaluations.
    explicit JavaScriptCoreVM(Milliseconds timeLimit);
    JavaScriptCoreVM(const JavaScriptCoreVM&) = delete;
    JavaScriptCoreVM& operator=(const JavaScriptCoreVM&) = delete;
    ~JavaScriptCoreVM();

    /// Starts a compilation in a context that nobody has used, in which `scripts` have been
    /// evaluated. The outcome has their exceptions and no value.
    scriptOutcome begin(std::span<const scriptSource> scripts);

    /// Between begin() and end(). See ScriptContext.
    scriptOutcome evaluate(std::string_view script);
    void setGlobal(std::string_view name, std::string_view value);
    scriptOutcome global(std::string_view name);

    /// Ends the compilation: drops its context and prepares one like it for the next.
    void end();

    /// Gives back the memory of ended compilations, if there were any since the last time.
    void collectGarbage();

private:
    /// A context with its scripts evaluated.
    struct preparedContext {
        JSGlobalContextRef context = nullptr;
        std::vector<scriptSource> scripts;
        scriptOutcome loading;
    };

    preparedContext prepare(std::vector<scriptSource> scripts);
    scriptOutcome evaluateIn(JSGlobalContextRef context, std::string_view script,
                             const std::string* address);
    void addException(scriptOutcome& outcome, JSGlobalContextRef context, JSValueRef exception);
    std::optional<std::string> textOf(JSContextRef context, JSValueRef value,
                                      JSValueRef* exception) const;
    std::string describe(JSContextRef context, JSValueRef exception) const;
    scriptOutcome stoppedOutcome();

    /// Calls into the engine within what the compilation has left of time and memory; false when
    /// either ran out.
    template <class Call>
    bool withinLimit(Call call);
    void watch();
    bool mustStop();
    bool growsTooLarge() const;
    void startCompilation();

    Milliseconds timeLimit;
    std::chrono::nanoseconds timeLeft{};
    std::chrono::nanoseconds callStart{}; ///< the thread's time when the running call began
    std::size_t memoryAtStart = 0;        ///< of the process, in bytes
    std::size_t touchedAtStart = 0;       ///< by this thread, in bytes
    std::string stopText;      ///< why the compilation was stopped; empty while it was not
    bool stopReported = false; ///< one exception for a compilation, not one for each later call
    JSContextGroupRef group;
    preparedContext current;
    std::vector<preparedContext> spares; ///< at most one for each list of scripts
    int endedSinceCollection = 0;
};

} // namespace tessaril
