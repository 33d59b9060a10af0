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
struct StyleEditorTest : ::testing::Test {
    StyleEditorTest() {
        const auto open = [this](std::int64_t id, bool) {
            return others.openStyleEditor(id, list.window);
        };
        list.application.listCommands().setRoutes({.openStyleForEditing = open});
    }

    void put(const std::vector<styleContainer>& styles) {
        for (const styleContainer& style : styles)
            list.application.store().appendStyle(style);
        list.showWindow();
    }
    static styleContainer custom(std::int64_t id, const std::string& code) {
        styleContainer style = namedStyle("Style " + std::to_string(id), id);
        style.source = sourceCustom;
        style.styleData.sections = {{.domains = {"a.example"}, .code = code}};
        return style;
    }
    [[nodiscard]] bool until(const std::function<bool()>& condition) {
        return eventually([&] {
            list.machine.dispatcher.runAll();
            return condition();
        });
    }
    [[nodiscard]] bool shows(const std::string& text) {
        return until(
            [&] { return holds(web, "reportChanges && editor.getValue() === '" + text + "'"); });
    }
    StyleEditorWindow* editor() {
        for (QWidget* window : QApplication::topLevelWidgets())
            if (window->isVisible() && window->objectName() == "styleEditorWindow")
                return static_cast<StyleEditorWindow*>(window);
        return nullptr;
    }
    /// By a double click on its name.
    void open(int row) {
        bringForward(list.window);
        const QPoint name = list.rowRect(row).center();
        QTest::mouseClick(list.view.viewport(), Qt::LeftButton, {}, name);
        QTest::mouseDClick(list.view.viewport(), Qt::LeftButton, {}, name);
        ASSERT_TRUE(editor());
        enter(*editor());
        ASSERT_TRUE(until([&] { return holds(web, "reportChanges && editor.isFocused()"); }));
    }
    /// No window manager makes it the active one.
    static void enter(QWidget& window) { bringForward(window); }
    static void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(QApplication::focusWidget(), key, modifiers);
    }
    static void type(const char* text) { QTest::keyClicks(QApplication::focusWidget(), text); }
    template <typename Sheet>
    Sheet* sheet(Qt::Key key, Qt::KeyboardModifiers modifiers) {
        press(key, modifiers);
        EXPECT_TRUE(until([&] { return editor()->findChild<Sheet*>(); }));
        auto* opened = editor()->findChild<Sheet*>();
        enter(*opened);
        return opened;
    }
    template <typename Sheet>
    void leave() {
        ASSERT_TRUE(until([&] { return !editor()->findChild<Sheet*>(); }));
        enter(*editor());
        ASSERT_TRUE(until([&] { return holds(web, "editor.isFocused()"); }));
    }
    QComboBox& picker() { return *editor()->findChild<QComboBox*>("sectionPicker"); }
    styleContainer stored(const char* file = "/container/styledb.sdb") {
        list.machine.dispatcher.runAll();
        return decodeDatabase(list.machine.files.contents.at(file))->styles.at(0);
    }

    ListWindow list{[this](mainWindowCommands& commands) {
        commands.mayClose = [this](auto retry) { return others.mayClose(std::move(retry)); };
    }};
    shownWebView web; ///< of the window that opened last
    OtherWindows others{
        list.application,
        [this](QWidget* parent) { return web = runningWebEngine().makeView(parent); },
        TESSARIL_RESOURCES "/Ace/index.html"};
};

TEST_F(StyleEditorTest, AStyleIsWrittenSavedAndClosed) {
    RecordingAlerts& alerts = list.machine.alerts;
    put({custom(7, "a{b:c}")});
    open(0);
    type("x");
    ASSERT_TRUE(until([&] { return editor()->isWindowModified(); }));

    auto* added = sheet<NewSectionSheet>(Qt::Key_N, Qt::ControlModifier | Qt::ShiftModifier);
    added->findChild<QLineEdit*>("ruleField")->setText(" b.example ");
    press(Qt::Key_Return);
    leave<NewSectionSheet>();
    ASSERT_TRUE(shows(""));
    EXPECT_EQ(picker().currentText().toStdString(), "Section 2");

    auto* rules = sheet<RuleEditorSheet>(Qt::Key_R, Qt::ControlModifier);
    auto* name = rules->findChild<QLineEdit*>("sectionNameField");
    name->setText("Night");
    name->setFocus();
    press(Qt::Key_Return);
    leave<RuleEditorSheet>();
    EXPECT_EQ(picker().currentText().toStdString(), "Night");

    evaluated(web, "editor.setValue('d{e:f}'); 1");
    press(Qt::Key_B, Qt::ControlModifier | Qt::ShiftModifier);
    ASSERT_TRUE(shows("d {\\n\\te: f\\n}"));
    press(Qt::Key_Z, Qt::ControlModifier);
    ASSERT_TRUE(shows("d{e:f}"));
    type("y");
    press(Qt::Key_S, Qt::ControlModifier);
    ASSERT_TRUE(until([&] { return !editor()->isWindowModified(); }));
    const std::vector<styleSection> saved = stored().styleData.sections;
    ASSERT_EQ(saved.size(), 2U);
    EXPECT_EQ(saved[0].code, "xa{b:c}");
    EXPECT_EQ(saved[1].code, "yd{e:f}") << "typed just before";
    EXPECT_EQ(saved[1].domains, std::vector<std::string>{"b.example"});
    EXPECT_EQ(saved[1].sectionName, "Night");
    EXPECT_EQ(saved[1].compiledcode, "yd{e:f}");
    EXPECT_EQ(stored("wormhole/styleDBUpdated"), stored()) << "so the extension has it";

    const auto close = [&](int answer) {
        alerts.answers = {{.button = answer}};
        press(Qt::Key_W, Qt::ControlModifier);
        return until([&] { return alerts.answers.empty(); });
    };
    type("z");
    ASSERT_TRUE(close(1)); // Cancel
    EXPECT_TRUE(editor() && editor()->isWindowModified());
    ASSERT_TRUE(close(0)); // Save
    ASSERT_TRUE(until([&] { return !editor(); }));
    EXPECT_TRUE(list.application.openStyles().isEmpty());
    EXPECT_EQ(stored().styleData.sections[1].code, "yzd{e:f}");
}

TEST_F(StyleEditorTest, SectionsKeepWhatIsTypedWhileTheyAreSwitched) {
    styleContainer style = custom(7, "a");
    style.styleData.sections.push_back({.code = "b"});
    put({style});
    open(0);
    type("1");
    press(Qt::Key_PageDown, Qt::ControlModifier);
    ASSERT_TRUE(shows("b"));
    // What a key does that is pressed before the application has done the rest.
    EXPECT_TRUE(holds(web, "(reportChanges = false, editor.setValue('b'), reportChanges) &&"
                           "editor.getSelectedText() === ''"));
    EXPECT_TRUE(holds(web, "(editor.execCommand('undo'), editor.getValue() === 'b')"));
    EXPECT_TRUE(holds(web, "(editor.insert('k'), editor.moveCursorTo(0, 0),"
                           " editor.getCursorPosition().column === 1)"));
    EXPECT_TRUE(holds(web, "(editor.getSession().setUndoManager(new ace.UndoManager()),"
                           " editor.execCommand('undo'), editor.getValue() === 'b')"));
    EXPECT_TRUE(holds(web, "(editor.clearSelection(), true)"));
    type("2");
    press(Qt::Key_PageUp, Qt::ControlModifier);
    ASSERT_TRUE(shows("1a"));
    press(Qt::Key_F6);
    EXPECT_TRUE(picker().hasFocus());
    press(Qt::Key_Down);
    ASSERT_TRUE(shows("2b"));
    EXPECT_TRUE(picker().hasFocus());
    press(Qt::Key_Return);
    EXPECT_TRUE(until([&] { return holds(web, "editor.isFocused()"); }));

    // A key that is held since before the page had the focus.
    QKeyEvent held(QEvent::KeyPress, Qt::Key_Return, {}, "\r", true);
    QApplication::sendEvent(QApplication::focusWidget(), &held);

    list.machine.alerts.answers = {{.button = 0}};
    type("3");
    press(Qt::Key_S, Qt::ControlModifier);
    press(Qt::Key_W, Qt::ControlModifier); // waits for the other
    ASSERT_TRUE(until([&] { return !editor(); }));
    EXPECT_THAT(list.machine.alerts.questions, IsEmpty());
    EXPECT_EQ(stored().styleData.sections[1].code, "32b");
}

TEST_F(StyleEditorTest, NothingHappensBehindASheet) {
    styleContainer style = custom(7, "a");
    style.styleData.sections.push_back({.domains = {"b.example"}, .code = "b"});
    put({style});
    open(0);
    for (const Qt::Key key : {Qt::Key_R, Qt::Key_R, Qt::Key_PageDown, Qt::Key_W})
        press(key, Qt::ControlModifier);
    ASSERT_TRUE(until([&] { return editor()->findChild<RuleEditorSheet*>(); }));
    EXPECT_THAT(editor()->findChildren<RuleEditorSheet*>(), SizeIs(1));
    auto* rules = editor()->findChild<RuleEditorSheet*>();
    enter(*rules);
    // Opened once more from the list.
    list.application.listCommands().openSelected({0});
    ASSERT_TRUE(until([&] { return rules->isActiveWindow(); }));
    rules->findChild<QLineEdit*>("sectionNameField")->setText("First");
    rules->accept();
    leave<RuleEditorSheet>();
    EXPECT_EQ(picker().currentText().toStdString(), "First");
    press(Qt::Key_S, Qt::ControlModifier);
    ASSERT_TRUE(until([&] { return !editor()->isWindowModified(); }));
    EXPECT_EQ(stored().styleData.sections[1].sectionName, std::nullopt);
    EXPECT_EQ(stored().styleData.sections[1].domains, std::vector<std::string>{"b.example"});
}

TEST_F(StyleEditorTest, AnInstalledStyleIsOnlyRead) {
    styleContainer style = custom(7, "a");
    style.source = sourceUserCSS;
    put({style});
    open(0);
    ASSERT_TRUE(until([&] { return list.machine.alerts.questions.size() == 1; }));
    type("typed");
    press(Qt::Key_Plus, Qt::ControlModifier);
    auto* rules = sheet<RuleEditorSheet>(Qt::Key_R, Qt::ControlModifier);
    EXPECT_FALSE(rules->findChild<QLineEdit*>("sectionNameField")->isEnabled());
    press(Qt::Key_Escape);
    leave<RuleEditorSheet>();
    EXPECT_TRUE(holds(web, "editor.getValue() === 'a' && editor.getFontSize() === 13"));
    press(Qt::Key_W, Qt::ControlModifier);
    EXPECT_TRUE(until([&] { return !editor(); }));
}

TEST_F(StyleEditorTest, QuittingAsksForEachStyleUntilOneStays) {
    put({custom(1, "a"), custom(2, "b"), custom(3, "c")});
    std::vector<StyleEditorWindow*> windows;
    for (int row = 0; row < 3; ++row) {
        if (QWidget* last = windows.empty() ? nullptr : windows.back()) last->hide();
        open(row);
        if (row != 1) type("x");
        windows.push_back(editor());
    }
    for (StyleEditorWindow* window : windows)
        window->show();
    RecordingAlerts& alerts = list.machine.alerts;
    alerts.answers = {{.button = 0}, {.button = 1}};
    list.window.close();
    ASSERT_TRUE(until([&] { return alerts.questions.size() == 2; }));
    EXPECT_TRUE(list.window.isVisible());
    EXPECT_EQ(editor(), windows[2]) << "the others have closed";
    EXPECT_EQ(stored().styleData.sections[0].code, "xa");

    enter(*windows[2]);
    sheet<RuleEditorSheet>(Qt::Key_R, Qt::ControlModifier);
    list.window.close();
    EXPECT_EQ(alerts.beeps, 1) << "the sheet may hold rules that are not kept yet";
    EXPECT_THAT(alerts.questions, SizeIs(2));
    EXPECT_TRUE(list.window.isVisible());
    windows[2]->findChild<RuleEditorSheet*>()->reject();

    alerts.answers = {{.button = 2}};
    list.window.close();
    ASSERT_TRUE(until([&] { return !list.window.isVisible(); }));
    EXPECT_FALSE(editor());
}

TEST_F(StyleEditorTest, UnsavedTextIsOfferedAtTheNextStart) {
    put({custom(7, "a")});
    open(0);
    type("typed");
    ASSERT_TRUE(until([&] { return editor()->isWindowModified(); }));
    others.keepUnsaved();
    list.machine.dispatcher.runAll();
    const auto& files = list.machine.files.contents;
    ASSERT_TRUE(files.contains("/drafts/7.draft"));
    delete editor(); // as when the application ends by a signal

    list.application.draftOffer().setOpen([&](const styleToEdit& opened) {
        others.openStyleEditor(opened, list.window);
        return true;
    });
    list.machine.alerts.answers = {{.button = 0}};
    list.application.styleListShown();
    ASSERT_TRUE(until([&] { return editor() && editor()->isWindowModified(); }));
    enter(*editor());
    ASSERT_TRUE(shows("typeda"));
    press(Qt::Key_S, Qt::ControlModifier);
    ASSERT_TRUE(until([&] { return !editor()->isWindowModified(); }));
    EXPECT_EQ(stored().styleData.sections[0].code, "typeda");
    EXPECT_FALSE(files.contains("/drafts/7.draft"));
}

} // namespace
} // namespace tessaril
