#include "editor/editor_configuration.h"
#include "preferences/preferences.h"
#include "support/edited_text.h"
#include "support/memory_files.h"
#include "support/test.h"

namespace tessaril {
namespace {

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
    EXPECT_THAT(
        edited.page.taken(),
        ElementsAre(
            "editor.setTheme(\"ace/theme/xcode\");", "reportChanges = false;",
            "editor.setValue(\"old\");", "editor.session.setMode(\"ace/mode/less\");",
            "editor.setKeyboardHandler(\"ace/keyboard/ace\");", "editor.setShowPrintMargin(false);",
            "editor.setOption(\"showInvisibles\", false)", "editor.setOption(\"useWorker\", false)",
            "editor.setOption(\"enableBasicAutocompletion\", true)",
            "editor.setOption(\"enableLiveAutocompletion\", true)",
            "editor.setOption(\"showGutter\", false)",
            "editor.setOption(\"enableSnippets\", false)",
            "editor.getSession().setUseSoftTabs(false);",
            "editor.setOption(\"enableEmmet\", false)", "editor.session.setUseWrapMode(false);",
            "editor.setOptions({fontFamily: \"Menlo\"});", "editor.setFontSize(12);",
            "editor.setReadOnly(true);"));

    stored.setValue("ACETheme", "nord");
    stored.setValue("ACEWordWrap", true);
    stored.setValue("ACEFont", "ui-monospace");
    edited.center.post(notifications::preferencesDidChange);
    EXPECT_THAT(edited.page.taken(),
                AllOf(SizeIs(8), Contains("editor.setTheme(\"ace/theme/nord_dark\");"),
                      Contains("editor.session.setUseWrapMode(true);"),
                      Contains("editor.setOptions({fontFamily: \"ui-monospace\"});")));

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
