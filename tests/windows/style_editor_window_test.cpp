#include "events/notification_names.h"
#include "preferences/preference_keys.h"
#include "support/event_loop.h"
#include "support/sample_styles.h"
#include "support/stand_in_machine.h"
#include "support/test.h"
#include "windows/style_editor_window.h"

#include <QtWidgets>

namespace tessaril {
namespace {

/// The window on a machine that cannot show the page.
struct StyleEditorWindowTest : ::testing::Test {
    static styleContainer style() {
        styleContainer made = namedStyle("A & <b>", 7);
        made.source = sourceCustom;
        made.styleData.sections = {{.code = "a"}, {.code = "b", .sectionName = "Dark\n& wide"}};
        return made;
    }
    StyleEditorWindow& open() {
        application.store().appendStyle(style());
        window = std::make_unique<StyleEditorWindow>(
            styleToEdit{style()},
            styleEditorParts{.editor = {.preferences = application.preferences(),
                                        .center = application.notificationCenter()},
                             .session = application.styleEditor(),
                             .newStyle = [](QWidget&) { return nullptr; },
                             .exportStyle = [](const styleContainer&, QWidget&) { return nullptr; },
                             .openPreferences = [] {}});
        window->setAttribute(Qt::WA_DeleteOnClose, false);
        window->resize(1200, 600);
        window->show();
        machine.dispatcher.runAll();
        return *window;
    }
    void prefer(std::string_view key, const preferenceValue& value) {
        application.preferences().set(key, value);
        machine.dispatcher.runAll();
        QCoreApplication::processEvents();
    }
    /// The texts that are shown below the toolbar's icons.
    std::set<QString> labels() {
        std::set<QString> texts;
        for (const QToolButton* button : window->findChildren<QToolButton*>())
            if (button->isVisible() && button->toolButtonStyle() == Qt::ToolButtonTextUnderIcon)
                texts.insert(button->text());
        for (const QLabel* label : window->findChildren<QLabel*>())
            if (label->isVisible() && label->objectName().isEmpty()) texts.insert(label->text());
        return texts;
    }
    /// How often the name stands in the window.
    int namesShown() {
        int count = 0;
        for (const QLabel* label : window->findChildren<QLabel*>("styleNameLabel"))
            if (label->isVisible()) ++count;
        return count;
    }

    StandInMachine machine;
    Application application{machine.surroundings()};
    std::unique_ptr<StyleEditorWindow> window;
};

TEST_F(StyleEditorWindowTest, TheToolbarTakesThePreferredForm) {
    open();
    auto& toolbar = *window->findChild<QToolBar*>("editorToolbar");
    const auto height = [&] { return toolbar.sizeHint().height(); };
    const int unified = height();
    EXPECT_THAT(labels(), IsEmpty());
    EXPECT_EQ(namesShown(), 1);
    prefer(preferenceKeys::showEditorTitle, false);
    EXPECT_EQ(namesShown(), 0);
    EXPECT_TRUE(window->windowTitle().contains("A & <b>"));

    prefer(preferenceKeys::editorStyle, "expanded");
    EXPECT_EQ(namesShown(), 1) << "always in this form";
    EXPECT_THAT(labels(), SizeIs(6));
    window->resize(window->minimumSize());
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
    open();
    std::set<QKeySequence> keys;
    int commands = 0;
    for (const QAction* menu : window->menuBar()->actions())
        for (const QAction* command : menu->menu()->actions())
            for (const QKeySequence& key : command->shortcuts()) {
                EXPECT_TRUE(keys.insert(key).second) << key.toString().toStdString();
                ++commands;
            }
    EXPECT_GT(commands, 15);
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
    open();
    auto& picker = *window->findChild<QComboBox*>("sectionPicker");
    EXPECT_EQ(picker.itemText(1).toStdString(), "Dark & wide");
    picker.setFocus();
    QTest::keyClicks(&picker, "dark &");
    EXPECT_EQ(picker.currentIndex(), 1);
    EXPECT_EQ(window->focusWidget(), &picker) << "one can go on by keys";
    QTest::keyClick(&picker, Qt::Key_Up);
    for (const char* command : {"Next Section", "Duplicate Section"})
        for (QAction* action : window->findChildren<QAction*>())
            if (action->text().remove('&') == command) action->trigger();
    machine.dispatcher.runAll();
    EXPECT_EQ(picker.count(), 3);
    EXPECT_EQ(picker.currentIndex(), 2);
    EXPECT_TRUE(window->isWindowModified());

    application.store().renameStyle(0, "Renamed");
    machine.dispatcher.runAll();
    EXPECT_EQ(window->windowTitle().toStdString(), "Renamed[*]");
    machine.alerts.answers = {{.button = 0}};
    window->close();
    machine.dispatcher.runAll();
    EXPECT_FALSE(window->isVisible());
    EXPECT_THAT(application.store().findStyle(7)->styleData.sections, SizeIs(3));
    EXPECT_EQ(application.store().findStyle(7)->styleData.name, "Renamed");
}

} // namespace
} // namespace tessaril
