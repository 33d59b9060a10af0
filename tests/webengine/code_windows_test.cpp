#include "formats/user_css_writer.h"
#include "preferences/preferences.h"
#include "support/event_loop.h"
#include "support/import_machine.h"
#include "support/running_web_engine.h"
#include "support/test.h"
#include "windows/code_editor.h"
#include "windows/export_sheet.h"
#include "windows/import_moz_doc_view.h"

#include <QtWidgets>

namespace tessaril {
namespace {

/// A dialog with code, used by its keys as a person does.
struct CodeWindowTest : ::testing::Test, ImportMachine {
    CodeWindowTest() { registerPreferenceDefaults(settings, shared, 1, false); }

    editorParts parts() {
        return {[this](QWidget* parent) { return web = runningWebEngine().makeView(parent); },
                TESSARIL_RESOURCES "/Ace/index.html", settings, center};
    }

    /// Until its page is there.
    void show(QDialog& dialog) {
        bringForward(dialog);
        ASSERT_TRUE(eventually(
            [&] { return isInPage("editor.getOption('theme') !== undefined && reportChanges"); }));
    }
    bool isInPage(const char* condition) { return holds(web, condition); }
    std::string textInPage() { return std::get<std::string>(*evaluated(web, "editor.getValue()")); }
    static void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(QApplication::focusWidget(), key, modifiers);
    }
    static void type(const char* text) { QTest::keyClicks(QApplication::focusWidget(), text); }

    MemoryPreferences settingsStore, sharedStore;
    Preferences settings{settingsStore}, shared{sharedStore};
    shownWebView web;
};

struct PasteWindowTest : CodeWindowTest {
    PasteWindowTest() {
        show(window);
        EXPECT_TRUE(eventually([&] { return isInPage("editor.isFocused()"); }))
            << "the focus starts in the code";
    }

    QPushButton& button() { return *window.findChild<QPushButton*>("importButton"); }
    /// The import has reached the background.
    [[nodiscard]] bool isUnderWay() {
        return eventually([&] { return !dispatcher.backgroundTasks.empty(); });
    }

    PasteImport importer{importing()};
    ImportMozDocView window{{parts(), importer}, nullptr};
};

TEST_F(PasteWindowTest, ImportsWhatWasTypedInTheLastInstant) {
    EXPECT_FALSE(button().isEnabled());
    type("first");
    EXPECT_TRUE(eventually([&] { return button().isEnabled(); }));
    press(Qt::Key_Return); // a line break, not the default button
    type("last");
    press(Qt::Key_Return, Qt::ControlModifier);
    ASSERT_TRUE(isUnderWay());
    EXPECT_FALSE(button().isEnabled());
    dispatcher.runAll();
    EXPECT_EQ(last().styleData.sections.at(0).code, "first\nlast");
    EXPECT_FALSE(window.isVisible());
    EXPECT_THAT(alerts.questions, IsEmpty());
}

TEST_F(PasteWindowTest, KeepsATextThatHoldsNoStyle) {
    evaluated(web, "editor.setValue('@-moz-document {'); 1");
    ASSERT_TRUE(eventually([&] { return button().isEnabled(); }));
    press(Qt::Key_F6);
    EXPECT_TRUE(button().hasFocus());
    press(Qt::Key_Space);
    ASSERT_TRUE(isUnderWay());
    dispatcher.runAll();
    ASSERT_EQ(alerts.alerts.size(), 1U);
    EXPECT_EQ(alerts.alerts[0].title, "Invalid Style");
    EXPECT_TRUE(window.isVisible() && button().isEnabled());
    EXPECT_EQ(textInPage(), "@-moz-document {");
    EXPECT_FALSE(button().hasFocus()) << "nor has Cancel";
    EXPECT_TRUE(eventually([&] { return isInPage("editor.isFocused()"); }));
}

TEST_F(PasteWindowTest, LosesNoTextByEscapeAndAddsNothingOnceStopped) {
    type("; "); // nothing to complete
    press(Qt::Key_Return, Qt::ControlModifier);
    ASSERT_TRUE(isUnderWay());
    press(Qt::Key_Escape); // stops the import
    ASSERT_TRUE(eventually([&] { return button().isEnabled(); }));
    dispatcher.runAll();
    EXPECT_THAT(names(), IsEmpty());

    evaluated(web, "editor.setValue('a {\\n\\n}'); editor.gotoLine(2);"
                   "editor.execCommand('startAutocomplete'); 1");
    ASSERT_TRUE(eventually([&] { return isInPage("!!editor.completer?.popup?.isOpen"); }));
    press(Qt::Key_Escape);
    ASSERT_TRUE(eventually([&] { return isInPage("!editor.completer.popup.isOpen"); }));
    EXPECT_THAT(alerts.questions, IsEmpty());
}

TEST_F(PasteWindowTest, AsksAboutWhatWasTypedInTheLastInstantHoweverItIsClosed) {
    alerts.answers = {{0}, {0}, {1}};
    type("x");
    press(Qt::Key_W, Qt::ControlModifier);
    ASSERT_TRUE(eventually([&] { return alerts.questions.size() == 1; }));
    evaluated(web, "editor.setValue(''); 1");
    ASSERT_TRUE(eventually([&] { return !button().isEnabled(); }));
    type("x");
    window.close(); // as the title bar's button does
    ASSERT_TRUE(eventually([&] { return alerts.questions.size() == 2; }));
    EXPECT_TRUE(window.isVisible());
    press(Qt::Key_Escape);
    EXPECT_TRUE(eventually([&] { return !window.isVisible(); }));
    EXPECT_THAT(alerts.questions, SizeIs(3));

    bringForward(window);
    press(Qt::Key_C, Qt::AltModifier);
    EXPECT_TRUE(eventually([&] { return !window.isVisible(); }));
    EXPECT_THAT(alerts.questions, SizeIs(3)) << "Cancel asks nothing";
}

struct ExportSheetTest : CodeWindowTest {
    ExportSheetTest() {
        style.preprocessor = "Less";
        desk.show();
    }

    /// Types the name into the save panel, which is open.
    void saveAs(QWidget& sheet, const QString& name) {
        auto* panel = sheet.findChild<QFileDialog*>();
        ASSERT_TRUE(panel);
        EXPECT_EQ(panel->windowTitle(), "Export User CSS File");
        auto* field = panel->findChild<QLineEdit*>("fileNameEdit");
        EXPECT_EQ(field->text(), "Dark-light.user.css");
        field->setText(name);
        QMetaObject::invokeMethod(panel, "accept");
        EXPECT_TRUE(eventually([&] { return !sheet.findChild<QFileDialog*>(); }));
        dispatcher.runAll();
    }

    QWidget desk;
    styleContainer style = namedStyle("Dark/light", 1);
    StyleExport exporter{files, alerts, dispatcher};
};

TEST_F(ExportSheetTest, ShowsAndSavesTheText) {
    ExportSheet sheet(style, {parts(), exporter}, &desk);
    show(sheet);
    EXPECT_EQ(textInPage(), writeUserCSS(style));
    EXPECT_TRUE(isInPage("editor.session.getMode().$id === 'ace/mode/css'"));

    press(Qt::Key_F6); // from the Save button into the code
    EXPECT_TRUE(eventually([&] { return isInPage("editor.isFocused()"); }));
    type("x");
    EXPECT_EQ(textInPage(), writeUserCSS(style)) << "read-only";
    press(Qt::Key_S, Qt::ControlModifier);
    saveAs(sheet, "typed");
    ASSERT_EQ(files.contents.size(), 1U);
    EXPECT_EQ(files.contents.begin()->first.filename(), "typed.user.css");
    EXPECT_EQ(files.contents.begin()->second, writeUserCSS(style));
}

TEST_F(ExportSheetTest, FindsFromAnywhereAndClosesByItsKeys) {
    ExportSheet sheet(style, {parts(), exporter}, &desk);
    show(sheet);
    ASSERT_TRUE(sheet.findChild<QPushButton*>("saveButton")->hasFocus());
    press(Qt::Key_F, Qt::ControlModifier);
    type("color");
    EXPECT_TRUE(eventually([&] { return isInPage("editor.getSelectedText() === 'color'"); }));
    press(Qt::Key_Escape);
    EXPECT_TRUE(sheet.isVisible());
    EXPECT_TRUE(eventually([&] { return isInPage("editor.isFocused()"); }));
    press(Qt::Key_Escape);
    EXPECT_TRUE(eventually([&] { return !sheet.isVisible(); }));
}

TEST_F(ExportSheetTest, SavesWithoutABrowserEngine) {
    editorParts none = parts();
    none.makeWebView = {};
    ExportSheet sheet(style, {none, exporter}, &desk);
    sheet.show();
    sheet.findChild<QPushButton*>("saveButton")->click();
    saveAs(sheet, "a.css");
    ASSERT_EQ(files.contents.size(), 1U);
    EXPECT_EQ(files.contents.begin()->second, writeUserCSS(style));
}

} // namespace
} // namespace tessaril
