#include "desktop/directory_resources.h"
#include "desktop/javascript_core_engine.h"
#include "formats/user_css_reader.h"
#include "support/stand_in_machine.h"
#include "support/test.h"
#include "support/user.h"
#include "windows/color_button.h"
#include "windows/other_windows.h"
#include "windows/style_prop_window.h"
#include "windows/value_stepper.h"
#include "windows/var_range_slider.h"

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

/// The properties of the first style, with the real compilers.
struct StylePropWindowTest : ::testing::Test {
    void open(const styleContainer& style) {
        application.store().appendStyle(style);
        application.listCommands().setRoutes(
            {.openStyleProps = [this](auto id) { return others.openStyleProps(id, main); }});
        application.styleList().refreshTable();
        main.show();
        openAgain();
    }
    void openAgain() {
        application.listCommands().openProperties(0);
        ASSERT_TRUE(shown() && QTest::qWaitForWindowActive(shown()));
    }
    StylePropWindow* shown() { return main.findChild<StylePropWindow*>("stylePropWindow"); }
    template <typename Control>
    Control& control(const char* name) {
        return partOf<Control>(*shown(), name);
    }
    QLineEdit& number() { return *control<ValueStepper>("stepper").findChild<QLineEdit*>(); }
    /// Instead of what stands there.
    static void write(QLineEdit& field, const char* keys) {
        field.selectAll();
        pressIn(field, keys);
    }
    static void turnWheel(QWidget& over) {
        QWheelEvent down({5, 5}, over.mapToGlobal(QPointF(5, 5)), {}, {0, -120}, Qt::NoButton, {},
                         Qt::NoScrollPhase, false);
        QSpontaneKeyEvent::setSpontaneous(&down);
        qApp->notify(&over, &down);
    }
    void save() {
        clickOn(control<QPushButton>("saveButton"));
        machine.dispatcher.runAll();
        EXPECT_TRUE(eventually([this] { return !shown(); }));
    }
    styleContainer style() { return *application.store().styleAt(0); }
    std::vector<std::string> values() {
        std::vector<std::string> values;
        for (const userVariable& variable : *application.store().styleAt(0)->userVariables)
            values.push_back(variable.currentValue.value_or("none"));
        return values;
    }

    StandInMachine machine;
    JavaScriptCoreEngine scripts;
    DirectoryResources resources{TESSARIL_RESOURCES};
    Application application{{machine.files, machine.channel, machine.alerts, machine.dispatcher,
                             machine.standard, machine.shared, scripts, resources,
                             machine.compilerErrors, machine.extension, machine.externals,
                             machine.urls, machine.pictures, machine.records, "/container", ""}};
    OtherWindows others{application, [](QWidget*) { return shownWebView{}; }, "/none"};
    QWidget main;
};

TEST_F(StylePropWindowTest, BringsChosenValuesToTheExtension) {
    open(*parseUserCSS(everyControl, {[] { return 7; }, [](styleContainer&) {}}));
    write(control<QLineEdit>("inputField"), "'Georgia'");
    clickOn(control<ColorButton>("colorWell"));
    auto& color = control<QLineEdit>("colorText");
    ASSERT_TRUE(QTest::qWaitForWindowActive(color.window()));
    write(color, "'#12345'");
    EXPECT_FALSE(control<QPushButton>("chooseButton").isEnabled());
    pressIn(color, "'678' Tab");
    control<QColorDialog>("").setCurrentColor(QColor(1, 2, 3)); // as one from the screen
    EXPECT_EQ(color.text(), "rgba(1,2,3,0.47)");
    pressIn(control<QSlider>("opacitySlider"), "Right");
    EXPECT_EQ(color.text(), "rgba(1,2,3,0.48)");
    pressIn(*color.window()->focusWidget(), "Return"); // in the picker
    for (const auto& [name, keys] : {std::pair("checkbox", "Space"),
                                     {"dropdown", "Down"},
                                     {"rangeSlider", "Right Right"},
                                     {"stepper", "Up"},
                                     {"themeToggle", "Down"},
                                     {"iframeCheck", "Space"}})
        pressIn(control<QWidget>(name), keys);
    EXPECT_THAT(values(), ElementsAre("serif", "#ff8000", "0", "0", "16", "60")) << "until saved";
    save();
    EXPECT_THAT(values(), ElementsAre("Georgia", "rgba(1,2,3,0.48)", "1", "1", "18.0", "60.5"));
    EXPECT_EQ(style().systemTheme, "light");
    EXPECT_EQ(style().allowIframe, false);
    const std::string message = machine.files.contents.at("wormhole/styleDBUpdated");
    for (const char* compiled : {"font: Georgia", "rgba(1, 2, 3, 0.48)", "size: 18",
                                 "width: 60.5em", "--t: Mocha", "--w: 1"})
        EXPECT_THAT(message, HasSubstr(compiled));

    // Typed to the last moment, with what is there now shown.
    openAgain();
    EXPECT_EQ(number().text(), "60.50em");
    write(number(), "'7,25' Ctrl+S");
    machine.dispatcher.runAll();
    EXPECT_EQ(values().back(), "7.25");
}

TEST_F(StylePropWindowTest, WritesNothingThatNobodyTouched) {
    styleContainer odd = *parseUserCSS(everyControl, {[] { return 7; }, [](styleContainer&) {}});
    std::vector<userVariable>& variables = *odd.userVariables;
    for (userVariable& variable : variables)
        variable.currentValue = "odd\nvalue";
    variables[1].currentValue = "#ff8000";
    variables[4].currentValue = "16.123456789";
    variables[5].currentValue = "1e9";
    variables[5].rangeOptions->units = "em ";
    open(odd);
    EXPECT_EQ(control<QComboBox>("dropdown").currentIndex(), -1);
    for (const char* name : {"inputField", "checkbox", "dropdown", "rangeSlider", "stepper"}) {
        control<QWidget>(name).setFocus();
        turnWheel(control<QWidget>(name));
    }
    // A chooser that is only looked at.
    clickOn(control<ColorButton>("colorWell"));
    control<QPushButton>("chooseButton").click();
    save();
    EXPECT_EQ(style().userVariables, variables);

    openAgain();
    EXPECT_EQ(number().text(), "120em ");
    write(number(), "'x'");
    save();
    EXPECT_EQ(values().back(), "1e9");
    openAgain();
    number().selectAll();
    number().insert("120em "); // as if pasted
    save();
    EXPECT_EQ(values().back(), "120.0") << "it stood there, but not as the value";
    variables.back().currentValue = "120.0";

    openAgain();
    write(control<QLineEdit>("inputField"), "'typed' Esc");
    EXPECT_TRUE(eventually([this] { return !shown(); }));
    EXPECT_EQ(style().userVariables, variables);
    openAgain();
    machine.alerts.answers = {{.button = 1}};
    control<QPushButton>("resetVarButton").click();
    EXPECT_EQ(control<QLineEdit>("inputField").text(), "serif");
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
             {5, "", all + "1e9", 100},
             {std::nan(""), "", all + "0", 0}}) {
        ValueStepper stepper;
        stepper.setScale({.min = 0, .max = 100, .step = 1}, units);
        const bool isNumber = !std::isnan(value); // otherwise a 0 stands for it
        stepper.showValue(isNumber ? value : 0, isNumber);
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
}

TEST_F(StylePropWindowTest, MakesRowsAsTheyComeIntoSight) {
    styleContainer many;
    many.uniqueID = 7;
    many.userVariables.emplace(1000,
                               userVariable{.type = "text", .label = "V", .currentValue = "x"});
    open(many);
    const auto rows = [this] { return shown()->findChildren<QLineEdit*>("inputField"); };
    EXPECT_LT(rows().size(), 60);
    auto& theme = control<QWidget>("themeToggle");
    for (const auto& [key, name] :
         {std::pair(Qt::Key_D, "excludeTable"), {Qt::Key_B, "variableTable"}}) {
        theme.setFocus();
        QTest::keyClick(shown(), key, Qt::AltModifier);
        EXPECT_TRUE(control<QWidget>(name).isAncestorOf(shown()->focusWidget())) << name;
    }
    theme.setFocus();
    std::set<QWidget*> reached;
    while (reached.insert(QApplication::focusWidget()).second)
        press("Tab");
    EXPECT_THAT(rows(), SizeIs(1000)) << "the Tab key brings them into sight";
    EXPECT_TRUE(theme.hasFocus());
    for (const char* name : {"resetVarButton", "saveButton", "cancelButton"})
        EXPECT_TRUE(reached.contains(&control<QWidget>(name))) << name;
    QTest::keyClicks(rows().last(), "y");
    save();
    EXPECT_EQ(values().back(), "xy");

    openAgain();
    EXPECT_LT(rows().size(), 60);
    auto* bar = control<QScrollArea>("variableTable").verticalScrollBar();
    turnWheel(*rows().first());
    EXPECT_GT(bar->value(), 0);
    bar->setValue(bar->maximum());
    EXPECT_THAT(rows(), SizeIs(1000));
}

} // namespace
} // namespace tessaril
