#include "formats/user_css_writer.h"
#include "support/import_machine.h"
#include "support/list_window.h"
#include "support/running_web_engine.h"
#include "support/test.h"
#include "windows/export_sheet.h"
#include "windows/import_moz_doc_view.h"

namespace tessaril {
namespace {

/// A dialog with code, used by its keys as a person does.
struct CodeWindowTest : ::testing::Test, ImportMachine, RealPages {
    CodeWindowTest() { registerPreferenceDefaults(settings, shared, 1, false); }

    editorParts parts() { return {makePage, editorPage, settings, center}; }

    /// Until its page is there.
    void show(QDialog& dialog) {
        bringForward(dialog);
        EXPECT_TRUE(comesToHold("editor.getOption('theme') !== undefined && reportChanges"));
    }

    MemoryPreferences settingsStore, sharedStore;
    Preferences settings{settingsStore}, shared{sharedStore};
};

struct PasteWindowTest : CodeWindowTest {
    PasteWindowTest() {
        show(window);
        EXPECT_TRUE(comesToHold("editor.isFocused()")) << "the focus starts in the code";
    }

    /// Does the import that has been asked for.
    void import() {
        ASSERT_TRUE(eventually([&] { return !dispatcher.backgroundTasks.empty(); }));
        EXPECT_FALSE(button.isEnabled());
        dispatcher.runAll();
    }

    PasteImport importer{importing()};
    ImportMozDocView window{{parts(), importer}, nullptr};
    QPushButton& button = partOf<QPushButton>(window, "importButton");
};

TEST_F(PasteWindowTest, ImportsWhatWasTypedInTheLastInstant) {
    EXPECT_FALSE(button.isEnabled());
    press("'first'");
    EXPECT_TRUE(eventually([&] { return button.isEnabled(); }));
    press("Return"); // a line break, not the default button
    press("'last' Ctrl+Return");
    import();
    EXPECT_EQ(last().styleData.sections.at(0).code, "first\nlast");
    EXPECT_FALSE(window.isVisible());
    EXPECT_THAT(alerts.questions, IsEmpty());
}

TEST_F(PasteWindowTest, KeepsATextThatHoldsNoStyle) {
    inPage("editor.setValue('@-moz-document {'); 1");
    ASSERT_TRUE(eventually([&] { return button.isEnabled(); }));
    press("F6");
    EXPECT_TRUE(button.hasFocus());
    press("Space");
    import();
    EXPECT_THAT(alerts.taken(), ElementsAre("Invalid Style"));
    EXPECT_TRUE(window.isVisible() && button.isEnabled());
    EXPECT_EQ(textInPage(), "@-moz-document {");
    EXPECT_TRUE(comesToHold("editor.isFocused()")) << "nor has Cancel the focus";
}

TEST_F(PasteWindowTest, LosesNoTextByEscapeAndAddsNothingOnceStopped) {
    press("'; '"); // nothing to complete
    press("Ctrl+Return");
    ASSERT_TRUE(eventually([&] { return !dispatcher.backgroundTasks.empty(); }));
    press("Esc"); // stops the import
    ASSERT_TRUE(eventually([&] { return button.isEnabled(); }));
    dispatcher.runAll();
    EXPECT_THAT(names(), IsEmpty());

    inPage("editor.setValue('a {\\n\\n}'); editor.gotoLine(2);"
           "editor.execCommand('startAutocomplete'); 1");
    ASSERT_TRUE(comesToHold("!!editor.completer?.popup?.isOpen"));
    press("Esc");
    ASSERT_TRUE(comesToHold("!editor.completer.popup.isOpen"));
    EXPECT_THAT(alerts.questions, IsEmpty());
}

TEST_F(PasteWindowTest, AsksAboutWhatWasTypedInTheLastInstantHoweverItIsClosed) {
    alerts.answers = {{0}, {0}, {1}};
    press("'x' Ctrl+W");
    ASSERT_TRUE(eventually([&] { return alerts.questions.size() == 1; }));
    inPage("editor.setValue(''); 1");
    ASSERT_TRUE(eventually([&] { return !button.isEnabled(); }));
    press("'x'");
    window.close(); // as the title bar's button does
    ASSERT_TRUE(eventually([&] { return alerts.questions.size() == 2; }));
    EXPECT_TRUE(window.isVisible());
    press("Esc");
    EXPECT_TRUE(eventually([&] { return !window.isVisible(); }));
    EXPECT_THAT(alerts.questions, SizeIs(3));

    bringForward(window);
    press("Alt+C");
    EXPECT_TRUE(eventually([&] { return !window.isVisible(); }));
    EXPECT_THAT(alerts.questions, SizeIs(3)) << "Cancel asks nothing";
}

TEST_F(CodeWindowTest, TheExportSheetShowsFindsAndSavesTheText) {
    styleContainer style = namedStyle("Dark/light", 1);
    style.preprocessor = "Less";
    StyleExport exporter{files, alerts, dispatcher};
    QWidget desk;
    desk.show();
    ExportSheet sheet(style, {parts(), exporter}, &desk);
    show(sheet);
    EXPECT_EQ(textInPage(), writeUserCSS(style));
    EXPECT_TRUE(holds("editor.session.getMode().$id === 'ace/mode/css'"));
    ASSERT_TRUE(partOf<QPushButton>(sheet, "saveButton").hasFocus());
    press("Ctrl+F 'color'");
    EXPECT_TRUE(comesToHold("editor.getSelectedText() === 'color'"));
    press("Esc");
    EXPECT_TRUE(sheet.isVisible() && comesToHold("editor.isFocused()"));
    press("'x'");
    EXPECT_EQ(textInPage(), writeUserCSS(style)) << "read-only";

    press("Ctrl+S");
    auto* panel = sheet.findChild<QFileDialog*>();
    ASSERT_TRUE(panel);
    EXPECT_EQ(panel->windowTitle(), "Export User CSS File");
    auto& name = partOf<QLineEdit>(*panel, "fileNameEdit");
    EXPECT_EQ(name.text(), "Dark-light.user.css");
    name.setText("typed");
    QMetaObject::invokeMethod(panel, "accept");
    EXPECT_TRUE(eventually([&] { return !sheet.findChild<QFileDialog*>(); }));
    dispatcher.runAll();
    ASSERT_EQ(files.contents.size(), 1U);
    EXPECT_EQ(files.contents.begin()->first.filename(), "typed.user.css");
    EXPECT_EQ(files.contents.begin()->second, writeUserCSS(style));
    bringForward(sheet);
    press("Esc");
    EXPECT_TRUE(eventually([&] { return !sheet.isVisible(); }));
}

/// The main window with those that it opens, in an application that ends with its windows.
struct QuittingTest : ::testing::Test, RealPages, ListWindow {
    QuittingTest() {
        makeWebView = makePage;
        QApplication::setQuitOnLastWindowClosed(true);
    }
    ~QuittingTest() override { QApplication::setQuitOnLastWindowClosed(false); }

    /// Runs the application with `user` in front of it; whether it has quit by itself afterwards.
    bool quits(const std::function<void()>& user) {
        QTimer::singleShot(0, &window, user);
        QTimer::singleShot(std::chrono::minutes(2), &window, [] { QApplication::exit(1); });
        return QApplication::exec() == 0;
    }
    QWidget* pasteWindow() { return window.findChild<ImportMozDocView*>(); }
    bool isPasteWindowShown() { return pasteWindow() && pasteWindow()->isVisible(); }
};

TEST_F(QuittingTest, AsksBeforeAPastedTextIsLostAndEndsOnlyIfItMayBe) {
    for (const bool byKey : {false, true}) {
        const auto end = [&] {
            if (byKey) return QTest::keyClick(&window, Qt::Key_Q, Qt::ControlModifier);
            window.close();
        };
        EXPECT_TRUE(quits([&] {
            machine.alerts.answers = {{0}, {1}};
            bringForward(window);
            press("Ctrl+Shift+V");
            ASSERT_TRUE(pasteWindow());
            pasteWindow()->activateWindow();
            ASSERT_TRUE(comesToHold("reportChanges && editor.isFocused()"));
            press("'b {}'");
            end();
            ASSERT_TRUE(eventually(
                [&] { return machine.alerts.answers.size() == 1 || !window.isVisible(); }));
            QCoreApplication::processEvents();
            EXPECT_TRUE(window.isVisible() && isPasteWindowShown());
            end();
        }));
        EXPECT_EQ(machine.alerts.answers.size(), 0U);
        EXPECT_FALSE(window.isVisible() || isPasteWindowShown());
    }
}

} // namespace
} // namespace tessaril
