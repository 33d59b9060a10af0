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

std::vector<variableOption> valued(std::initializer_list<const char*> values) {
    std::vector<variableOption> options;
    for (const char* value : values)
        options.push_back({.name = "n-" + std::string(value), .value = value});
    return options;
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
    const auto other = carried({variable("text", "a", "A", "red")},
                               {variable("color", "a", "A", "rgba(0,0,0,1)")});
    EXPECT_EQ(other[0].currentValue, "rgba(0,0,0,1)");
    const auto range =
        carried({variable("range", "a", "A", "3")}, {variable("number", "a", "A", "5")});
    EXPECT_EQ(range[0].currentValue, "5");

    const std::vector<userVariable> no;
    EXPECT_EQ(carryOverVariableValues(with(range), with(no)).userVariables, no);
    EXPECT_EQ(carryOverVariableValues(with(no), with(range)).userVariables, range);
    EXPECT_EQ(carryOverVariableValues(with(std::nullopt), with(range)).userVariables, range);
    EXPECT_FALSE(carryOverVariableValues(with(range), with(std::nullopt)).userVariables);
}

TEST(CarryOver, findsTheChosenOptionByValueThenLabelThenName) {
    const auto chosen = [](userVariable from, userVariable to) {
        return carried({std::move(from)}, {std::move(to)})[0].currentValue;
    };
    EXPECT_EQ(
        chosen(choice(valued({"s", "m", "l"}), "2"), choice(valued({"xs", "s", "m", "l"}), "0")),
        "3");
    const std::vector<variableOption> old = {{"n", "l", "v"}};
    EXPECT_EQ(
        chosen(choice(old, "0"), choice({{"n", "x", "x"}, {"x", "l", "x"}, {"x", "x", "v"}}, "0")),
        "2");
    EXPECT_EQ(chosen(choice(old, "0"), choice({{"n", "x", "x"}, {"x", "l", "x"}}, "0")), "1");
    EXPECT_EQ(chosen(choice(old, "0"), choice({{"x", "x", "x"}, {"n", "x", "x"}}, "0")), "1");
    EXPECT_EQ(chosen(choice(old, "0"), choice({{"x", "x", "x"}, {"y", "y", "y"}}, "1")), "1");
    EXPECT_EQ(chosen(choice({{"n", {}, {}}}, "0"), choice({{"a", {}, "v"}, {"b", {}, {}}}, "0")),
              "1")
        << "neither has a value";
    EXPECT_EQ(chosen(choice({{"n", {}, "v"}}, "0"), choice({{"a", {}, "x"}, {"n", {}, "y"}}, "0")),
              "1")
        << "having no label is nothing to be known by";
    EXPECT_EQ(chosen(choice(old, "0", "image"), choice({{"x", "x", "x"}, old[0]}, "0", "select")),
              "0");
    userVariable none = choice({}, "1");
    none.selectOptions.reset();
    EXPECT_EQ(chosen(choice(old, "0"), none), "1");
    EXPECT_EQ(chosen(none, choice(old, "0")), "0");

    for (const char* bad : {"1", "-1", "", "x", "0.5", "99999999999999999999"})
        EXPECT_EQ(chosen(choice(old, bad), choice({{"x", "x", "x"}, old[0]}, "0")), "0") << bad;
    EXPECT_EQ(chosen(choice(old, std::nullopt), choice({{"x", "x", "x"}, old[0]}, "0")), "0");
    const auto next = carried({choice(old, "0")},
                              {choice(valued({"x"}), "0"), choice({{"x", "x", "x"}, old[0]}, "0")});
    EXPECT_EQ(next[1].currentValue, "1") << "the first has no such option";
}

} // namespace
} // namespace tessaril
