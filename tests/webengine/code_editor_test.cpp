#include "editor/editor_configuration.h"
#include "events/notification_names.h"
#include "preferences/preferences.h"
#include "support/event_loop.h"
#include "support/memory_files.h"
#include "support/running_web_engine.h"
#include "support/test.h"
#include "windows/code_editor.h"

#include <QtWidgets>

namespace tessaril {
namespace {

/// An editor in a window, configured as hosts do it.
struct EditorWindow {
    explicit EditorWindow(std::string text = "") : content{.text = std::move(text)} {
        editor.resize(700, 500);
        editor.show();
    }
    WKAceView& view() { return editor.aceView(); }

    MemoryPreferences store;
    Preferences preferences{store};
    NotificationCenter center;
    UndoManager undo;
    editorContent content;
    shownWebView web;
    CodeEditor editor{[this](QWidget* parent) { return web = runningWebEngine().makeView(parent); },
                      TESSARIL_RESOURCES "/Ace/index.html", center, undo};
    ConfiguredEditor configured{view(), preferences, center, [this] { return content; }};
};

struct CodeEditorTest : ::testing::Test, EditorWindow {
    CodeEditorTest() {
        registerPreferenceDefaults(preferences, shared, 1, false);
        EXPECT_TRUE(eventually([this] { return configured.isReady(); }));
        bringForward(editor);
        editor.focusEditor();
        EXPECT_EQ(inPage("document.hasFocus() && editor.isFocused()"), scriptValue(true));
    }

    scriptValue inPage(std::string_view statement) {
        return evaluated(web, statement).value_or(scriptValue());
    }
    std::string textInPage() { return std::get<std::string>(inPage("editor.getValue()")); }
    void set(const std::string& text) {
        view().setString(text);
        EXPECT_TRUE(eventually([&] { return inPage("reportChanges") == scriptValue(true); }));
    }
    void press(int key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(QApplication::focusWidget(), static_cast<Qt::Key>(key), modifiers);
    }
    void type(const char* text) { QTest::keyClicks(QApplication::focusWidget(), text); }
    [[nodiscard]] bool becomes(const std::string& text) {
        return eventually([&] { return view().string() == text; }) && textInPage() == text;
    }

    MemoryPreferences sharedStore;
    Preferences shared{sharedStore};
};

TEST_F(CodeEditorTest, ReportsWhatIsTypedButNotWhatIsSet) {
    int changes = 0;
    const auto subscription =
        center.observe(notifications::ACEDidChange, [&](const notification& n) {
            EXPECT_EQ(n.object, &view());
            ++changes;
        });
    set("a\nb");
    EXPECT_EQ(changes, 0);
    type("x");
    EXPECT_TRUE(becomes("xa\nb"));
    EXPECT_EQ(changes, 1);
    press(Qt::Key_End);
    press(Qt::Key_Tab);
    EXPECT_TRUE(becomes("xa\t\nb"));
    press(Qt::Key_Z, Qt::ControlModifier);
    press(Qt::Key_Z, Qt::ControlModifier);
    press(Qt::Key_Z, Qt::ControlModifier); // not beyond the text that was set
    EXPECT_TRUE(becomes("a\nb"));
}

TEST_F(CodeEditorTest, KnowsWhatWasTypedInTheLastInstant) {
    std::string typed;
    for (int round = 0; round < 60; ++round) {
        type("xy");
        typed += "xy";
        bool isSettled = false;
        view().whenSettled([&] {
            isSettled = true;
            EXPECT_EQ(view().string(), typed);
        });
        ASSERT_TRUE(eventually([&] { return isSettled; }));
    }
}

TEST_F(CodeEditorTest, HoldsEveryTextAsItIsGiven) {
    std::string large;
    while (large.size() < 2'000'000)
        large += ".a:hover { content: \"\\201C 'ä'\"; } /* \u2028 \U0001f600 */\n";
    for (const std::string& text :
         {std::string("\"'\\\n\t\u0085\u2028\u2029\\n</script>${a}`"), std::string("a\r\nb\r\n"),
          std::string("nul\0l", 5), large, std::string()}) {
        set(text);
        EXPECT_TRUE(textInPage() == text) << text.substr(0, 50);
        EXPECT_EQ(inPage("JSON.stringify(editor.getCursorPosition())"),
                  scriptValue("{\"row\":0,\"column\":0}"));
        type("y");
        EXPECT_TRUE(becomes("y" + text)) << text.substr(0, 50);
    }
}

TEST_F(CodeEditorTest, BeautifiesWithUndoAndRedo) {
    const std::string before = "a{color:red}\n\n\n\n\nb>c{margin:0;}";
    const std::string after = "a {\n\tcolor: red\n}\n\nb>c {\n\tmargin: 0;\n}";
    set(before);
    view().beautify();
    EXPECT_TRUE(becomes(after));
    type("x");
    EXPECT_TRUE(becomes("x" + after));
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_TRUE(becomes(after)) << "what was typed goes first";
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_TRUE(becomes(before));
    press(Qt::Key_Y, Qt::ControlModifier);
    EXPECT_TRUE(becomes(after));
    view().undo();
    EXPECT_TRUE(becomes(before));
    type("y");
    EXPECT_TRUE(becomes("y" + before));
    EXPECT_FALSE(undo.canRedo()) << "it would take away what was typed";
    view().undo();
    EXPECT_TRUE(becomes(before));
}

TEST_F(CodeEditorTest, FollowsThePreferences) {
    const auto background = [&] {
        return inPage("getComputedStyle(editor.container).backgroundColor");
    };
    const scriptValue light = background();
    preferences.set("ACETheme", "nord");
    preferences.set("ACEShowErrors", true);
    preferences.set("ACEShowGutter", false);
    center.post(notifications::preferencesDidChange);
    EXPECT_TRUE(eventually([&] { return background() != light; }));
    EXPECT_EQ(inPage("editor.renderer.getShowGutter()"), scriptValue(false));

    set("a { color: }");
    EXPECT_TRUE(eventually(
        [&] { return inPage("editor.session.getAnnotations().length > 0") == scriptValue(true); }));
}

TEST_F(CodeEditorTest, ShowsItsTextAgainWhenTheProcessEnds) {
    set("kept");
    type("x");
    ASSERT_TRUE(becomes("xkept"));
    content.text = view().string();
    CapturedLog log;
    ASSERT_EQ(kill(pageProcess(web), SIGKILL), 0);
    EXPECT_TRUE(eventually([&] { return !view().isReady(); }));
    EXPECT_TRUE(eventually([&] { return configured.isReady(); }));
    EXPECT_TRUE(eventually([&] { return textInPage() == "xkept"; }));
    EXPECT_TRUE(eventually([&] { return inPage("reportChanges") == scriptValue(true); }));
    editor.focusEditor();
    EXPECT_EQ(inPage("document.hasFocus() && editor.isFocused()"), scriptValue(true));
    type("y");
    EXPECT_TRUE(becomes("yxkept"));
}

TEST(CodeEditors, ThirtyOpenAndCloseInOneProcess) {
    std::vector<std::unique_ptr<EditorWindow>> windows;
    for (int i = 0; i < 30; ++i)
        windows.push_back(std::make_unique<EditorWindow>("/* " + std::to_string(i) + " */"));
    windows[3].reset(); // while it loads
    std::set<pid_t> processes;
    for (const auto& window : windows) {
        if (!window) continue;
        ASSERT_TRUE(eventually([&] { return window->configured.isReady(); }));
        EXPECT_EQ(evaluated(window->web, "editor.getValue()"), scriptValue(window->content.text));
        processes.insert(pageProcess(window->web));
    }
    EXPECT_EQ(processes.size(), 1U);
}

} // namespace
} // namespace tessaril
