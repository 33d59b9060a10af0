#include "update/carry_over.h"

#include "model/text.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace tessaril {

namespace {

using optionText = std::optional<std::string> variableOption::*;

/// The option that the user chose; null where the value is the index of none.
const variableOption* chosenOption(const userVariable& variable) {
    if (!variable.selectOptions || !variable.currentValue) return nullptr;
    const auto index = parseInteger(*variable.currentValue);
    const auto count = static_cast<std::int64_t>(variable.selectOptions->size());
    if (!index || *index < 0 || *index >= count) return nullptr;
    return &(*variable.selectOptions)[static_cast<std::size_t>(*index)];
}

/// The index of the option that is the chosen one in another version.
std::optional<std::string> indexOfSame(const variableOption& chosen,
                                       const std::vector<variableOption>& options) {
    constexpr std::array<optionText, 3> texts = {&variableOption::value, &variableOption::label,
                                                 &variableOption::name};
    for (const optionText text : texts) {
        // Two options without a value are alike. Without labels or names they are merely unnamed,
        // which is no reason to choose another one for the user.
        if (!(chosen.*text) && text != &variableOption::value) continue;
        const auto found =
            std::ranges::find(options, chosen.*text, [text](const auto& o) { return o.*text; });
        if (found != options.end()) return std::to_string(found - options.begin());
    }
    return std::nullopt;
}

bool isSameVariable(const userVariable& a, const userVariable& b) {
    return a.type == b.type && (a.label == b.label || a.name == b.name);
}

bool holdsItsValueItself(const userVariable& variable) {
    return variable.type == "text" || variable.type == "color" || variable.type == "checkbox" ||
           isNumeric(variable);
}

/// Whether `to` has received the value.
bool takeValue(const userVariable& from, userVariable& to) {
    if (!isSameVariable(from, to)) return false;
    if (holdsItsValueItself(from)) {
        to.currentValue = from.currentValue;
        return true;
    }
    const variableOption* chosen = isSelectLike(from) ? chosenOption(from) : nullptr;
    if (!chosen || !to.selectOptions) return false;
    auto index = indexOfSame(*chosen, *to.selectOptions);
    if (!index) return false;
    to.currentValue = std::move(index);
    return true;
}

} // namespace

styleContainer carryOverVariableValues(const styleContainer& oldVersion,
                                       styleContainer newVersion) {
    if (!oldVersion.userVariables || !newVersion.userVariables) return newVersion;
    for (const userVariable& from : *oldVersion.userVariables)
        for (userVariable& to : *newVersion.userVariables)
            if (takeValue(from, to)) break;
    return newVersion;
}

} // namespace tessaril
