#include "formats/user_css_reader.h"

#include "formats/moz_document.h"
#include "formats/variable_declaration.h"
#include "model/text.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>
#include <vector>

namespace tessaril {

namespace {

/// What the metadata block says; a key that it does not hold has no value.
struct metadata {
    std::optional<std::string> name;
    std::optional<std::string> version;
    std::optional<std::string> namespace_;
    std::optional<std::string> description;
    std::optional<std::string> author;
    std::optional<std::string> homepageURL;
    std::optional<std::string> supportURL;
    std::optional<std::string> updateURL;
    std::optional<std::string> license;
    std::optional<std::string> preprocessor;
    std::vector<userVariable> variables;
};

struct metadataKey {
    std::string_view key;
    std::optional<std::string> metadata::*value; ///< null: the key declares a variable
};

/// In the order in which a line is tested against them.
constexpr std::array<metadataKey, 12> metadataKeys = {{
    {"@name", &metadata::name},
    {"@version", &metadata::version},
    {"@namespace", &metadata::namespace_},
    {"@description", &metadata::description},
    {"@var", nullptr},
    {"@advanced", nullptr},
    {"@author", &metadata::author},
    {"@homepageURL", &metadata::homepageURL},
    {"@supportURL", &metadata::supportURL},
    {"@updateURL", &metadata::updateURL},
    {"@license", &metadata::license},
    {"@preprocessor", &metadata::preprocessor},
}};
constexpr std::size_t longestKey =
    std::ranges::max_element(metadataKeys, {}, [](const metadataKey& row) {
        return row.key.size();
    })->key.size();

/// The key that the trimmed `line` begins with, letter for letter.
const metadataKey* keyOf(std::string_view line) {
    for (const metadataKey& row : metadataKeys) {
        if (!line.starts_with(row.key)) continue;
        if (row.key == "@name" && contains(line, "@namespace")) continue;
        return &row;
    }
    return nullptr;
}

/// Whether the trimmed `line` begins with a key in any case, which ends a value of several lines.
bool isKeyLine(std::string_view line) {
    if (!line.starts_with('@')) return false;
    const std::string start = lowercasedASCII(line.substr(0, longestKey));
    return std::ranges::any_of(metadataKeys, [&](const metadataKey& row) {
        return start.starts_with(lowercasedASCII(row.key));
    });
}

/// Reads the lines of a metadata block in order.
class MetadataReader {
public:
    void readLine(std::string_view line) {
        const std::string_view content = trimmed(line);
        if (!isKeyLine(content)) {
            continueValue(line);
            return;
        }
        finishVariable();
        descriptionContinues = false;
        const metadataKey* const row = keyOf(content);
        if (!row) return;

        std::string value(trimmed(content.substr(row->key.size())));
        if (!row->value) {
            pendingVariable = std::move(value);
            return;
        }
        result.*row->value = std::move(value);
        descriptionContinues = row->value == &metadata::description;
    }

    metadata take() {
        finishVariable();
        return std::move(result);
    }

private:
    metadata result;
    bool descriptionContinues = false;
    std::optional<std::string> pendingVariable;

    void continueValue(std::string_view line) {
        if (descriptionContinues)
            result.description->append("\n").append(line);
        else if (pendingVariable)
            pendingVariable->append("\n").append(line);
    }

    void finishVariable() {
        if (!pendingVariable) return;
        std::optional<userVariable> variable = parseVariableDeclaration(*pendingVariable);
        if (variable) result.variables.push_back(std::move(*variable));
        pendingVariable.reset();
    }
};

/// `block` runs from the opening through the closing marker, or is empty. Its last line, which
/// holds the closing marker, is not read.
metadata readMetadata(std::string_view block) {
    std::string text(block);
    std::ranges::replace(text, '\r', '\n');

    MetadataReader reader;
    std::size_t start = 0;
    for (std::size_t end = text.find('\n'); end != std::string::npos;
         end = text.find('\n', start)) {
        reader.readLine(std::string_view(text).substr(start, end - start));
        start = end + 1;
    }
    return reader.take();
}

/// Where the metadata block stands in `text`, markers included; empty and at the end when there is
/// none. A closing marker before the opening one leaves a text without a block.
struct blockPlace {
    std::size_t start;
    std::size_t end;
};

blockPlace findBlock(std::string_view text) {
    const std::size_t start = text.find(metadataOpening);
    const std::size_t closing = text.find(metadataClosing);
    if (start == std::string_view::npos || closing == std::string_view::npos || closing < start)
        return {text.size(), text.size()};
    return {start, closing + metadataClosing.size()};
}

/// The style without an identifier and not compiled.
std::optional<styleContainer> readStyle(std::string_view text) {
    const blockPlace block = findBlock(text);
    const std::string_view before = trimmed(text.substr(0, block.start));
    const std::string_view after = trimmed(text.substr(block.end));
    // Joining copies the whole text, so only where there is something on both sides.
    std::string joined;
    if (!before.empty() && !after.empty())
        joined = std::string(text.substr(0, block.start)).append(text.substr(block.end));
    const std::string_view css = !joined.empty() ? trimmed(joined) : after.empty() ? before : after;

    metadata properties = readMetadata(text.substr(block.start, block.end - block.start));
    std::string preprocessor = properties.preprocessor.value_or("");
    styleJSON styleData;
    styleData.sections = sectionsFromCSS(css, preprocessor);
    if (styleData.sections.empty()) return std::nullopt;

    styleData.name = properties.name.value_or(std::string(defaultStyleName));
    styleContainer style =
        makeStyleContainer(std::move(styleData), sourceUserCSS, noUserstyleID, 0);
    style.version = properties.version.value_or("");
    style.namespace_ = properties.namespace_.value_or("");
    style.description = properties.description.value_or("");
    style.author = properties.author.value_or("");
    style.homepageURL = properties.homepageURL.value_or("");
    style.supportURL = properties.supportURL.value_or("");
    style.license = properties.license.value_or("");
    style.preprocessor = std::move(preprocessor);
    style.updateURL = std::move(properties.updateURL);
    style.userVariables = std::move(properties.variables);
    return style;
}

/// The preprocessor's words count in lower case only here, whatever the compilation accepts.
bool isCompiledOnReading(const styleContainer& style) {
    return !style.userVariables->empty() || style.preprocessor == "stylus" ||
           style.preprocessor == "less";
}

} // namespace

std::optional<styleContainer> parseUserCSS(std::string_view text, const styleMaking& making) {
    std::optional<styleContainer> style = readStyle(text);
    if (!style) return std::nullopt;
    style->uniqueID = making.generateUniqueID();
    if (isCompiledOnReading(*style)) making.compileStyle(*style);
    return style;
}

std::optional<styleContainer> parseCompiledCSS(std::string_view text) {
    return readStyle(text);
}

} // namespace tessaril
