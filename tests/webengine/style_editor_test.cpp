#include "model/database_json.h"
#include "preferences/preference_keys.h"
#include "support/list_window.h"
#include "support/running_web_engine.h"
#include "support/test.h"
#include "windows/new_section_sheet.h"
#include "windows/other_windows.h"
#include "windows/rule_editor_sheet.h"
#include "windows/style_editor_window.h"

namespace tessaril {
namespace {

/// Styles opened from the list and edited by keys, in real pages.
struct StyleEditorTest : ::testing::Test, RealPages, ListWindow {
    StyleEditorTest() {
        makeWebView = makePage;
        application.listCommands().setRoutes({.openStyleForEditing = [this](auto id, bool) {
            return others.openStyleEditor(id, window);
        }});
    }

    void put(const std::vector<styleContainer>& styles) {
        for (const styleContainer& style : styles)
            application.store().appendStyle(style);
        showWindow();
    }
    /// - codes: of one section each
    static styleContainer custom(std::int64_t id, const std::vector<std::string>& codes) {
        styleContainer style = namedStyle("Style " + std::to_string(id), id);
        style.styleData.sections.clear();
        for (const std::string& code : codes)
            style.styleData.sections.push_back({.domains = {"a.example"}, .code = code});
        return style;
    }
    [[nodiscard]] bool until(const std::function<bool()>& condition) {
        return eventually([&] {
            machine.dispatcher.runAll();
            return condition();
        });
    }
    [[nodiscard]] bool inTime(const std::string& condition) {
        return until([&] { return holds(condition); });
    }
    [[nodiscard]] bool shows(const std::string& text) {
        return inTime("reportChanges && editor.getValue() === '" + text + "'");
    }
    [[nodiscard]] bool isModified(bool wanted) {
        return until([&] { return editor()->isWindowModified() == wanted; });
    }
    StyleEditorWindow* editor() {
        for (QWidget* each : QApplication::topLevelWidgets())
            if (each->isVisible() && each->objectName() == "styleEditorWindow")
                return static_cast<StyleEditorWindow*>(each);
        return nullptr;
    }
    /// By a double click on its name.
    void open(int row) {
        bringForward(window);
        const QPoint name = rowRect(row).center();
        QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, name);
        QTest::mouseDClick(view.viewport(), Qt::LeftButton, {}, name);
        ASSERT_TRUE(editor());
        bringForward(*editor());
        ASSERT_TRUE(inTime("reportChanges && editor.isFocused()"));
    }
    template <typename Sheet>
    Sheet* sheet(const char* key) {
        press(key);
        EXPECT_TRUE(until([&] { return editor()->findChild<Sheet*>(); }));
        auto* opened = editor()->findChild<Sheet*>();
        bringForward(*opened);
        return opened;
    }
    template <typename Sheet>
    void leave() {
        ASSERT_TRUE(until([&] { return !editor()->findChild<Sheet*>(); }));
        bringForward(*editor());
        ASSERT_TRUE(inTime("editor.isFocused()"));
    }
    QComboBox& picker() { return *editor()->findChild<QComboBox*>("sectionPicker"); }
    styleContainer stored(const char* file = "/container/styledb.sdb") {
        machine.dispatcher.runAll();
        return decodeDatabase(machine.files.contents.at(file))->styles.at(0);
    }
};

TEST_F(StyleEditorTest, AStyleIsWrittenSavedAndClosed) {
    put({custom(7, {"a{b:c}"})});
    open(0);
    press("'x'");
    ASSERT_TRUE(isModified(true));

    auto* added = sheet<NewSectionSheet>("Ctrl+Shift+N");
    partOf<QLineEdit>(*added, "ruleField").setText(" b.example ");
    press("Return");
    leave<NewSectionSheet>();
    ASSERT_TRUE(shows(""));
    EXPECT_EQ(picker().currentText().toStdString(), "Section 2");

    auto* rules = sheet<RuleEditorSheet>("Ctrl+R");
    auto& name = partOf<QLineEdit>(*rules, "sectionNameField");
    name.setText("Night");
    name.setFocus();
    press("Return");
    leave<RuleEditorSheet>();
    EXPECT_EQ(picker().currentText().toStdString(), "Night");

    inPage("editor.setValue('d{e:f}'); 1");
    press("Ctrl+Shift+B");
    ASSERT_TRUE(shows("d {\\n\\te: f\\n}"));
    press("Ctrl+Z");
    ASSERT_TRUE(shows("d{e:f}"));
    press("'y' Ctrl+S");
    ASSERT_TRUE(isModified(false));
    const std::vector<styleSection> saved = stored().styleData.sections;
    ASSERT_EQ(saved.size(), 2U);
    EXPECT_EQ(saved[0].code, "xa{b:c}");
    EXPECT_EQ(saved[1].code, "yd{e:f}") << "typed just before";
    EXPECT_THAT(saved[1].domains, ElementsAre("b.example"));
    EXPECT_EQ(saved[1].sectionName, "Night");
    EXPECT_EQ(saved[1].compiledcode, "yd{e:f}");
    EXPECT_EQ(stored("wormhole/styleDBUpdated"), stored()) << "so the extension has it";

    const auto close = [&](int answer) {
        machine.alerts.answers = {{.button = answer}};
        press("Ctrl+W");
        return until([&] { return machine.alerts.answers.empty(); });
    };
    press("'z'");
    ASSERT_TRUE(close(1)); // Cancel
    EXPECT_TRUE(editor() && editor()->isWindowModified());
    ASSERT_TRUE(close(0)); // Save
    ASSERT_TRUE(until([&] { return !editor(); }));
    EXPECT_TRUE(application.openStyles().isEmpty());
    EXPECT_EQ(stored().styleData.sections[1].code, "yzd{e:f}");
}

TEST_F(StyleEditorTest, SectionsKeepWhatIsTypedWhileTheyAreSwitched) {
    put({custom(7, {"a", "b"})});
    open(0);
    press("'1' Ctrl+PgDown");
    ASSERT_TRUE(shows("b"));
    // What a key does that is pressed before the application has done the rest.
    EXPECT_TRUE(holds("(reportChanges = false, editor.setValue('b'), reportChanges) &&"
                      "editor.getSelectedText() === ''"));
    EXPECT_TRUE(holds("(editor.execCommand('undo'), editor.getValue() === 'b')"));
    EXPECT_TRUE(holds("(editor.insert('k'), editor.moveCursorTo(0, 0),"
                      " editor.getCursorPosition().column === 1)"));
    EXPECT_TRUE(holds("(editor.getSession().setUndoManager(new ace.UndoManager()),"
                      " editor.execCommand('undo'), editor.getValue() === 'b')"));
    EXPECT_TRUE(holds("(editor.clearSelection(), true)"));
    press("'2' Ctrl+PgUp");
    ASSERT_TRUE(shows("1a"));
    press("F6");
    EXPECT_TRUE(picker().hasFocus());
    press("Down");
    ASSERT_TRUE(shows("2b"));
    EXPECT_TRUE(picker().hasFocus());
    press("Return");
    EXPECT_TRUE(inTime("editor.isFocused()"));

    // A key that is held since before the page had the focus.
    QKeyEvent held(QEvent::KeyPress, Qt::Key_Return, {}, "\r", true);
    QApplication::sendEvent(QApplication::focusWidget(), &held);

    machine.alerts.answers = {{.button = 0}};
    press("'3' Ctrl+S Ctrl+W"); // waits for the other
    ASSERT_TRUE(until([&] { return !editor(); }));
    EXPECT_THAT(machine.alerts.questions, IsEmpty());
    EXPECT_EQ(stored().styleData.sections[1].code, "32b");
}

TEST_F(StyleEditorTest, NothingHappensBehindASheet) {
    put({custom(7, {"a", "b"})});
    open(0);
    press("Ctrl+R Ctrl+R Ctrl+PgDown Ctrl+W");
    ASSERT_TRUE(until([&] { return editor()->findChild<RuleEditorSheet*>(); }));
    EXPECT_THAT(editor()->findChildren<RuleEditorSheet*>(), SizeIs(1));
    auto* rules = editor()->findChild<RuleEditorSheet*>();
    bringForward(*rules);
    // Opened once more from the list.
    application.listCommands().openSelected({0});
    ASSERT_TRUE(until([&] { return rules->isActiveWindow(); }));
    partOf<QLineEdit>(*rules, "sectionNameField").setText("First");
    rules->accept();
    leave<RuleEditorSheet>();
    EXPECT_EQ(picker().currentText().toStdString(), "First");
    press("Ctrl+S");
    ASSERT_TRUE(isModified(false));
    EXPECT_EQ(stored().styleData.sections[1].sectionName, std::nullopt);
}

TEST_F(StyleEditorTest, AnInstalledStyleIsOnlyRead) {
    styleContainer style = custom(7, {"a"});
    style.source = sourceUserCSS;
    put({style});
    open(0);
    ASSERT_TRUE(until([&] { return machine.alerts.questions.size() == 1; }));
    press("'typed' Ctrl++");
    auto* rules = sheet<RuleEditorSheet>("Ctrl+R");
    EXPECT_FALSE(partOf<QLineEdit>(*rules, "sectionNameField").isEnabled());
    press("Esc");
    leave<RuleEditorSheet>();
    EXPECT_TRUE(holds("editor.getValue() === 'a' && editor.getFontSize() === 13"));
    press("Ctrl+W");
    EXPECT_TRUE(until([&] { return !editor(); }));
}

TEST_F(StyleEditorTest, QuittingAsksForEachStyleUntilOneStays) {
    put({custom(1, {"a"}), custom(2, {"b"}), custom(3, {"c"})});
    std::vector<StyleEditorWindow*> windows;
    for (int row = 0; row < 3; ++row) {
        if (QWidget* last = windows.empty() ? nullptr : windows.back()) last->hide();
        open(row);
        if (row != 1) press("'x'");
        windows.push_back(editor());
    }
    for (StyleEditorWindow* each : windows)
        each->show();
    RecordingAlerts& alerts = machine.alerts;
    alerts.answers = {{.button = 0}, {.button = 1}};
    window.close();
    ASSERT_TRUE(until([&] { return alerts.questions.size() == 2; }));
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(editor(), windows[2]) << "the others have closed";
    EXPECT_EQ(stored().styleData.sections[0].code, "xa");

    bringForward(*windows[2]);
    sheet<RuleEditorSheet>("Ctrl+R");
    window.close();
    EXPECT_EQ(alerts.beeps, 1) << "the sheet may hold rules that are not kept yet";
    EXPECT_THAT(alerts.questions, SizeIs(2));
    EXPECT_TRUE(window.isVisible());
    windows[2]->findChild<RuleEditorSheet*>()->reject();

    alerts.answers = {{.button = 2}};
    window.close();
    ASSERT_TRUE(until([&] { return !window.isVisible(); }));
    EXPECT_FALSE(editor());
}

TEST_F(StyleEditorTest, UnsavedTextIsOfferedAtTheNextStart) {
    put({custom(7, {"a"})});
    open(0);
    press("'typed'");
    ASSERT_TRUE(isModified(true));
    others.keepUnsaved();
    machine.dispatcher.runAll();
    const auto& files = machine.files.contents;
    ASSERT_TRUE(files.contains("/drafts/7.draft"));
    delete editor(); // as when the application ends by a signal

    application.draftOffer().setOpen([&](const styleToEdit& opened) {
        others.openStyleEditor(opened, window);
        return true;
    });
    machine.alerts.answers = {{.button = 0}};
    application.styleListShown();
    ASSERT_TRUE(until([&] { return editor() && editor()->isWindowModified(); }));
    bringForward(*editor());
    ASSERT_TRUE(shows("typeda"));
    press("Ctrl+S");
    ASSERT_TRUE(isModified(false));
    EXPECT_EQ(stored().styleData.sections[0].code, "typeda");
    EXPECT_FALSE(files.contains("/drafts/7.draft"));
}

} // namespace
} // namespace tessaril
