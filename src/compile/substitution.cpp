#include "compile/substitution.h"

#include "compile/color_from_string.h"
#include "compile/variable_text.h"
#include "model/text.h"

#include <algorithm>
#include <cstdint>

namespace tessaril {

namespace {

std::string placeholder(std::string_view name) {
    return "/*[[" + std::string(name) + "]]*/";
}

/// `component` times 255 without its fraction; colours far outside any display stay printable.
std::string byteText(double component) {
    constexpr double widest = 1e18;
    return std::to_string(static_cast<std::int64_t>(std::clamp(component * 255, -widest, widest)));
}

std::string rgbText(const colorComponents& color) {
    return byteText(color.red) + "," + byteText(color.green) + "," + byteText(color.blue);
}

std::string rootRule(const std::vector<userVariable>& variables) {
    if (variables.empty()) return "";
    std::string rule = ":root {\n";
    for (const userVariable& variable : variables)
        rule +=
            "\t--" + variable.name + ": " + variableText(variable, variableReader::page) + ";\n";
    return rule + "}\n";
}

} // namespace

void compilePlaceholders(styleContainer& style) {
    for (styleSection& section : style.styleData.sections) {
        std::string code = section.code;
        for (const userVariable& variable : *style.userVariables) {
            const std::string text = variableText(variable, variableReader::page);
            code = replacingAll(code, placeholder(variable.name), text);
            if (variable.type != "color") continue;
            if (const auto color = colorFromString(text))
                code = replacingAll(code, placeholder(variable.name + "-rgb"), rgbText(*color));
        }
        section.compiledcode = std::move(code);
    }
    style.styleData.compSections.reset();
}

void compileCustomProperties(styleContainer& style) {
    const std::string prefix = rootRule(*style.userVariables);
    for (styleSection& section : style.styleData.sections)
        section.compiledcode = prefix + section.code;
    style.styleData.compSections.reset();
}

} // namespace tessaril
