#include "support/sample_styles.h"
#include "support/test.h"
#include "update/carry_over.h"

namespace tessaril {
namespace {

using text = std::optional<std::string>;

styleContainer with(std::optional<std::vector<userVariable>> variables) {
    styleContainer style = namedStyle("style", 1);
    style.userVariables = std::move(variables);
    return style;
}

std::vector<userVariable> carried(std::vector<userVariable> from, std::vector<userVariable> to) {
    return *carryOverVariableValues(with(std::move(from)), with(std::move(to))).userVariables;
}

userVariable variable(std::string type, std::string name, std::string label, text value) {
    return {.type = std::move(type),
            .name = std::move(name),
            .label = std::move(label),
            .currentValue = std::move(value)};
}

userVariable choice(std::vector<variableOption> options, text value, std::string type = "select") {
    userVariable result = variable(std::move(type), "size", "Size", std::move(value));
    result.selectOptions = std::move(options);
    return result;
}

TEST(CarryOver, knowsAVariableAgainByLabelOrNameAndItsType) {
    for (const char* type : {"text", "color", "checkbox", "range", "number"}) {
        const auto result =
            carried({variable(type, "a", "A", "mine"), variable(type, "b", "B", std::nullopt)},
                    {variable("dropdown", "a", "A", "d"), variable(type, "renamed", "A", "new"),
                     variable(type, "a", "A", "new"), variable(type, "b", "Other", "new"),
                     variable(type, "c", "C", "new")});
        EXPECT_EQ(result[0].currentValue, "d") << "of another type, so passed over";
        EXPECT_EQ(result[1].currentValue, "mine") << "the first one that fits";
        EXPECT_EQ(result[2].currentValue, "new");
        EXPECT_EQ(result[3].currentValue, std::nullopt) << "having none is a value, too";
        EXPECT_EQ(result[4].currentValue, "new");
    }
    const std::vector<userVariable> range{variable("number", "a", "A", "5")}, no;
    EXPECT_EQ(carried({variable("range", "a", "A", "3")}, range), range);
    EXPECT_EQ(carried(range, no), no);
    EXPECT_EQ(carried(no, range), range);
    EXPECT_EQ(carryOverVariableValues(with(std::nullopt), with(range)).userVariables, range);
    EXPECT_FALSE(carryOverVariableValues(with(range), with(std::nullopt)).userVariables);
}

TEST(CarryOver, findsTheChosenOptionByValueThenLabelThenName) {
    using options = std::vector<variableOption>;
    const options old = {{"n", "l", "v"}}, moved = {{"x", "x", "x"}, old[0]};
    std::vector<std::tuple<options, text, options, text>> cases{
        {{{"1", {}, "s"}, {"2", {}, "m"}}, "1", {{"a", {}, "s"}, {"b", {}, "m"}}, "1"},
        {old, "0", {{"n", "x", "x"}, {"x", "l", "x"}, {"x", "x", "v"}}, "2"},
        {old, "0", {{"n", "x", "x"}, {"x", "l", "x"}}, "1"},
        {old, "0", {{"x", "x", "x"}, {"n", "x", "x"}}, "1"},
        {old, "0", {{"x", "x", "x"}, {"y", "y", "y"}}, "new"},
        {{{"n", {}, {}}}, "0", {{"a", {}, "v"}, {"b", {}, {}}}, "1"},   // neither has a value
        {{{"n", {}, "v"}}, "0", {{"a", {}, "x"}, {"n", {}, "y"}}, "1"}, // nor a label
        {old, std::nullopt, moved, "new"}};
    for (const char* bad : {"1", "-1", "", "x", "0.5", "99999999999999999999"})
        cases.emplace_back(old, bad, moved, "new");
    for (const auto& [from, value, to, chosen] : cases)
        EXPECT_EQ(carried({choice(from, value)}, {choice(to, "new")})[0].currentValue, chosen);

    EXPECT_EQ(carried({choice(old, "0", "image")}, {choice(moved, "new")})[0].currentValue, "new");
    userVariable none = choice({}, "1");
    none.selectOptions.reset();
    EXPECT_EQ(carried({choice(old, "0")}, {none})[0].currentValue, "1");
    EXPECT_EQ(carried({none}, {choice(old, "new")})[0].currentValue, "new");
    const auto next =
        carried({choice(old, "0")}, {choice({{"x", "x", "x"}}, "0"), choice(moved, "0")});
    EXPECT_EQ(next[1].currentValue, "1") << "the first has no such option";
}

} // namespace
} // namespace tessaril
