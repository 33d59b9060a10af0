#include "desktop/javascript_core_engine.h"
#include "support/test.h"

#include <thread>

namespace tessaril {
namespace {

using std::chrono_literals::operator""ms;

constexpr auto stoppedText = "The compiler was stopped: it had not finished after 0.3 seconds.";

struct JavaScriptCoreEngineTest : ::testing::Test {
    std::unique_ptr<ScriptContext> context(std::span<const scriptSource> scripts = {}) {
        return engine.makeContext(scripts, [this](const std::string& text) {
            EXPECT_EQ(std::this_thread::get_id(), testThread);
            exceptions.push_back(text);
        });
    }

    /// The exceptions of `script` in a context of its own.
    std::vector<std::string> exceptionsOf(std::string_view script) {
        exceptions.clear();
        EXPECT_EQ(context()->evaluate(script), std::nullopt) << script;
        return exceptions;
    }

    JavaScriptCoreEngine engine{300ms};
    std::vector<std::string> exceptions;
    std::thread::id testThread = std::this_thread::get_id();
};

TEST_F(JavaScriptCoreEngineTest, exchangesTextsThatAreValidUTF8) {
    const auto made = context();
    EXPECT_EQ(made->evaluate("var missing; missing"), "undefined");
    EXPECT_EQ(made->global("missing"), "undefined");
    EXPECT_EQ(made->global("never"), std::nullopt);
    // What promises have queued is done when the evaluation returns.
    made->evaluate("Promise.resolve(1).then(x => x + 1).then(x => { later = x; });");
    EXPECT_EQ(made->global("later"), "2");

    EXPECT_EQ(made->evaluate("half = 'a\\uD83D' + 'b\\uDE00\\uDE00' + '\\uD83D\\uDE00\\uD83D'"),
              "a\uFFFDb\uFFFD\uFFFD\U0001F600\uFFFD");
    EXPECT_EQ(made->global("half"), "a\uFFFDb\uFFFD\uFFFD\U0001F600\uFFFD");
    const std::string odd = "\xEF\xBB\xBF\u00E9\U0001F600" + std::string(1, '\0');
    made->setGlobal("str", odd + "\xFF");
    EXPECT_EQ(made->evaluate("str.length"), "6");
    EXPECT_EQ(made->global("str"), odd + "\uFFFD");
    EXPECT_THAT(exceptions, ElementsAre());
}

TEST_F(JavaScriptCoreEngineTest, reportsExceptionsInWords) {
    for (const auto& [script, words] :
         {std::pair{"throw new TypeError('no')", "TypeError: no"},
          {"throw 'text \\uD800'", "text \uFFFD"},
          {"throw {message: 'bad', line: 3, column: 7}", "bad, line 3, column 7"},
          {"throw {toString() { throw 1 }}", "Unknown error"},
          {"({toString() { throw 'x' }})", "x"}})
        EXPECT_THAT(exceptionsOf(script), ElementsAre(words));
    EXPECT_EQ(exceptionsOf("function f() { f(); } f();").size(), 1u);
    EXPECT_EQ(exceptionsOf("not a script").size(), 1u);
}

TEST_F(JavaScriptCoreEngineTest, usesEveryContextOnce) {
    const std::vector<scriptSource> scripts{{"var count = 1; throw new Error('one')", "file:///1"},
                                            {"count += 1; throw new Error('two')", "file:///2"}};
    for (int i = 0; i < 6; ++i) {
        exceptions.clear();
        const auto made = context(scripts);
        EXPECT_THAT(exceptions, ElementsAre("Error: one", "Error: two"));
        EXPECT_EQ(made->global("left"), std::nullopt);
        EXPECT_EQ(made->evaluate("left = 1; Array.prototype.left = 1; count += 1"), "3");
        EXPECT_EQ(context()->evaluate("typeof count + [].left"), "undefinedundefined");
    }
}

TEST_F(JavaScriptCoreEngineTest, stopsWhatDoesNotEnd) {
    for (const char* endless : {
             "while (true) { try { while (true) {} } catch (e) {} finally {} }",
             "Promise.resolve().then(() => { while (true) {} }); 1",
             "throw {toString() { while (true) {} }}",
             "({toString() { while (true) {} }})",
             "while (true) /(a+)+b/.test('a'.repeat(60))",
             // What the engine can't stop is given up; these end by themselves some time later.
             "var end = Date.now() + 2500;"
             "(function next() { if (Date.now() < end) Promise.resolve().then(next); })()",
             "new RegExp('a*'.repeat(4) + 'b').test('a'.repeat(200))",
         })
        EXPECT_THAT(exceptionsOf(endless), ElementsAre(stoppedText)) << endless;
}

TEST_F(JavaScriptCoreEngineTest, stopsWhatTakesTooMuchMemory) {
    JavaScriptCoreEngine patient(60000ms);
    const auto made =
        patient.makeContext({}, [this](const std::string& e) { exceptions.push_back(e); });
    EXPECT_EQ(made->evaluate("for (var all = [];;) all.push({a: [1, 2, 3], b: 'x' + all.length})"),
              std::nullopt);
    EXPECT_THAT(exceptions, ElementsAre("The compiler was stopped: it used too much memory."));
}

TEST_F(JavaScriptCoreEngineTest, limitsACompilationAsAWholeAndNotTheNext) {
    const char* const third = "var end = Date.now() + 120; while (Date.now() < end) {} 1";
    for (int round = 0; round < 2; ++round) {
        exceptions.clear();
        const auto made = context();
        int steps = 0;
        while (made->evaluate(third) && steps < 1000)
            ++steps;
        EXPECT_TRUE(steps >= 2 && steps < 1000) << steps;
        // A stopped one stays stopped, whatever it is asked, and says so once.
        EXPECT_EQ(made->evaluate("1"), std::nullopt);
        EXPECT_EQ(made->global("end"), std::nullopt);
        EXPECT_THAT(exceptions, ElementsAre(stoppedText));
    }
}

} // namespace
} // namespace tessaril
