#include "desktop/javascript_core_engine.h"
#include "model/text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

namespace tessaril {

namespace {

using std::chrono_literals::operator""ms;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr auto shortLimit = 300ms;
constexpr auto stoppedText = "The compiler was stopped: it had not finished after 0.3 seconds.";

class JavaScriptCoreEngineTest : public ::testing::Test {
protected:
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

    JavaScriptCoreEngine engine{shortLimit};
    std::vector<std::string> exceptions;
    std::thread::id testThread = std::this_thread::get_id();
};

TEST_F(JavaScriptCoreEngineTest, givesValuesAndGlobalsAsText) {
    const auto made = context();
    EXPECT_EQ(made->evaluate("1 + 1"), "2");
    EXPECT_EQ(made->evaluate("var missing; missing"), "undefined");
    EXPECT_EQ(made->global("missing"), "undefined");
    EXPECT_EQ(made->global("never"), std::nullopt);
    EXPECT_EQ(made->evaluate("none = null"), "null");
    EXPECT_EQ(made->global("none"), "null");
    made->setGlobal("str", "\xEF\xBB\xBF\u00E9\U0001F600");
    EXPECT_EQ(made->evaluate("str.length + str"), "4\xEF\xBB\xBF\u00E9\U0001F600");
    // What promises have queued is done when the evaluation returns.
    made->evaluate("Promise.resolve(1).then(x => x + 1).then(x => { later = x; });");
    EXPECT_EQ(made->global("later"), "2");
    EXPECT_THAT(exceptions, IsEmpty());
}

TEST_F(JavaScriptCoreEngineTest, writesValidUTF8Only) {
    const auto made = context();
    EXPECT_EQ(made->evaluate("'a\\uD83D' + 'b\\uDE00\\uDE00' + '\\uD83D\\uDE00\\uD83D'"),
              "a\uFFFDb\uFFFD\uFFFD\U0001F600\uFFFD");
    EXPECT_EQ(made->evaluate("half = 'x'.concat('\\uD800')"), "x\uFFFD");
    EXPECT_EQ(made->global("half"), "x\uFFFD");

    const std::string zero("a\0b", 3);
    made->setGlobal("str", zero);
    EXPECT_EQ(made->evaluate("str.length"), "3");
    EXPECT_EQ(made->global("str"), zero);
    made->setGlobal("str", "a\xFF");
    EXPECT_EQ(made->global("str"), "a\uFFFD");
}

TEST_F(JavaScriptCoreEngineTest, reportsExceptionsInWords) {
    EXPECT_THAT(exceptionsOf("throw new TypeError('no')"), ElementsAre("TypeError: no"));
    EXPECT_THAT(exceptionsOf("throw 'text \\uD800'"), ElementsAre("text \uFFFD"));
    EXPECT_THAT(exceptionsOf("throw {message: 'bad', line: 3, column: 7}"),
                ElementsAre("bad, line 3, column 7"));
    EXPECT_THAT(exceptionsOf("throw {}"), ElementsAre("Unknown error"));
    EXPECT_THAT(exceptionsOf("throw {toString() { throw 1 }, message: 'm'}"), ElementsAre("m"));
    EXPECT_EQ(exceptionsOf("({toString() { throw 'x' }})"), std::vector<std::string>{"x"});
    EXPECT_EQ(exceptionsOf("function f() { f(); } f();").size(), 1u);
    EXPECT_EQ(exceptionsOf("not a script").size(), 1u);
}

TEST_F(JavaScriptCoreEngineTest, usesEveryContextOnce) {
    const std::vector<scriptSource> scripts{{"var count = 1; throw new Error('one')", "file:///1"},
                                            {"count += 1; throw new Error('two')", "file:///2"}};
    const std::vector<scriptSource> others{{"var other = 1", "file:///3"}};
    for (int i = 0; i < 6; ++i) {
        exceptions.clear();
        const auto made = context(scripts);
        EXPECT_THAT(exceptions, ElementsAre("Error: one", "Error: two"));
        EXPECT_EQ(made->global("left"), std::nullopt);
        EXPECT_EQ(made->evaluate("left = 1; Array.prototype.left = 1; count += 1"), "3");
        const auto other = context(i % 2 == 0 ? std::span<const scriptSource>(others)
                                              : std::span<const scriptSource>());
        EXPECT_EQ(other->evaluate("typeof count + [].left"), "undefinedundefined");
        EXPECT_EQ(other->global("other").has_value(), i % 2 == 0);
    }
}

TEST_F(JavaScriptCoreEngineTest, stopsWhatDoesNotEnd) {
    for (const char* endless : {
             "while (true) {}",
             "try { while (true) {} } catch (e) {} finally {}",
             "while (true) { try { while (true) {} } catch (e) {} }",
             "Promise.resolve().then(() => { while (true) {} }); 1",
             "throw {toString() { while (true) {} }}",
             "({toString() { while (true) {} }})",
             "/(a+)+b/.test('a'.repeat(60))",
             // What the engine can't stop is given up.
             "(function next() { Promise.resolve().then(next); })()",
             "new RegExp('a*'.repeat(9) + 'b').test('a'.repeat(900))",
         }) {
        EXPECT_THAT(exceptionsOf(endless), ElementsAre(stoppedText)) << endless;
    }
    EXPECT_EQ(context()->evaluate("1 + 1"), "2");
}

TEST_F(JavaScriptCoreEngineTest, limitsACompilationAsAWholeAndNotTheNext) {
    const char* const third = "var end = Date.now() + 120; while (Date.now() < end) {} 1";
    for (int round = 0; round < 3; ++round) {
        exceptions.clear();
        const auto made = context();
        EXPECT_EQ(made->evaluate("1"), "1");
        int steps = 0;
        while (made->evaluate(third) && steps < 1000)
            ++steps;
        EXPECT_GE(steps, 2);
        EXPECT_LT(steps, 1000);
        EXPECT_THAT(exceptions, ElementsAre(stoppedText));
        // A stopped one stays stopped, whatever it is asked.
        EXPECT_EQ(made->evaluate("1"), std::nullopt);
        EXPECT_EQ(made->global("end"), std::nullopt);
        made->setGlobal("str", "x");
        EXPECT_EQ(exceptions.size(), 3u);
    }
}

TEST(JavaScriptCoreEngineThreads, serveSeveralCompilationsAtOnce) {
    JavaScriptCoreEngine engine;
    const std::vector<scriptSource> scripts{{"var base = 20;", "file:///base"}};
    std::vector<std::thread> threads;
    for (int number = 0; number < 6; ++number)
        threads.emplace_back([&, number] {
            for (int i = 0; i < 30; ++i) {
                const auto made = engine.makeContext(
                    scripts, [](const std::string& text) { ADD_FAILURE() << text; });
                made->setGlobal("mine", std::to_string(number));
                EXPECT_EQ(made->evaluate("base + Number(mine)"), std::to_string(20 + number));
                EXPECT_EQ(made->global("mine"), std::to_string(number));
            }
        });
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace

} // namespace tessaril
