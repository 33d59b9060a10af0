#include "formats/variable_declaration.h"

#include "formats/select_options.h"
#include "model/log.h"
#include "model/text.h"

#include <algorithm>
#include <array>
#include <limits>

namespace tessaril {

namespace {

constexpr std::size_t npos = std::string_view::npos;
constexpr std::array<std::string_view, 8> knownTypes = {"select", "dropdown", "image", "checkbox",
                                                        "color",  "text",     "range", "number"};
constexpr std::string_view unreadDefault = "Value";
constexpr std::string_view firstOption = "0";

/// `text` with every run of tabs, carriage returns and spaces as one space.
std::string withSingleSpaces(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (const char c : text) {
        const bool isSpace = c == ' ' || c == '\t' || c == '\r';
        if (!isSpace)
            result += c;
        else if (!result.ends_with(' '))
            result += ' ';
    }
    return result;
}

/// The first three parts of a declaration; what is missing is empty.
struct declarationParts {
    std::string_view type;
    std::string_view name;
    std::string_view rest; ///< label and default
};

/// The text up to the first space after any leading ones, which `text` loses.
std::string_view takeWord(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    const std::size_t end = std::min(text.find(' '), text.size());
    const std::string_view word = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return word;
}

declarationParts splitInThree(std::string_view text) {
    declarationParts parts;
    parts.type = takeWord(text);
    parts.name = takeWord(text);
    parts.rest = text.substr(std::min(text.find_first_not_of(' '), text.size()));
    return parts;
}

/// Separates a label that is written directly after the name.
void separateLabelFromName(std::string& text) {
    const std::string_view name = splitInThree(text).name;
    const char quote = contains(name, "'") ? '\'' : '"';
    if (name.find(quote) != npos) text.insert(text.find(quote), 1, ' ');
}

/// Separates a quoted label from a brace that is written directly after it.
void separateBraceFromLabel(std::string& text) {
    const std::string_view rest = splitInThree(text).rest;
    const std::size_t single = rest.find("'{");
    const std::size_t quote = single != npos ? single : rest.find("\"{");
    if (quote != npos) text.insert(text.size() - rest.size() + quote + 1, 1, ' ');
}

struct labelAndDefault {
    std::string_view label;
    std::string_view defaultText;
};

std::optional<labelAndDefault> readLabel(std::string_view rest) {
    if (rest.starts_with('"') || rest.starts_with('\'')) {
        const std::size_t end = rest.find(rest.front(), 1);
        if (end == npos) return std::nullopt;
        // The character after the quote is normally the space before the default.
        return labelAndDefault{rest.substr(1, end - 1), trimmed(dropFirst(rest.substr(end + 1)))};
    }
    const std::size_t space = rest.find(' ');
    if (space == npos) return std::nullopt;
    return labelAndDefault{rest.substr(0, space), trimmed(rest.substr(space + 1))};
}

/// "[default, min, max, step, 'units']", given without the brackets; all but the default may be
/// missing, and the units may stand anywhere.
void readBounds(std::string_view inside, userVariable& variable) {
    rangeOpts bounds = defaultBounds(variable.type);
    std::size_t position = 0;
    for (const std::string_view untrimmed : split(inside, ",")) {
        if (untrimmed.empty()) continue;
        const std::string_view piece = trimmed(untrimmed);
        if (!bounds.units && piece.find_first_of("\"'") != npos) {
            bounds.units = unquoted(piece);
            continue;
        }
        switch (position++) {
        case 0:
            variable.defaultValue = piece;
            break;
        case 1:
            bounds.min = parseDouble(piece).value_or(0);
            break;
        case 2:
            bounds.max = parseDouble(piece).value_or(100);
            break;
        case 3:
            bounds.step = parseDouble(piece).value_or(1);
            break;
        }
    }
    variable.rangeOptions = bounds;
}

/// A default of no list form, without a pair of plain quotes around it.
std::string readPlainDefault(std::string_view text) {
    const bool isQuoted = text.size() >= 2 && (text.front() == '"' || text.front() == '\'') &&
                          text.front() == text.back();
    if (isQuoted) text = text.substr(1, text.size() - 2);
    return replacingAll(text, R"(\/)", "/");
}

/// Fills default, options and bounds. A list form that the type does not know is read as plain
/// text, which keeps what the author wrote.
void readDefault(std::string_view text, userVariable& variable) {
    const bool hasBraces = contains(text, "{") && contains(text, "}");
    const bool hasBrackets = contains(text, "[") && contains(text, "]");
    const auto inside = [&] { return dropFirst(dropLast(text)); };

    if (hasBraces && variable.type == "dropdown") {
        variable.selectOptions = readHeredocOptions(trimmed(inside()));
    } else if (hasBraces && variable.type == "select") {
        variable.selectOptions = readObjectOptions(trimmed(inside()));
    } else if (hasBrackets && variable.type == "select") {
        variable.selectOptions = readArrayOptions(inside());
    } else if (hasBrackets && isNumeric(variable)) {
        readBounds(inside(), variable);
    } else if (isNumeric(variable)) {
        variable.defaultValue = text;
        variable.rangeOptions = defaultBounds(variable.type);
    } else {
        variable.defaultValue = readPlainDefault(text);
    }
    if (variable.selectOptions)
        variable.defaultValue = variable.type == "select" ? markedOption(*variable.selectOptions)
                                                          : std::string(firstOption);
}

/// Whether the default was read as far as the type needs it.
bool isComplete(const userVariable& variable) {
    if (variable.type == "select" || variable.type == "dropdown")
        return variable.selectOptions && !variable.selectOptions->empty();
    return !isNumeric(variable) || variable.defaultValue != unreadDefault;
}

} // namespace

rangeOpts defaultBounds(std::string_view type) {
    using limits = std::numeric_limits<double>;
    if (type == "range") return {0, 100, 1, std::nullopt};
    return {limits::lowest(), limits::max(), 1, std::nullopt};
}

std::optional<userVariable> parseVariableDeclaration(std::string_view declaration) {
    std::string text = withSingleSpaces(declaration);
    if (std::ranges::find(knownTypes, splitInThree(text).type) == knownTypes.end()) {
        logLine("Invalid variable type.");
        return std::nullopt;
    }
    separateLabelFromName(text);
    separateBraceFromLabel(text);

    const declarationParts parts = splitInThree(text);
    const std::optional<labelAndDefault> label = readLabel(parts.rest);
    if (!label) return std::nullopt;

    userVariable variable;
    variable.type = parts.type;
    variable.name = parts.name;
    variable.label = label->label;
    variable.defaultValue = unreadDefault;
    readDefault(label->defaultText, variable);
    if (!isComplete(variable)) return std::nullopt;
    variable.currentValue = variable.defaultValue;
    return variable;
}

} // namespace tessaril
