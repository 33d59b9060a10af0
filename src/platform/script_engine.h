#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tessaril {

/// One global context of the script engine: its own globals, used from one thread at a time.
class ScriptContext {
public:
    virtual ~ScriptContext() = default;

    /// Evaluates `script` and everything that its promises have queued by then. Gives the value of
    /// the evaluation as text, valid UTF-8 in which U+FFFD stands for half a surrogate pair;
    /// nothing when it ended in an uncaught exception, which went to the context's handler.
    virtual std::optional<std::string> evaluate(std::string_view script) = 0;

    /// Sets a global variable to a string of UTF-8 text, U+0000 included.
    virtual void setGlobal(std::string_view name, std::string_view value) = 0;

    /// A global variable as text ("undefined" for the value undefined); nothing when there is no
    /// such global.
    virtual std::optional<std::string> global(std::string_view name) = 0;
};

/// A script that a context has evaluated before its user sees it.
struct scriptSource {
    std::string text;    ///< UTF-8
    std::string address; ///< what the engine names as the source in its messages

    bool operator==(const scriptSource&) const = default;
};

/// Makes contexts. May be called from any thread.
class ScriptEngine {
public:
    /// Receives an uncaught exception as text: the value's own text, or where a plain object was
    /// thrown, its message and position. A script stopped by the time limit arrives here too.
    using ExceptionHandler = std::function<void(const std::string& exception)>;

    virtual ~ScriptEngine() = default;

    /// A context that nobody has used, in which `scripts` have been evaluated in order. Exceptions,
    /// those of the scripts included, go to `onException` on the calling thread. A context is
    /// stopped when its evaluations run too long, alone or together; then that is reported once
    /// and every further evaluation gives nothing.
    /// The engine may prepare ahead for the next call with the same scripts.
    virtual std::unique_ptr<ScriptContext> makeContext(std::span<const scriptSource> scripts,
                                                       ExceptionHandler onException) = 0;
};

} // namespace tessaril
