#include "desktop/javascript_core_engine.h"

#include "desktop/javascript_core_vm.h"

#include <pthread.h>

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <functional>
#include <future>
#include <thread>

namespace tessaril {

namespace {

/// Machines kept for later; more than this many compilations at once are rare.
constexpr std::size_t mostIdleMachines = 2;
/// How long a machine rests before it gives back memory.
constexpr std::chrono::seconds restBeforeCollection{1};

} // namespace

/// A virtual machine on its thread, with a queue of jobs.
class JavaScriptCoreEngine::Machine {
public:
    using Job = std::function<void(JavaScriptCoreVM&)>;

    explicit Machine(std::chrono::milliseconds limit)
        : timeLimit(limit), thread([shared = queue, limit] { work(*shared, limit); }) {}

    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    ~Machine() {
        {
            const std::lock_guard lock(queue->mutex);
            queue->closed = true;
        }
        queue->wake.notify_one();
        if (!stuck) {
            thread.join();
            return;
        }
        const sched_param none{};
        pthread_setschedparam(thread.native_handle(), SCHED_IDLE, &none);
        thread.detach();
    }

    void post(Job job) {
        {
            const std::lock_guard lock(queue->mutex);
            queue->jobs.push_back(std::move(job));
        }
        queue->wake.notify_one();
    }

    /// Runs `job` and waits for what it gives; an exception with the stopped text when it does not
    /// come back in time, and nothing from then on. `job` must own all that it uses.
    scriptOutcome ask(std::function<scriptOutcome(JavaScriptCoreVM&)> job) {
        if (stuck) return {};
        auto task =
            std::make_shared<std::packaged_task<scriptOutcome(JavaScriptCoreVM&)>>(std::move(job));
        std::future<scriptOutcome> outcome = task->get_future();
        post([task](JavaScriptCoreVM& vm) { (*task)(vm); });
        stuck = outcome.wait_for(3 * timeLimit) != std::future_status::ready;
        if (stuck) return {std::nullopt, {scriptStoppedText(timeLimit)}};
        return outcome.get();
    }

    bool isStuck() const { return stuck; }

    /// Whether nothing is left to do, the preparation of the next context included.
    bool isReady() const {
        const std::lock_guard lock(queue->mutex);
        return !queue->working && queue->jobs.empty();
    }

private:
    /// What the thread needs; it may outlive the machine.
    struct jobQueue {
        std::mutex mutex;
        std::condition_variable wake;
        std::deque<Job> jobs;
        bool working = false;
        bool closed = false;
    };

    static void work(jobQueue& queue, std::chrono::milliseconds limit) {
        JavaScriptCoreVM vm(limit);
        std::unique_lock lock(queue.mutex);
        const auto hasWork = [&queue] { return queue.closed || !queue.jobs.empty(); };
        while (true) {
            if (!queue.wake.wait_for(lock, restBeforeCollection, hasWork)) {
                lock.unlock();
                vm.collectGarbage();
                lock.lock();
                queue.wake.wait(lock, hasWork);
            }
            if (queue.closed) return;
            const Job job = std::move(queue.jobs.front());
            queue.jobs.pop_front();
            queue.working = true;
            lock.unlock();
            job(vm);
            lock.lock();
            queue.working = false;
        }
    }

    std::chrono::milliseconds timeLimit;
    std::shared_ptr<jobQueue> queue = std::make_shared<jobQueue>();
    bool stuck = false;
    std::thread thread; // last: it uses what stands before it
};

class JavaScriptCoreEngine::Context : public ScriptContext {
public:
    Context(JavaScriptCoreEngine& owner, std::unique_ptr<Machine> used, ExceptionHandler handler)
        : engine(owner), machine(std::move(used)), onException(std::move(handler)) {}

    ~Context() override {
        if (machine->isStuck()) return;
        machine->post([](JavaScriptCoreVM& vm) { vm.end(); });
        engine.giveBack(std::move(machine));
    }

    void load(std::span<const scriptSource> scripts) {
        report(machine->ask([copy = std::vector(scripts.begin(), scripts.end())](
                                JavaScriptCoreVM& vm) { return vm.begin(copy); }));
    }

    std::optional<std::string> evaluate(std::string_view script) override {
        return report(machine->ask(
            [text = std::string(script)](JavaScriptCoreVM& vm) { return vm.evaluate(text); }));
    }

    void setGlobal(std::string_view name, std::string_view value) override {
        if (machine->isStuck()) return;
        machine->post([key = std::string(name), text = std::string(value)](JavaScriptCoreVM& vm) {
            vm.setGlobal(key, text);
        });
    }

    std::optional<std::string> global(std::string_view name) override {
        return report(machine->ask(
            [key = std::string(name)](JavaScriptCoreVM& vm) { return vm.global(key); }));
    }

private:
    std::optional<std::string> report(scriptOutcome outcome) {
        for (const std::string& exception : outcome.exceptions)
            onException(exception);
        return std::move(outcome.value);
    }

    JavaScriptCoreEngine& engine;
    std::unique_ptr<Machine> machine;
    ExceptionHandler onException;
};

JavaScriptCoreEngine::JavaScriptCoreEngine(std::chrono::milliseconds compilationLimit)
    : timeLimit(compilationLimit) {}

JavaScriptCoreEngine::~JavaScriptCoreEngine() = default;

std::unique_ptr<ScriptContext>
JavaScriptCoreEngine::makeContext(std::span<const scriptSource> scripts,
                                  ExceptionHandler onException) {
    auto context = std::make_unique<Context>(*this, takeMachine(), std::move(onException));
    context->load(scripts);
    return context;
}

std::unique_ptr<JavaScriptCoreEngine::Machine> JavaScriptCoreEngine::takeMachine() {
    {
        // One that still prepares its next context is taken only when there are no more to be made:
        // with two, one prepares while the other compiles.
        const std::lock_guard lock(mutex);
        auto chosen = std::ranges::find_if(idle, [](const auto& m) { return m->isReady(); });
        if (chosen == idle.end() && idle.size() == mostIdleMachines) chosen = idle.begin();
        if (chosen != idle.end()) {
            auto machine = std::move(*chosen);
            idle.erase(chosen);
            return machine;
        }
    }
    return std::make_unique<Machine>(timeLimit);
}

void JavaScriptCoreEngine::giveBack(std::unique_ptr<Machine> machine) {
    const std::lock_guard lock(mutex);
    if (idle.size() < mostIdleMachines) idle.push_back(std::move(machine));
}

} // namespace tessaril
