#include "formats/user_css_writer.h"

#include "formats/moz_document.h"
#include "formats/user_css_reader.h"
#include "formats/variable_declaration.h"
#include "model/text.h"

#include <limits>

namespace tessaril {

namespace {

void writeProperty(std::string& text, std::string_view key, std::string_view value) {
    if (trimmed(value).empty()) return;
    text.append(key).append(value).append("\n");
}

/// A number that no reader takes for an integer.
std::string writtenNumber(double value) {
    std::string number = shortestNumber(value);
    if (number.find_first_of(".e") == std::string::npos) number += ".0";
    return number;
}

std::string writtenBound(double bound, double unbounded) {
    return bound == unbounded ? "null" : writtenNumber(bound);
}

/// The list that stands for a number's or range's default. Without bounds of its own a variable has
/// the default ones.
void writeBounds(std::string& text, const userVariable& variable) {
    using limits = std::numeric_limits<double>;
    const rangeOpts defaults = defaultBounds(variable.type);
    const rangeOpts& bounds = variable.rangeOptions ? *variable.rangeOptions : defaults;

    text.append("[").append(variable.defaultValue);
    if (bounds != defaults) {
        text.append(", ").append(writtenBound(bounds.min, limits::lowest()));
        text.append(", ").append(writtenBound(bounds.max, limits::max()));
        text.append(", ").append(writtenNumber(bounds.step));
        if (bounds.units) text.append(", '").append(*bounds.units).append("'");
    }
    text.append("]\n");
}

std::string escapedOptionValue(std::string_view value) {
    const std::string slashes = replacingAll(replacingAll(value, R"(\)", R"(\\)"), "/", R"(\/)");
    return replacingAll(slashes, R"(")", R"(\")");
}

/// An option without a name or label has the other one for both; without a value, an empty one.
void writeOption(std::string& text, const variableOption& option) {
    const std::string name = option.name.value_or(option.label.value_or(""));
    const std::string label = option.label.value_or(name);
    text.append("\"").append(name);
    if (label != name) text.append(":").append(label);
    text.append("\": `").append(escapedOptionValue(option.value.value_or(""))).append("`");
}

void writeOptions(std::string& text, const std::vector<variableOption>& options) {
    text.append("{\n");
    bool isFirst = true;
    for (const variableOption& option : options) {
        if (!isFirst) text.append(",\n");
        writeOption(text, option);
        isFirst = false;
    }
    text.append(options.empty() ? "}\n" : "\n}\n");
}

void writeVariable(std::string& text, const userVariable& variable) {
    if (isSelectLike(variable) && !variable.selectOptions) return;

    text.append("@var ").append(isSelectLike(variable) ? "select" : variable.type).append(" ");
    text.append(variable.name).append(" \"").append(variable.label).append("\" ");
    if (isSelectLike(variable))
        writeOptions(text, *variable.selectOptions);
    else if (isNumeric(variable))
        writeBounds(text, variable);
    else if (variable.type == "text" && contains(variable.defaultValue, ":"))
        text.append("\"'").append(variable.defaultValue).append("'\"\n");
    else
        text.append(variable.defaultValue).append("\n");
}

} // namespace

std::string writeUserCSS(const styleContainer& style) {
    std::string text = std::string(metadataOpening) + "\n";
    writeProperty(text, "@name\t\t\t", style.styleData.name);
    writeProperty(text, "@author\t\t\t", style.author);
    writeProperty(text, "@description\t", style.description);
    writeProperty(text, "@version\t\t", style.version);
    writeProperty(text, "@namespace\t\t", style.namespace_);
    writeProperty(text, "@license\t\t", style.license);
    // A blank one is written too: whatever it is decides how the code is read.
    if (!style.preprocessor.empty())
        text.append("@preprocessor\t").append(style.preprocessor).append("\n");
    writeProperty(text, "@updateURL\t\t", style.updateURL.value_or(""));

    if (style.userVariables)
        for (const userVariable& variable : *style.userVariables)
            writeVariable(text, variable);

    text.append(metadataClosing).append("\n\n");
    return text.append(joinSectionsForPreprocessor(style));
}

} // namespace tessaril
