#include "preferences/preference_keys.h"
#include "support/list_window.h"
#include "support/test.h"

namespace tessaril {
namespace {

/// The window on a machine that cannot show the page.
struct StyleEditorWindowTest : ::testing::Test, ListWindow {
    StyleEditorWindowTest() {
        styleContainer style = namedStyle("A & <b>", 7);
        style.styleData.sections = {{.code = "a"}, {.code = "b", .sectionName = "Dark\n& wide"}};
        application.store().appendStyle(style);
        others.openStyleEditor(styleToEdit{style}, window);
        for (QWidget* each : QApplication::topLevelWidgets())
            if (each->objectName() == "styleEditorWindow") editor = static_cast<QMainWindow*>(each);
        editor->resize(1200, 600);
        settle();
    }
    void prefer(std::string_view key, const preferenceValue& value) {
        application.preferences().set(key, value);
        settle();
    }
    /// The texts that are shown below the toolbar's icons.
    std::set<QString> labels() {
        std::set<QString> texts;
        for (const QToolButton* button : editor->findChildren<QToolButton*>())
            if (button->isVisible() && button->toolButtonStyle() == Qt::ToolButtonTextUnderIcon)
                texts.insert(button->text());
        for (const QLabel* label : editor->findChildren<QLabel*>())
            if (label->isVisible() && label->objectName().isEmpty()) texts.insert(label->text());
        return texts;
    }
    auto namesShown() {
        return std::ranges::count(editor->findChildren<QLabel*>("styleNameLabel"), true,
                                  &QWidget::isVisible);
    }

    QPointer<QMainWindow> editor;
};

TEST_F(StyleEditorWindowTest, TheToolbarTakesThePreferredForm) {
    auto& toolbar = *editor->findChild<QToolBar*>("editorToolbar");
    const auto height = [&] { return toolbar.sizeHint().height(); };
    const int unified = height();
    EXPECT_THAT(labels(), IsEmpty());
    EXPECT_EQ(namesShown(), 1);
    prefer(preferenceKeys::showEditorTitle, false);
    EXPECT_EQ(namesShown(), 0);
    EXPECT_TRUE(editor->windowTitle().contains("A & <b>"));

    prefer(preferenceKeys::editorStyle, "expanded");
    EXPECT_EQ(namesShown(), 1) << "always in this form";
    EXPECT_THAT(labels(), SizeIs(6));
    editor->resize(editor->minimumSize());
    QCoreApplication::processEvents();
    EXPECT_THAT(labels(), IsEmpty()) << "there is no room for them";
    for (const QToolButton* button : toolbar.findChildren<QToolButton*>())
        EXPECT_EQ(button->isVisible(), button->objectName() != "qt_toolbar_ext_button");

    prefer(preferenceKeys::editorStyle, "compact");
    EXPECT_LT(height(), unified);
    EXPECT_EQ(namesShown(), 0);
    prefer(preferenceKeys::editorStyle, "unknown");
    EXPECT_EQ(height(), unified);
}

TEST_F(StyleEditorWindowTest, EveryCommandHasAKeyOfItsOwn) {
    std::set<QKeySequence> keys;
    for (const QAction* menu : editor->menuBar()->actions())
        for (const QAction* command : menu->menu()->actions())
            for (const QKeySequence& key : command->shortcuts())
                EXPECT_TRUE(keys.insert(key).second) << key.toString().toStdString();
    EXPECT_GT(keys.size(), 15U);
    // A field or a page keeps those for itself.
    for (const auto editing :
         {QKeySequence::MoveToStartOfLine, QKeySequence::MoveToEndOfLine,
          QKeySequence::SelectStartOfLine, QKeySequence::SelectEndOfLine,
          QKeySequence::DeleteCompleteLine, QKeySequence::DeleteEndOfLine, QKeySequence::Copy,
          QKeySequence::Cut, QKeySequence::Paste, QKeySequence::SelectAll})
        for (const QKeySequence& key : QKeySequence::keyBindings(editing))
            EXPECT_FALSE(keys.contains(key)) << key.toString().toStdString();
    for (const char* key : {"Ctrl+S", "Ctrl+W", "Ctrl+F", "F3", "Ctrl+PgUp", "Ctrl+PgDown",
                            "Ctrl++", "Ctrl+-", "Ctrl+L"})
        EXPECT_TRUE(keys.contains(QKeySequence(key))) << key;
}

TEST_F(StyleEditorWindowTest, WithoutAPageItsCommandsStillWork) {
    auto& picker = partOf<QComboBox>(*editor, "sectionPicker");
    EXPECT_EQ(picker.itemText(1).toStdString(), "Dark & wide");
    picker.setFocus();
    QTest::keyClicks(&picker, "dark &");
    EXPECT_EQ(picker.currentIndex(), 1);
    EXPECT_EQ(editor->focusWidget(), &picker) << "one can go on by keys";
    QTest::keyClick(&picker, Qt::Key_Up);
    for (const char* command : {"Next Section", "Duplicate Section"})
        for (QAction* action : editor->findChildren<QAction*>())
            if (action->text().remove('&') == command) action->trigger();
    machine.dispatcher.runAll();
    EXPECT_EQ(picker.count(), 3);
    EXPECT_EQ(picker.currentIndex(), 2);
    EXPECT_TRUE(editor->isWindowModified());

    application.store().renameStyle(0, "Renamed");
    machine.dispatcher.runAll();
    EXPECT_EQ(editor->windowTitle().toStdString(), "Renamed[*]");
    machine.alerts.answers = {{.button = 0}};
    editor->close();
    machine.dispatcher.runAll();
    EXPECT_FALSE(editor && editor->isVisible());
    const styleJSON saved = application.store().findStyle(7)->styleData;
    EXPECT_TRUE(saved.sections.size() == 3 && saved.name == "Renamed");
}

} // namespace
} // namespace tessaril
