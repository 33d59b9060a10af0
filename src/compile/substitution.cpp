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
constexpr std::size_t largestOutput = std::size_t{256} << 20;

void replaceAllIn(std::string& code, std::string_view from, std::string_view to,
                  std::size_t largest, bool& fits) {
    std::size_t count = 0;
    for (std::size_t at = code.find(from); at != std::string::npos;
         at = code.find(from, at + from.size()))
        ++count;
    if (count == 0) return;
    const std::size_t room = largest > code.size() ? largest - code.size() : 0;
    fits = fits && to.size() <= from.size() + room / count;
    if (fits) code = replacingAll(code, from, to);
}

/// `code` with the placeholders replaced; nothing when that is larger than `largest`.
std::optional<std::string> substituted(std::string code, const std::vector<userVariable>& variables,
                                       std::size_t largest) {
    if (!contains(code, "/*[[")) return code;
    bool fits = true;
    for (const userVariable& variable : variables) {
        const std::string text = variableText(variable, variableReader::page);
        replaceAllIn(code, placeholder(variable.name), text, largest, fits);
        if (variable.type != "color") continue;
        if (const auto color = colorFromString(text))
            replaceAllIn(code, placeholder(variable.name + "-rgb"), rgbText(*color), largest, fits);
    }
    return fits ? std::optional(std::move(code)) : std::nullopt;
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
    std::size_t room = largestOutput;
    for (const styleSection& section : style.styleData.sections) {
        auto output = substituted(section.code, *style.userVariables, room);
        if (!output) return logTooLarge();
        room -= std::min(room, output->size());
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
