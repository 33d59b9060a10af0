#pragma once

#include "platform/script_engine.h"

#include <chrono>
#include <memory>
#include <mutex>
#include <vector>

namespace tessaril {

/// Script contexts of JavaScriptCore.
///
/// Every compilation in progress has a virtual machine with a thread of its own; the caller waits
/// for that thread. Machines are kept and used again, because a new one parses the compiler scripts
/// anew, and after each compilation the machine prepares the next context with the same scripts
/// while nobody waits. A thread of its own also keeps the engine's garbage collection timers out of
/// the main thread's event loop, and lets the caller go on where the engine can't stop a script
/// itself (some regular expressions, promise reactions that queue each other without end): such a
/// machine is given up and runs on at idle priority until it ends.
class JavaScriptCoreEngine : public ScriptEngine {
public:
    /// A compilation is stopped after `timeLimit` of processor time over all its evaluations, and
    /// given up when an evaluation has not returned after three times as long on the clock.
    explicit JavaScriptCoreEngine(std::chrono::milliseconds timeLimit = std::chrono::seconds(10));
    /// All contexts must be gone.
    ~JavaScriptCoreEngine() override;

    std::unique_ptr<ScriptContext> makeContext(std::span<const scriptSource> scripts,
                                               ExceptionHandler onException) override;

private:
    class Machine;
    class Context;

    std::unique_ptr<Machine> takeMachine();
    void giveBack(std::unique_ptr<Machine> machine);

    std::chrono::milliseconds timeLimit;
    std::mutex mutex;
    std::vector<std::unique_ptr<Machine>> idle; ///< in the order in which they came back
};

} // namespace tessaril
