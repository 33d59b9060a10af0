#include "compile/variable_text.h"

#include "model/text.h"

namespace tessaril {

namespace {

const variableOption* optionAt(const std::vector<variableOption>& options,
                               std::string_view position) {
    const auto index = parseInteger(position);
    if (!index || *index < 0 || static_cast<std::uint64_t>(*index) >= options.size())
        return nullptr;
    return &options[static_cast<std::size_t>(*index)];
}

const variableOption* chosenOption(const userVariable& variable) {
    const auto& options = *variable.selectOptions;
    if (variable.currentValue)
        if (const auto* option = optionAt(options, *variable.currentValue)) return option;
    if (const auto* option = optionAt(options, variable.defaultValue)) return option;
    return options.empty() ? nullptr : &options.front();
}

std::string optionText(const userVariable& variable, variableReader reader) {
    const variableOption* const option = chosenOption(variable);
    if (option == nullptr) return "";
    if (!option->value) return reader == variableReader::compiler ? "null" : "";

    std::string_view value = *option->value;
    if (value.ends_with('*')) value.remove_suffix(1); // marks the default in the file
    return std::string(value);
}

std::string textWithUnits(const userVariable& variable) {
    const std::string& units = *variable.rangeOptions->units;
    if (variable.currentValue && parseDouble(*variable.currentValue))
        return *variable.currentValue + units;
    // Units alone would be a value of their own.
    return parseDouble(variable.defaultValue) ? variable.defaultValue + units : "";
}

} // namespace

std::string variableText(const userVariable& variable, variableReader reader) {
    if (isSelectLike(variable) && variable.selectOptions) return optionText(variable, reader);
    if (isNumeric(variable) && variable.rangeOptions && variable.rangeOptions->units)
        return textWithUnits(variable);
    if (variable.currentValue) return *variable.currentValue;
    return reader == variableReader::compiler ? "null" : variable.defaultValue;
}

} // namespace tessaril
