#include "compile/color_from_string.h"
#include "model/text.h"
#include "settings/variable_table.h"
#include "support/recording_alerts.h"
#include "support/test.h"

namespace tessaril {
namespace {

TEST(ValueText, writesNumbersThatCSSCanRead) {
    for (const auto& [value, text] : {std::pair(12., "12.0"),
                                      {0.5, "0.5"},
                                      {1.25, "1.25"},
                                      {-0., "0.0"},
                                      {100000., "100000.0"},
                                      {1e21, "1000000000000000000000.0"},
                                      {1e-7, "0.0000001"},
                                      {0.1 + 0.2, "0.30000000000000004"}})
        EXPECT_EQ(doubleText(value), text);
    for (const double extreme : {std::numeric_limits<double>::max(), -5e-324})
        EXPECT_EQ(parseDouble(doubleText(extreme)), extreme);
    EXPECT_EQ(valueLabel(12, "px"), "12px");
    EXPECT_EQ(valueLabel(-0.125, ""), "-0.12");
    EXPECT_EQ(valueLabel(1e300, "").size(), 301u);
}

TEST(ValueText, writesColorsThatReadBackTheSame) {
    EXPECT_EQ(colorToText({1, 128 / 255., 0, 1}), "rgba(255,128,0,1.0)");
    EXPECT_EQ(colorToText({0.999, 0.5, -1, 0.25}), "rgba(254,127,0,0.25)") << "cut, not rounded";
    EXPECT_EQ(colorToText({2, 1e300, 0, 7}), "rgba(255,255,0,1.0)");
    EXPECT_EQ(colorToText({std::nan(""), 0, 0, 1}), std::nullopt);
    for (int i = 0; i <= 255; ++i) {
        const colorComponents color{i / 255., 1 - i / 255., 0, alphaFromByte(i)};
        const std::string byte = std::to_string(i);
        EXPECT_TRUE(colorToText(color)->starts_with("rgba(" + byte + ",")) << byte;
        const auto read = colorFromString(*colorToText(color));
        EXPECT_EQ(colorToText(*read), colorToText(color)) << byte;
        EXPECT_EQ(std::lround(read->alpha * 255), i);
    }
    EXPECT_EQ(alphaFromByte(128), 0.5);
}

std::vector<double> ticksOf(const rangeOpts& options) {
    const valueScale scale = scaleOf(options);
    const int last = static_cast<int>(*scale.tickCount()) - 1;
    std::vector<double> ticks;
    for (int i = 0; i <= last; ++i)
        ticks.push_back(scale.at(last > 0 ? static_cast<double>(i) / last : 0));
    return ticks;
}

TEST(ValueText, readsColorsAsPeopleTypeThem) {
    EXPECT_EQ(colorFromTyped(" #F80 "), (colorComponents{1, 136 / 255., 0, 1}));
    EXPECT_EQ(colorFromTyped("#ff000080"), (colorComponents{1, 0, 0, 0.5}));
    EXPECT_EQ(colorFromTyped("#f008"), (colorComponents{1, 0, 0, 0.533}));
    EXPECT_EQ(colorFromTyped("rgba(0, 0, 255, .3)"), (colorComponents{0, 0, 1, 0.3}));
    EXPECT_EQ(colorFromTyped("Tomato"), colorFromString("tomato"));
    for (const char* none : {"", "#", "#12345", "#ggg", "#1234567", "red blue", "rgb(1,2)"})
        EXPECT_EQ(colorFromTyped(none), std::nullopt) << none;
}

TEST(ValueScale, takesTheStepsThatTheStyleDeclares) {
    EXPECT_THAT(ticksOf({.min = 0, .max = 0.3, .step = 0.1}), ElementsAre(0, 0.1, 0.2, 0.3));
    EXPECT_THAT(ticksOf({.min = -1, .max = 9, .step = 3}), ElementsAre(-1, 2, 5, 8));
    EXPECT_THAT(ticksOf({.min = 5, .max = 5, .step = 1}), ElementsAre(5));
    const valueScale tenths = scaleOf(rangeOpts{.min = 0, .max = 1, .step = 0.1});
    EXPECT_EQ(tenths.stepped(0.2, 1), 0.3);
    EXPECT_EQ(tenths.stepped(0.25, 1), 0.35);
    EXPECT_EQ(tenths.stepped(0.95, 10), 1);
    EXPECT_EQ(tenths.stepped(0.05, -1), 0);
}

TEST(ValueScale, standsWhateverAStyleDeclares) {
    EXPECT_EQ(scaleOf(rangeOpts{.min = 0, .max = 1e9, .step = 1}).tickCount(), 1e9 + 1);
    constexpr double most = std::numeric_limits<double>::max();
    constexpr double infinite = std::numeric_limits<double>::infinity();
    const double none = std::nan("");
    const double odd[][3] = {{9, 1, 1},
                             {0, 1, 0},
                             {0, 1, -1},
                             {-most, most, 1},
                             {-most, most, 5e-324},
                             {infinite, -infinite, infinite},
                             {none, none, none}};
    for (const auto& [min, max, step] : odd) {
        const valueScale scale = scaleOf(rangeOpts{min, max, step, {}});
        for (const double part : {0., 0.5, 1.}) {
            EXPECT_TRUE(std::isfinite(scale.at(part)));
            EXPECT_TRUE(scale.at(part) >= scale.min && scale.at(part) <= scale.max);
            EXPECT_TRUE(scale.partOf(scale.at(part)) >= 0 && scale.partOf(scale.at(part)) <= 1);
        }
        EXPECT_TRUE(std::isfinite(scale.stepped(scale.max, 1)));
    }
    EXPECT_EQ(scaleOf(rangeOpts{.min = 0, .max = 1, .step = 0}).tickCount(), std::nullopt);
    EXPECT_EQ(scaleOf(rangeOpts{.min = 0, .max = 1, .step = 0}).at(1. / 3), 0.333);
}

struct VariableTableTest : ::testing::Test {
    variableRow shown(userVariable variable) {
        style.userVariables = {{std::move(variable)}};
        return table.rowAt(0);
    }
    std::string value() const { return style.userVariables->at(0).currentValue.value_or("none"); }

    styleContainer style;
    RecordingAlerts alerts;
    VariableTable table{style, alerts};
};

TEST_F(VariableTableTest, showsValuesThatFitAndMakesDoWithThoseThatDoNot) {
    userVariable menu{.type = "dropdown",
                      .selectOptions = {{{.label = "One"}, {.name = "b"}, {.label = "Three"}}},
                      .currentValue = "2"};
    EXPECT_THAT(shown(menu).items, ElementsAre("One", "ERROR", "Three"));
    EXPECT_EQ(shown(menu).chosenItem, 2u);
    for (const char* unfit : {"7", "-1", "02", "", "One"}) {
        menu.currentValue = unfit;
        EXPECT_EQ(shown(menu).chosenItem, std::nullopt) << unfit;
    }
    menu.selectOptions.reset();
    EXPECT_THAT(shown(menu).items, SizeIs(0));

    userVariable range{.type = "range",
                       .rangeOptions = rangeOpts{.min = 2, .max = 31, .step = 1, .units = "px"}};
    for (const auto& [stored, value] :
         {std::pair("12.5", 12.5), {"abc", 2.}, {"", 2.}, {"1", 2.}, {"99", 31.}, {"1e999", 2.}}) {
        range.currentValue = stored;
        EXPECT_EQ(shown(range).value, value) << stored;
    }
    EXPECT_TRUE(shown(range).drawsTicks) << "30 ticks";
    range.rangeOptions->max = 32;
    EXPECT_FALSE(shown(range).drawsTicks);
    range.type = "number";
    EXPECT_EQ(shown(range).control, variableControl::stepper);
    EXPECT_EQ(shown(range).rangeUnits, "px");

    EXPECT_EQ(shown({.type = "color", .currentValue = "no color"}).color, std::nullopt);
    EXPECT_EQ(shown({.type = "color", .currentValue = "#f00"}).color,
              (colorComponents{1, 0, 0, 1}));
    EXPECT_EQ(shown({.type = "checkbox", .currentValue = "yes"}).isChecked, std::nullopt);
    EXPECT_EQ(shown({.type = "checkbox", .currentValue = "0"}).isChecked, false);
    EXPECT_EQ(shown({.type = "unheard of"}).control, variableControl::none);
    EXPECT_EQ(table.rowAt(1).displayName, "ERROR");
}

TEST_F(VariableTableTest, writesWhatTheUserChose) {
    shown({.type = "text", .currentValue = "old"});
    table.textDidChange(0, " typed ");
    EXPECT_EQ(value(), " typed ");
    table.colorDidChange(0, {1, 0, 0, 1});
    table.colorDidChange(0, {std::nan(""), 0, 0, 1});
    EXPECT_EQ(value(), "rgba(255,0,0,1.0)") << "never absent";
    table.checkboxToggled(0, true);
    EXPECT_EQ(value(), "1");
    table.dropdownChanged(0, 12);
    EXPECT_EQ(value(), "12");
    table.valueChanged(0, 3);
    EXPECT_EQ(value(), "3.0");
    table.valueChanged(1, 4);
    EXPECT_EQ(value(), "3.0");
    style.userVariables.reset();
    table.textDidChange(0, "nowhere");
    EXPECT_FALSE(style.userVariables);
}

TEST_F(VariableTableTest, resetsAllOnceTheUserAgrees) {
    style.userVariables = {{{.type = "text", .defaultValue = "", .currentValue = "a"},
                            {.type = "range", .defaultValue = "4", .currentValue = std::nullopt}}};
    const auto before = style;
    alerts.answers = {{.button = 0}, {.button = 1}};
    EXPECT_FALSE(table.setDefaults());
    EXPECT_EQ(style, before);
    EXPECT_TRUE(table.setDefaults());
    EXPECT_EQ(style.userVariables->at(0).currentValue, "");
    EXPECT_EQ(style.userVariables->at(1).currentValue, "4");
    EXPECT_THAT(alerts.questions.at(0).buttons, ElementsAre("No", "Yes"));
    EXPECT_EQ(alerts.questions[0].destructiveButton, 1) << "closing the question is no Yes";
}

} // namespace
} // namespace tessaril
