#include "compile/substitution.h"

#include "compile/color_from_string.h"
#include "compile/variable_text.h"
#include "model/log.h"
#include "model/text.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <vector>

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

/// What a few hundred bytes of values that hold one another's placeholders can grow to has no
/// bound; no style that anyone can use comes near this one.
constexpr std::size_t largestOutput = std::size_t{64} << 20;
/// Bytes that one style's replacements may look through: some seconds' worth.
constexpr std::size_t mostWork = std::size_t{8} << 30;

/// What a style has left of both.
struct allowance {
    std::size_t output = largestOutput;
    std::size_t work = mostWork;
};

/// Replaces every `from` in `code`; false when that goes beyond what is left.
bool replaceAllIn(std::string& code, std::string_view from, std::string_view to, allowance& left) {
    if (left.work < code.size()) return false;
    left.work -= code.size();
    std::size_t count = 0;
    for (std::size_t at = code.find(from); at != std::string::npos;
         at = code.find(from, at + from.size()))
        ++count;
    if (count == 0) return true;
    const std::size_t room = left.output > code.size() ? left.output - code.size() : 0;
    if (to.size() > from.size() + room / count) return false;
    code = replacingAll(code, from, to);
    return true;
}

/// `code` with the placeholders replaced; nothing when that goes beyond what is left.
std::optional<std::string> substituted(std::string code, const std::vector<userVariable>& variables,
                                       allowance& left) {
    if (!contains(code, "/*[[")) return code;
    for (const userVariable& variable : variables) {
        const std::string text = variableText(variable, variableReader::page);
        if (!replaceAllIn(code, placeholder(variable.name), text, left)) return std::nullopt;
        if (variable.type != "color") continue;
        const auto color = colorFromString(text);
        if (color &&
            !replaceAllIn(code, placeholder(variable.name + "-rgb"), rgbText(*color), left))
            return std::nullopt;
    }
    left.output -= std::min(left.output, code.size());
    return code;
}

void store(styleContainer& style, std::vector<std::string> outputs) {
    auto output = outputs.begin();
    for (styleSection& section : style.styleData.sections)
        section.compiledcode = std::move(*output++);
    style.styleData.compSections.reset();
}

void logTooLarge() {
    logLine("A compiled style was too large.");
}

} // namespace

void compilePlaceholders(styleContainer& style) {
    std::vector<std::string> outputs;
    allowance left;
    for (const styleSection& section : style.styleData.sections) {
        auto output = substituted(section.code, *style.userVariables, left);
        if (!output) return logTooLarge();
        outputs.push_back(std::move(*output));
    }
    store(style, std::move(outputs));
}

void compileCustomProperties(styleContainer& style) {
    const std::string prefix = rootRule(*style.userVariables);
    const std::size_t count = style.styleData.sections.size();
    if (count > 0 && prefix.size() > largestOutput / count) return logTooLarge();

    std::vector<std::string> outputs;
    for (const styleSection& section : style.styleData.sections)
        outputs.push_back(prefix + section.code);
    store(style, std::move(outputs));
}

} // namespace tessaril
