#include "desktop/directory_resources.h"
#include "desktop/folder_message_channel.h"
#include "desktop/javascript_core_engine.h"
#include "desktop/posix_file_system.h"
#include "formats/user_css_reader.h"
#include "model/database_json.h"
#include "support/event_loop.h"
#include "support/stand_in_machine.h"
#include "support/temporary_folder.h"
#include "windows/color_button.h"
#include "windows/other_windows.h"
#include "windows/style_prop_window.h"
#include "windows/value_stepper.h"
#include "windows/var_range_slider.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <set>

namespace tessaril {
namespace {

using namespace testing;
using ::testing::ElementsAre, ::testing::HasSubstr, ::testing::SizeIs;

constexpr std::string_view everyControl = R"(/* ==UserStyle==
@name Every & control
@namespace a
@version 1
@preprocessor less
@var text font "Font" serif
@var color link "Link & more" #ff8000
@var checkbox wide "Wide & high" 0
@var select theme "Theme" ["Latte", "Mocha"]
@var range size "Size" [16, 8, 32, 1, "px"]
@var number width "Width" [60, 0, 120, 0.5, "em"]
==/UserStyle== */
@-moz-document domain("example.com") {
    a { font: @font; color: @link; size: @size; width: @width; --t: @theme; --w: @wide }
})";

/// The properties of the first style, over real files and the real compilers.
class StylePropWindowTest : public ::testing::Test {
protected:
    StylePropWindowTest() {
        std::filesystem::create_directory(folder / "wormhole");
        main.show();
    }

    void open(styleContainer style) {
        std::ofstream(folder / "styledb.sdb") << *encodeDatabase({.styles = {std::move(style)}});
        start();
        openAgain();
    }
    void start() {
        application = std::make_unique<Application>(applicationSurroundings{
            files, channel, machine.alerts, machine.dispatcher, machine.standard, machine.shared,
            scripts, resources, machine.compilerErrors, machine.extension, machine.externals,
            machine.urls, machine.pictures, folder.path, ""});
        others = std::make_unique<OtherWindows>(
            *application, [](QWidget*) { return shownWebView{}; }, "/none");
        application->listCommands().setRoutes({.openStyleProps = [this](std::int64_t id) {
            return others->openStyleProps(id, main);
        }});
        application->notificationCenter().post("refreshTable");
        machine.dispatcher.runAll();
    }
    void openAgain() {
        application->listCommands().openProperties(0);
        ASSERT_TRUE(shown());
        ASSERT_TRUE(QTest::qWaitForWindowActive(shown()));
    }
    StylePropWindow* shown() { return main.findChild<StylePropWindow*>("stylePropWindow"); }
    template <typename Control>
    Control* control(const char* name) {
        auto* found = shown()->findChild<Control*>(name);
        EXPECT_TRUE(found) << name;
        return found;
    }
    void keys(QWidget* control, std::initializer_list<Qt::Key> pressed) {
        for (const Qt::Key key : pressed)
            QTest::keyClick(control, key);
    }
    void save() {
        QTest::mouseClick(control<QPushButton>("saveButton"), Qt::LeftButton);
        machine.dispatcher.runAll();
        EXPECT_TRUE(eventually([this] { return !shown(); }));
    }
    std::vector<std::string> values() {
        std::vector<std::string> values;
        for (const userVariable& variable : *application->store().styleAt(0)->userVariables)
            values.push_back(variable.currentValue.value_or("none"));
        return values;
    }
    std::string sentMessage() {
        std::string sent;
        for (const auto& file : std::filesystem::directory_iterator(folder / "wormhole"))
            sent += fileContent(file.path());
        return sent;
    }

    TemporaryFolder folder;
    StandInMachine machine;
    PosixFileSystem files;
    FolderMessageChannel channel{files, folder.path};
    JavaScriptCoreEngine scripts;
    DirectoryResources resources{TESSARIL_RESOURCES};
    std::unique_ptr<Application> application;
    std::unique_ptr<OtherWindows> others;
    QWidget main;
};

TEST_F(StylePropWindowTest, BringsChosenValuesToTheExtension) {
    open(*parseUserCSS(everyControl, {[] { return 7; }, [](styleContainer&) {}}));
    auto* font = control<QLineEdit>("inputField");
    font->selectAll();
    QTest::keyClicks(font, "Georgia");
    QTest::mouseClick(control<ColorButton>("colorWell"), Qt::LeftButton);
    auto* colorText = control<QLineEdit>("colorText");
    ASSERT_TRUE(QTest::qWaitForWindowActive(colorText->window()));
    colorText->selectAll();
    QTest::keyClicks(colorText, "#12345");
    EXPECT_FALSE(control<QPushButton>("chooseButton")->isEnabled());
    QTest::keyClicks(colorText, "678");
    keys(colorText, {Qt::Key_Tab});
    keys(colorText->window()->focusWidget(), {Qt::Key_Return}); // in the picker
    keys(control<QCheckBox>("checkbox"), {Qt::Key_Space});
    keys(control<QComboBox>("dropdown"), {Qt::Key_Down});
    keys(control<VarRangeSlider>("rangeSlider"), {Qt::Key_Right, Qt::Key_Right});
    keys(control<ValueStepper>("stepper"), {Qt::Key_Up});
    control<QComboBox>("themeToggle");
    EXPECT_THAT(values(), ElementsAre("serif", "#ff8000", "0", "0", "16", "60")) << "until saved";
    save();
    EXPECT_THAT(values(), ElementsAre("Georgia", "rgba(18,52,86,0.47)", "1", "1", "18.0", "60.5"));
    const std::string message = sentMessage();
    for (const char* compiled : {"font: Georgia", "rgba(18, 52, 86, 0.47)", "size: 18",
                                 "width: 60.5em", "--t: Mocha", "--w: 1"})
        EXPECT_THAT(message, HasSubstr(compiled));

    // Typed to the last moment, with what is there now shown.
    openAgain();
    auto* stepper = control<ValueStepper>("stepper");
    auto* number = stepper->findChild<QLineEdit*>();
    EXPECT_EQ(number->text(), "60.50em");
    number->selectAll();
    QTest::keyClicks(number, "7,25");
    QTest::keyClick(number, Qt::Key_S, Qt::ControlModifier);
    machine.dispatcher.runAll();
    EXPECT_EQ(values().back(), "7.25");
}

TEST_F(StylePropWindowTest, WritesNothingThatNobodyTouched) {
    styleContainer style = *parseUserCSS(everyControl, {[] { return 7; }, [](styleContainer&) {}});
    for (userVariable& variable : *style.userVariables)
        variable.currentValue = "odd\nvalue";
    (*style.userVariables)[4].currentValue = "16.123456789";
    (*style.userVariables)[5].currentValue = "1e9";
    open(style);
    EXPECT_EQ(control<QComboBox>("dropdown")->currentIndex(), -1);
    for (const char* name : {"inputField", "checkbox", "dropdown", "rangeSlider", "stepper"}) {
        control<QWidget>(name)->setFocus();
        QWheelEvent wheel({5, 5}, control<QWidget>(name)->mapToGlobal(QPointF(5, 5)), {}, {0, 120},
                          Qt::NoButton, {}, Qt::NoScrollPhase, false);
        QApplication::sendEvent(control<QWidget>(name), &wheel);
    }
    save();
    EXPECT_EQ(application->store().styleAt(0)->userVariables, style.userVariables);

    openAgain();
    auto* field = control<QLineEdit>("inputField");
    QTest::keyClicks(field, "typed");
    QTest::keyClick(field, Qt::Key_Escape);
    EXPECT_TRUE(eventually([this] { return !shown(); }));
    EXPECT_EQ(application->store().styleAt(0)->userVariables, style.userVariables);
    openAgain();
    machine.alerts.answers = {{.button = 1}};
    control<QPushButton>("resetVarButton")->click();
    EXPECT_EQ(control<QLineEdit>("inputField")->text(), "serif");
    save();
    EXPECT_THAT(values(), ElementsAre("serif", "#ff8000", "0", "0", "16", "60"));
}

TEST_F(StylePropWindowTest, MakesRowsAsTheyComeIntoSight) {
    styleContainer style;
    style.uniqueID = 7;
    style.userVariables.emplace();
    for (int i = 0; i < 1000; ++i)
        style.userVariables->push_back({.type = "text", .label = "V", .currentValue = "x"});
    open(style);
    const auto rows = [this] { return shown()->findChildren<QLineEdit*>("inputField"); };
    EXPECT_LT(rows().size(), 60);
    control<QWidget>("themeToggle")->setFocus();
    std::set<QWidget*> reached;
    while (reached.insert(QApplication::focusWidget()).second)
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    EXPECT_THAT(rows(), SizeIs(1000)) << "the Tab key brings them into sight";
    EXPECT_EQ(QApplication::focusWidget(), control<QWidget>("themeToggle"));
    for (const char* name : {"resetVarButton", "saveButton", "cancelButton"})
        EXPECT_TRUE(reached.contains(control<QWidget>(name))) << name;
    QTest::keyClicks(rows().last(), "y");
    save();
    EXPECT_EQ(values().back(), "xy");

    openAgain();
    EXPECT_LT(rows().size(), 60);
    auto* bar = control<QScrollArea>("variableTable")->verticalScrollBar();
    bar->setValue(bar->maximum());
    EXPECT_THAT(rows(), SizeIs(1000));
}

} // namespace
} // namespace tessaril
