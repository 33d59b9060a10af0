#include "desktop/javascript_core_vm.h"

#include "desktop/javascript_core_text.h"

#include <QString>

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <fstream>

// Exported by the library, declared in none of its installed headers. The limit counts processor
// time of the evaluating thread; the callback says whether to stop. After a no the engine asks
// again only when the limit is set anew.
extern "C" {
using JSShouldTerminateCallback = bool (*)(JSContextRef context, void* data);
void JSContextGroupSetExecutionTimeLimit(JSContextGroupRef group, double seconds,
                                         JSShouldTerminateCallback callback, void* data);
void JSSynchronousGarbageCollectForDebugging(JSContextRef context);
}

namespace tessaril {

namespace {

/// Less and Stylus; a third list of scripts pushes out the oldest spare.
constexpr std::size_t mostSpares = 2;
/// The engine alone lets a long series of compilations grow to several times this.
constexpr int compilationsPerCollection = 50;

/// How often a running script is looked at.
constexpr std::chrono::nanoseconds watchInterval = std::chrono::milliseconds(200);
/// How much, roughly, the process may grow while a compilation runs: a few lines of a style can ask
/// for more memory than any machine has, long before their time is over.
constexpr std::size_t memoryLimit = std::size_t{1} << 30;

/// Bytes of memory that the process holds.
std::size_t residentMemory() {
    std::size_t total = 0;
    std::size_t resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

/// Bytes of fresh memory that this thread has been given since it began, in small pages. Tells a
/// compilation that grows from one that runs beside it.
std::size_t touchedMemory() {
    rusage usage{};
    getrusage(RUSAGE_THREAD, &usage);
    return static_cast<std::size_t>(usage.ru_minflt) *
           static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

std::chrono::nanoseconds threadTime() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
}

std::optional<std::string> propertyText(JSContextRef context, JSObjectRef object,
                                        std::string_view name) {
    const EngineString key(name);
    if (!JSObjectHasProperty(context, object, key)) return std::nullopt;
    const JSValueRef value = JSObjectGetProperty(context, object, key, nullptr);
    if (value == nullptr || JSValueIsUndefined(context, value) || JSValueIsNull(context, value))
        return std::nullopt;
    const EngineString text(JSValueToStringCopy(context, value, nullptr));
    if (!text) return std::nullopt;
    return text.utf8();
}

} // namespace

std::string scriptStoppedText(std::chrono::milliseconds timeLimit) {
    const std::string seconds =
        QString::number(std::chrono::duration<double>(timeLimit).count()).toStdString();
    return "The compiler was stopped: it had not finished after " + seconds + " seconds.";
}

JavaScriptCoreVM::JavaScriptCoreVM(Milliseconds compilationLimit)
    : timeLimit(compilationLimit), group(JSContextGroupCreate()) {}

JavaScriptCoreVM::~JavaScriptCoreVM() {
    if (current.context != nullptr) JSGlobalContextRelease(current.context);
    for (const preparedContext& spare : spares)
        JSGlobalContextRelease(spare.context);
    JSContextGroupRelease(group);
}

scriptOutcome JavaScriptCoreVM::begin(std::span<const scriptSource> scripts) {
    const auto spare = std::ranges::find_if(spares, [&](const preparedContext& candidate) {
        return std::ranges::equal(candidate.scripts, scripts);
    });
    if (spare != spares.end()) {
        current = std::move(*spare);
        spares.erase(spare);
    } else {
        current = prepare({scripts.begin(), scripts.end()});
    }
    startCompilation();
    return std::exchange(current.loading, {});
}

scriptOutcome JavaScriptCoreVM::evaluate(std::string_view script) {
    return evaluateIn(current.context, script, nullptr);
}

void JavaScriptCoreVM::setGlobal(std::string_view name, std::string_view value) {
    const EngineString text(value);
    const EngineString key(name);
    withinLimit([&] {
        JSObjectSetProperty(current.context, JSContextGetGlobalObject(current.context), key,
                            JSValueMakeString(current.context, text), kJSPropertyAttributeNone,
                            nullptr);
    });
}

scriptOutcome JavaScriptCoreVM::global(std::string_view name) {
    scriptOutcome outcome;
    JSValueRef exception = nullptr;
    const bool inTime = withinLimit([&] {
        const EngineString key(name);
        const JSObjectRef globals = JSContextGetGlobalObject(current.context);
        if (!JSObjectHasProperty(current.context, globals, key)) return;
        const JSValueRef value = JSObjectGetProperty(current.context, globals, key, &exception);
        if (exception == nullptr) outcome.value = textOf(current.context, value, &exception);
    });
    if (!inTime) return stoppedOutcome();
    if (exception != nullptr) addException(outcome, current.context, exception);
    return outcome;
}

void JavaScriptCoreVM::end() {
    JSGlobalContextRelease(current.context);
    ++endedSinceCollection;
    if (endedSinceCollection >= compilationsPerCollection || !stopText.empty()) collectGarbage();

    preparedContext next = prepare(std::move(current.scripts));
    current = {};
    if (spares.size() == mostSpares) {
        JSGlobalContextRelease(spares.front().context);
        spares.erase(spares.begin());
    }
    spares.push_back(std::move(next));
}

void JavaScriptCoreVM::collectGarbage() {
    if (endedSinceCollection == 0) return;
    endedSinceCollection = 0;
    const JSGlobalContextRef context = JSGlobalContextCreateInGroup(group, nullptr);
    JSSynchronousGarbageCollectForDebugging(context);
    JSGlobalContextRelease(context);
}

scriptOutcome JavaScriptCoreVM::stoppedOutcome() {
    if (std::exchange(stopReported, true)) return {};
    return {std::nullopt, {stopText}};
}

void JavaScriptCoreVM::startCompilation() {
    timeLeft = timeLimit;
    memoryAtStart = residentMemory();
    touchedAtStart = touchedMemory();
    stopText.clear();
    stopReported = false;
}

JavaScriptCoreVM::preparedContext JavaScriptCoreVM::prepare(std::vector<scriptSource> scripts) {
    preparedContext prepared{JSGlobalContextCreateInGroup(group, nullptr), std::move(scripts), {}};
    startCompilation();
    for (const scriptSource& script : prepared.scripts) {
        auto outcome = evaluateIn(prepared.context, script.text, &script.address);
        std::ranges::move(outcome.exceptions, std::back_inserter(prepared.loading.exceptions));
    }
    return prepared;
}

scriptOutcome JavaScriptCoreVM::evaluateIn(JSGlobalContextRef context, std::string_view script,
                                           const std::string* address) {
    const EngineString text(script);
    const EngineString source(address == nullptr ? std::string_view() : *address);
    scriptOutcome outcome;
    JSValueRef exception = nullptr;
    // Reading the value as text belongs to the limit too: it may run the script's own code.
    const bool inTime = withinLimit([&] {
        const JSValueRef value =
            JSEvaluateScript(context, text, nullptr,
                             address == nullptr ? nullptr : JSStringRef(source), 1, &exception);
        if (exception == nullptr) outcome.value = textOf(context, value, &exception);
    });
    if (!inTime) return stoppedOutcome();
    if (exception != nullptr) addException(outcome, context, exception);
    return outcome;
}

void JavaScriptCoreVM::addException(scriptOutcome& outcome, JSGlobalContextRef context,
                                    JSValueRef exception) {
    std::string text;
    const bool inTime = withinLimit([&] { text = describe(context, exception); });
    if (!inTime) return void(outcome = stoppedOutcome());
    outcome.exceptions.push_back(std::move(text));
}

std::optional<std::string> JavaScriptCoreVM::textOf(JSContextRef context, JSValueRef value,
                                                    JSValueRef* exception) const {
    const EngineString text(JSValueToStringCopy(context, value, exception));
    if (!text) return std::nullopt;
    return text.utf8();
}

std::string JavaScriptCoreVM::describe(JSContextRef context, JSValueRef exception) const {
    const auto text = textOf(context, exception, nullptr);
    const bool saysSomething = text && !text->empty() && *text != "[object Object]";
    if (saysSomething || !JSValueIsObject(context, exception)) return text.value_or("");

    // A plain object thrown as an error: what the user can act on is in its fields.
    const JSObjectRef object = JSValueToObject(context, exception, nullptr);
    std::string description = propertyText(context, object, "message").value_or("Unknown error");
    if (const auto line = propertyText(context, object, "line")) description += ", line " + *line;
    if (const auto column = propertyText(context, object, "column"))
        description += ", column " + *column;
    return description;
}

template <class Call>
bool JavaScriptCoreVM::withinLimit(Call call) {
    if (!stopText.empty()) return false;

    callStart = threadTime();
    watch();
    call();
    timeLeft -= threadTime() - callStart;
    // Not by the exception: a stopped promise reaction throws nothing.
    return stopText.empty();
}

void JavaScriptCoreVM::watch() {
    const auto left = std::max(timeLeft - (threadTime() - callStart), std::chrono::nanoseconds(1));
    const std::chrono::duration<double> slice = std::min(left, watchInterval);
    const auto callback = [](JSContextRef, void* vm) {
        return static_cast<JavaScriptCoreVM*>(vm)->mustStop();
    };
    JSContextGroupSetExecutionTimeLimit(group, slice.count(), callback, this);
}

bool JavaScriptCoreVM::growsTooLarge() const {
    return residentMemory() > memoryAtStart + memoryLimit &&
           touchedMemory() > touchedAtStart + memoryLimit / 2;
}

bool JavaScriptCoreVM::mustStop() {
    if (threadTime() - callStart >= timeLeft)
        stopText = scriptStoppedText(timeLimit);
    else if (growsTooLarge())
        stopText = scriptTooLargeText;
    else
        watch();
    return !stopText.empty();
}

} // namespace tessaril
