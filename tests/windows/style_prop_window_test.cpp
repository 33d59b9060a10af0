#include "desktop/directory_resources.h"
#include "desktop/folder_message_channel.h"
#include "desktop/javascript_core_engine.h"
#include "desktop/posix_file_system.h"
#include "formats/user_css_reader.h"
#include "model/database_json.h"
#include "support/event_loop.h"
#include "support/stand_in_machine.h"
#include "support/temporary_folder.h"
#include "support/test.h"
#include "windows/color_button.h"
#include "windows/other_windows.h"
#include "windows/style_prop_window.h"
#include "windows/value_stepper.h"
#include "windows/var_range_slider.h"

#include <QtWidgets>

namespace tessaril {
namespace {

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
struct StylePropWindowTest : ::testing::Test {
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
            machine.urls, machine.pictures, machine.records, folder.path, ""});
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
    void turnWheel(QWidget* over) {
        QWheelEvent down({5, 5}, over->mapToGlobal(QPointF(5, 5)), {}, {0, -120}, Qt::NoButton, {},
                         Qt::NoScrollPhase, false);
        QSpontaneKeyEvent::setSpontaneous(&down);
        qApp->notify(over, &down);
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
    auto* picker = control<QColorDialog>("");
    picker->setCurrentColor(QColor(1, 2, 3)); // as when one is picked from the screen
    EXPECT_EQ(colorText->text(), "rgba(1,2,3,0.47)");
    keys(control<QSlider>("opacitySlider"), {Qt::Key_Right});
    EXPECT_EQ(colorText->text(), "rgba(1,2,3,0.48)");
    keys(colorText->window()->focusWidget(), {Qt::Key_Return}); // in the picker
    keys(control<QCheckBox>("checkbox"), {Qt::Key_Space});
    keys(control<QComboBox>("dropdown"), {Qt::Key_Down});
    keys(control<VarRangeSlider>("rangeSlider"), {Qt::Key_Right, Qt::Key_Right});
    keys(control<ValueStepper>("stepper"), {Qt::Key_Up});
    keys(control<QComboBox>("themeToggle"), {Qt::Key_Down});
    keys(control<QCheckBox>("iframeCheck"), {Qt::Key_Space});
    EXPECT_THAT(values(), ElementsAre("serif", "#ff8000", "0", "0", "16", "60")) << "until saved";
    save();
    EXPECT_THAT(values(), ElementsAre("Georgia", "rgba(1,2,3,0.48)", "1", "1", "18.0", "60.5"));
    EXPECT_EQ(application->store().styleAt(0)->systemTheme, "light");
    EXPECT_EQ(application->store().styleAt(0)->allowIframe, false);
    const std::string message = sentMessage();
    for (const char* compiled : {"font: Georgia", "rgba(1, 2, 3, 0.48)", "size: 18",
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
    (*style.userVariables)[1].currentValue = "#ff8000";
    (*style.userVariables)[4].currentValue = "16.123456789";
    (*style.userVariables)[5].currentValue = "1e9";
    (*style.userVariables)[5].rangeOptions->units = "em ";
    open(style);
    EXPECT_EQ(control<QComboBox>("dropdown")->currentIndex(), -1);
    for (const char* name : {"inputField", "checkbox", "dropdown", "rangeSlider", "stepper"}) {
        control<QWidget>(name)->setFocus();
        turnWheel(control<QWidget>(name));
    }
    // A chooser that is only looked at.
    QTest::mouseClick(control<ColorButton>("colorWell"), Qt::LeftButton);
    control<QPushButton>("chooseButton")->click();
    save();
    EXPECT_EQ(application->store().styleAt(0)->userVariables, style.userVariables);

    openAgain();
    auto* number = control<ValueStepper>("stepper")->findChild<QLineEdit*>();
    EXPECT_EQ(number->text(), "120em ");
    number->selectAll();
    QTest::keyClicks(number, "x");
    save();
    EXPECT_EQ(values().back(), "1e9");
    openAgain();
    number = control<ValueStepper>("stepper")->findChild<QLineEdit*>();
    number->selectAll();
    number->insert("120em "); // as if pasted
    save();
    EXPECT_EQ(values().back(), "120.0") << "it stood there, but not as the value";
    style.userVariables->back().currentValue = "120.0";

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

TEST(ValueStepper, StoresWhatIsTypedAndKeepsTheDecimalsItDoesNotShow) {
    const std::string all = "\1", back = "\b";
    for (const auto& [value, units, typed, expected] :
         std::vector<std::tuple<double, std::string, std::string, double>>{
             {60, "em", all + "7.254" + back, 7.25},
             {60, "em", back + back + ".004" + back + back + back + back, 60},
             {0.004, "", all + "0", 0},
             {3.9999, "px", all + "4px", 4},
             {7.256, "em", back + back + "1" + back, 7.256},
             {1.256, "px", back + back + "px", 1.256},
             {1.256, "px", all + "1.26", 1.256},
             {5, "px ", all + "8px ", 8},
             {5, "px ", all + "nonsense", 5},
             {5, "", all + "1e9", 100}}) {
        ValueStepper stepper;
        stepper.setScale({.min = 0, .max = 100, .step = 1}, units);
        stepper.showValue(value, true);
        double stored = value;
        QObject::connect(&stepper, &ValueStepper::valueChosen, &stepper,
                         [&](double chosen) { stored = chosen; });
        auto* field = stepper.findChild<QLineEdit*>();
        field->end(false);
        for (const char key : typed) {
            if (key == '\1')
                field->selectAll();
            else if (key == '\b')
                QTest::keyClick(field, Qt::Key_Backspace);
            else
                QTest::keyClick(field, key);
        }
        EXPECT_EQ(stored, expected) << value << " " << typed;
    }
    ValueStepper unfit; // the 0 stands for a text that is no number
    unfit.showValue(0, false);
    std::vector<double> chosen;
    QObject::connect(&unfit, &ValueStepper::valueChosen, &unfit,
                     [&](double value) { chosen.push_back(value); });
    unfit.findChild<QLineEdit*>()->selectAll();
    QTest::keyClick(unfit.findChild<QLineEdit*>(), '0');
    EXPECT_THAT(chosen, ElementsAre(0));
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
    for (const auto& [key, name] :
         {std::pair(Qt::Key_D, "excludeTable"), {Qt::Key_B, "variableTable"}}) {
        control<QWidget>("themeToggle")->setFocus();
        QTest::keyClick(shown(), key, Qt::AltModifier);
        EXPECT_TRUE(control<QWidget>(name)->isAncestorOf(shown()->focusWidget())) << name;
    }
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
    turnWheel(rows().first());
    EXPECT_GT(bar->value(), 0);
    bar->setValue(bar->maximum());
    EXPECT_THAT(rows(), SizeIs(1000));
}

} // namespace
} // namespace tessaril
