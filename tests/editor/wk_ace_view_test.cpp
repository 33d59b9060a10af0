#include "editor/editor_configuration.h"
#include "editor/escaping.h"
#include "editor/text_places.h"
#include "preferences/preferences.h"
#include "support/edited_text.h"
#include "support/memory_files.h"
#include "support/test.h"

namespace tessaril {
namespace {

TEST(EscapedForScript, KeepsEveryTextInsideItsLiteral) {
    const std::pair<std::string, std::string> table[] = {
        {"\\", "\\\\"},          {"\"", "\\\""},          {"'", "\\'"},
        {"\n", "\\n"},           {"\r", "\\r"},           {"\t", "\\t"},
        {"\u0085", "\\u{0085}"}, {"\u2028", "\\u{2028}"}, {"\u2029", "\\u{2029}"}};
    std::string text, expected;
    for (const auto& [from, to] : table)
        for (const std::string next : {"\u0084", "\u2027", "\xE2\x80", "\xC2", "n", "u{0085}"}) {
            text += from + next;
            expected += to + next;
        }
    EXPECT_EQ(escapedForScript(text), expected);
}

TEST(TextPlaces, CountLikeTheEditorInUtf16Units) {
    const struct {
        std::string text;
        textRange range;
        std::vector<std::size_t> places; // row and column of both ends
    } cases[] = {
        {"abc\ndefgh", {5, 3}, {1, 1, 1, 4}},
        {"abc\ndefgh", {4, 5}, {0, 4, 1, 5}}, // just past a terminator: still its line
        {"", {7, 9}, {0, 0, 0, 0}},
        {"a\nb", {2, 99}, {0, 2, 1, 1}},
        {"a\nb", {99, std::size_t(-1)}, {1, 1, 1, 1}},
        {"a\r\nb\rc\u2028d\u0085e\ff", {3, 3}, {0, 3, 2, 1}}, // CR LF is one, the others none
        {"\U0001F600\u00E4\n\U0001F600x", {4, 3}, {0, 4, 1, 3}},
    };
    for (const auto& [text, range, expected] : cases) {
        const auto [start, end] = placesOf(text, range);
        EXPECT_THAT(expected, ElementsAre(start.row, start.column, end.row, end.column)) << text;
    }
    EXPECT_EQ(replacing("\U0001F600a\u00E4b", {{{0, 2}, "x"}, {{3, 1}, ""}}), "xab");
    EXPECT_EQ(textIn("\U0001F600ab", {1, 2}), "\U0001F600a"); // never half a character
}

TEST(WKAceView, ReportsWhatTheUserTypesAndNothingElse) {
    EditedText editor;
    editor.page.observer->messageReceived("callback", "other");
    editor.page.observer->messageReceived("other", "stringChanged");
    EXPECT_THAT(editor.page.taken(), IsEmpty());
    editor.page.report();
    EXPECT_THAT(editor.page.taken(), ElementsAre("editor.getValue();"));
    editor.page.answer("typed");
    EXPECT_THAT(editor.changes, ElementsAre("posted typed", "told typed"));
    editor.page.report();
    editor.page.fail();
    EXPECT_EQ(editor.changes.size(), 2u);
    EXPECT_EQ(editor.view.string(), "typed");
    editor.page.taken();
    editor.view.goToLine();
    EXPECT_THAT(editor.page.taken(), ElementsAre("editor.prompt({ $type: \"gotoLine\" });"));
}

TEST(WKAceView, NeverMixesTextsThatCrossOnTheirWay) {
    EditedText editor;
    // The answer is about the text before the one set since.
    editor.page.report();
    editor.view.setString("section 2");
    editor.page.answer("section 1, typed");
    // Reported before the page took the text: the answer is that text. Typed after: it is another.
    editor.page.report();
    editor.page.answer("section 2");
    editor.page.answer("section 2");
    EXPECT_THAT(editor.changes, IsEmpty());
    editor.view.setString("section 3");
    editor.page.report();
    editor.page.answer("section 3");
    editor.page.answer("section 3, typed");
    EXPECT_THAT(editor.changes, ElementsAre("posted section 3, typed", "told section 3, typed"));

    // The page keeps an older text than the one that it should show.
    editor.view.setString("section 4");
    editor.view.setString("section 5");
    editor.page.answer("section 4");
    editor.page.fail();
    editor.page.taken();
    editor.page.report();
    EXPECT_THAT(editor.page.taken(), IsEmpty());
    EXPECT_EQ(editor.view.string(), "section 5");
}

TEST(WKAceView, BeautifiesAndTurnsThatBackExactly) {
    EditedText editor("a{b:c}");
    editor.page.report();
    editor.view.beautify();
    editor.page.answer("a{b:c}\u2028"); // typed just before
    editor.changes.clear();
    EXPECT_EQ(editor.undo.undoName(), "Beautify");
    editor.page.answer("a {\n\tb: c\n}");
    EXPECT_THAT(editor.changes, ElementsAre("posted a {\n\tb: c\n}", "told a {\n\tb: c\n}"));
    editor.page.answer("");
    editor.page.type("typed after");
    editor.undo.undo();
    EXPECT_EQ(editor.view.string(), "a{b:c}\u2028");
    EXPECT_EQ(editor.changes.back(), "told a{b:c}\u2028");
    editor.undo.redo();
    EXPECT_EQ(editor.view.string(), "typed after");
    editor.view.setString("another section");
    EXPECT_FALSE(editor.undo.canUndo() || editor.undo.canRedo());
}

TEST(WKAceView, DropsBeautifyThatFailedOrThatTheTextHasOvertaken) {
    const std::function<void(EditedText&)> overtakings[] = {
        [](EditedText& editor) { editor.page.fail(); },
        [](EditedText& editor) {
            editor.page.report();
            editor.page.answer("beautified old text");
            editor.page.answer("new");
        },
        [](EditedText& editor) {
            editor.view.setString("new");
            editor.page.answer("beautified old text");
        },
    };
    for (const auto& overtake : overtakings) {
        EditedText editor("old");
        editor.view.beautify();
        overtake(editor);
        EXPECT_NE(editor.view.string(), "beautified old text");
        EXPECT_FALSE(editor.undo.canUndo());
    }
}

TEST(WKAceView, LoadsALostPageAgainButNotForever) {
    const CapturedLog log;
    EditedText editor;
    int ready = 0, givenUp = 0;
    editor.view.setOnReady([&] { ++ready; });
    editor.view.setOnGivenUp([&] { ++givenUp; });
    editor.view.load("/page");
    for (int round = 0; round < 5; ++round) {
        editor.page.observer->navigationFinished();
        if (round == 1) editor.page.type("works again"); // so the count starts anew
        EXPECT_TRUE(editor.view.isReady());
        editor.page.observer->pageLost();
        EXPECT_FALSE(editor.view.isReady());
    }
    EXPECT_EQ(editor.view.string(), "works again");
    EXPECT_EQ(editor.page.loaded.size(), 5u);
    EXPECT_TRUE(ready == 5 && givenUp == 1);
}

TEST(WKAceView, LeavesNothingBehindThatCallsIt) {
    RecordingWebView page;
    NotificationCenter center;
    UndoManager undo;
    auto view = std::make_unique<WKAceView>(page, center, undo);
    view->setString("a");
    view->beautify();
    view.reset();
    EXPECT_FALSE(page.observer || undo.canUndo());
    page.answer("late");
    page.answer("late");
}

TEST(WKAceView, SaysWhenItsTextIsKnown) {
    EditedText edited("a");
    bool isSettled = false;
    const auto settle = [&] {
        isSettled = false;
        edited.view.whenSettled([&] { isSettled = true; });
    };
    settle();
    EXPECT_TRUE(isSettled) << "without a page there is nothing to wait for";
    edited.view.navigationFinished();
    edited.page.taken();
    settle();
    EXPECT_THAT(edited.page.taken(), ElementsAre("announceInput();"));
    const auto announce = [&] { edited.view.messageReceived("callback", "inputHandled"); };
    announce();
    edited.page.report(); // typed meanwhile
    edited.page.answer("ab");
    EXPECT_FALSE(isSettled);
    edited.page.answer("abc");
    EXPECT_TRUE(isSettled);
    EXPECT_EQ(edited.view.string(), "abc");
    announce(); // that nobody waits for
    EXPECT_TRUE(edited.page.waiting.empty());
    settle();
    announce();
    edited.page.fail();
    EXPECT_TRUE(isSettled) << "what is known is all there is";
    settle();
    CapturedLog log;
    edited.view.pageLost();
    EXPECT_TRUE(isSettled) << "so it is when the page goes";
    announce();
}

TEST(ConfiguredEditor, SetsUpInOrderFollowsPreferencesAndRevivesALostPage) {
    EditedText edited;
    MemoryPreferences stored;
    Preferences preferences(stored);
    editorContent content{"old", "less", true};
    int finished = 0;
    ConfiguredEditor configured(
        edited.view, preferences, edited.center, [&] { return content; }, [&] { ++finished; });
    edited.center.post(notifications::preferencesDidChange);
    EXPECT_THAT(edited.page.taken(), IsEmpty()); // the page is not there yet
    EXPECT_FALSE(configured.isReady());

    stored.setValue("ACEAutocomplete", true);
    stored.setValue("ACEFontSize", std::int64_t{12});
    edited.page.observer->navigationFinished();
    const auto statements = edited.page.taken();
    EXPECT_THAT(statements, SizeIs(18));
    EXPECT_THAT(
        statements,
        ::testing::IsSupersetOf(
            {"editor.setTheme(\"ace/theme/xcode\");", "editor.session.setMode(\"ace/mode/less\");",
             "editor.setOption(\"enableBasicAutocompletion\", true)",
             "editor.setOption(\"showGutter\", false)", "editor.session.setUseWrapMode(false);",
             "editor.setOptions({fontFamily: \"Menlo\"});", "editor.setFontSize(12);"}));
    EXPECT_EQ(statements[2], "editor.setValue(\"old\");");
    EXPECT_EQ(statements.back(), "editor.setReadOnly(true);");

    stored.setValue("ACETheme", "nord");
    stored.setValue("ACEWordWrap", true);
    stored.setValue("ACEFont", "F\"); alert(1); (\"");
    edited.center.post(notifications::preferencesDidChange);
    EXPECT_THAT(edited.page.taken(),
                AllOf(SizeIs(8), Contains("editor.setTheme(\"ace/theme/nord_dark\");"),
                      Contains("editor.session.setUseWrapMode(true);"),
                      Contains("editor.setOptions({fontFamily: \"F\\\"); alert(1); (\\\"\"});")));

    content.text = "working copy";
    edited.page.observer->pageLost();
    edited.center.post(notifications::preferencesDidChange);
    EXPECT_THAT(edited.page.taken(), IsEmpty());
    edited.page.observer->navigationFinished();
    EXPECT_EQ(edited.page.taken()[2], "editor.setValue(\"working copy\");");
    EXPECT_EQ(finished, 2);
}

} // namespace
} // namespace tessaril
