#include "editor/editor_configuration.h"
#include "events/notification_names.h"
#include "preferences/preferences.h"
#include "support/memory_files.h"
#include "support/running_web_engine.h"
#include "support/test.h"
#include "windows/code_editor.h"

namespace tessaril {
namespace {

/// An editor in a window, configured as hosts do it.
struct EditorWindow : RealPages {
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
    CodeEditor editor{makePage, editorPage, center, undo};
    ConfiguredEditor configured{view(), preferences, center, [this] { return content; }};
};

struct CodeEditorTest : ::testing::Test, EditorWindow {
    CodeEditorTest() {
        registerPreferenceDefaults(preferences, shared, 1, false);
        EXPECT_TRUE(eventually([this] { return configured.isReady(); }));
        bringForward(editor);
        enterPage();
    }

    void enterPage() {
        editor.focusEditor();
        EXPECT_TRUE(holds("document.hasFocus() && editor.isFocused()"));
    }
    void set(const std::string& text) {
        view().setString(text);
        EXPECT_TRUE(comesToHold("reportChanges"));
    }
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
    press("'x'");
    EXPECT_TRUE(becomes("xa\nb"));
    EXPECT_EQ(changes, 1);
    press("End Tab");
    EXPECT_TRUE(becomes("xa\t\nb"));
    for (int times = 0; times < 3; ++times) // not beyond the text that was set
        press("Ctrl+Z");
    EXPECT_TRUE(becomes("a\nb"));
}

TEST_F(CodeEditorTest, KnowsWhatWasTypedInTheLastInstant) {
    std::string typed;
    for (int round = 0; round < 60; ++round) {
        press("'xy'");
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
        press("'y'"); // at its start
        EXPECT_TRUE(becomes("y" + text)) << text.substr(0, 50);
    }
}

TEST_F(CodeEditorTest, BeautifiesWithUndoAndRedo) {
    const std::string before = "a{color:red}\n\n\n\n\nb>c{margin:0;}";
    const std::string after = "a {\n\tcolor: red\n}\n\nb>c {\n\tmargin: 0;\n}";
    set(before);
    view().beautify();
    EXPECT_TRUE(becomes(after));
    press("'x'");
    EXPECT_TRUE(becomes("x" + after));
    press("Ctrl+Z");
    EXPECT_TRUE(becomes(after)) << "what was typed goes first";
    press("Ctrl+Z");
    EXPECT_TRUE(becomes(before));
    press("Ctrl+Y");
    EXPECT_TRUE(becomes(after));
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
    EXPECT_TRUE(holds("!editor.renderer.getShowGutter()"));
    set("a { color: }");
    EXPECT_TRUE(comesToHold("editor.session.getAnnotations().length > 0"));
}

TEST_F(CodeEditorTest, ShowsItsTextAgainWhenTheProcessEnds) {
    set("kept");
    press("'x'");
    ASSERT_TRUE(becomes("xkept"));
    content.text = view().string();
    CapturedLog log;
    ASSERT_EQ(kill(pageProcess(web), SIGKILL), 0);
    EXPECT_TRUE(eventually([&] { return !view().isReady(); }));
    EXPECT_TRUE(eventually([&] { return configured.isReady(); }));
    EXPECT_TRUE(eventually([&] { return textInPage() == "xkept"; }));
    EXPECT_TRUE(comesToHold("reportChanges"));
    enterPage();
    press("'y'");
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
        EXPECT_EQ(window->textInPage(), window->content.text);
        processes.insert(pageProcess(window->web));
    }
    EXPECT_EQ(processes.size(), 1U);
}

} // namespace
} // namespace tessaril
