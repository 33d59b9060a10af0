#include "formats/select_options.h"

#include "model/text.h"

#include <algorithm>

namespace tessaril {

namespace {

constexpr std::size_t npos = std::string_view::npos;

bool isQuote(char c) {
    return c == '"' || c == '\'' || c == '`';
}

bool isQuoted(std::string_view text) {
    return text.size() >= 2 && isQuote(text.front()) && text.front() == text.back();
}

/// The pieces between the commas outside quotes, each trimmed. A stretch ends at the quote
/// character that opened it, so that a value may hold the other two.
std::vector<std::string_view> splitOutsideQuotes(std::string_view text) {
    std::vector<std::string_view> pieces;
    std::size_t pieceStart = 0;
    char openQuote = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char c = text[at];
        if (c == ',' && openQuote == 0) {
            pieces.push_back(trimmed(text.substr(pieceStart, at - pieceStart)));
            pieceStart = at + 1;
        } else if (isQuote(c) && (at == 0 || text[at - 1] != '\\')) {
            if (openQuote == 0)
                openQuote = c;
            else if (openQuote == c)
                openQuote = 0;
        }
    }
    pieces.push_back(trimmed(text.substr(pieceStart)));
    return pieces;
}

std::string unescapedSlashes(std::string_view text) {
    return replacingAll(text, R"(\/)", "/");
}

/// The option that `key` names: "name:label", whatever follows a second ":", or one text for both.
variableOption namedOption(std::string_view key) {
    const std::size_t nameEnd = key.find(':');
    if (nameEnd == npos) return {std::string(key), std::string(key), std::nullopt};
    const std::string_view label =
        key.substr(nameEnd + 1, key.find(':', nameEnd + 1) - nameEnd - 1);
    return {std::string(trimmed(key.substr(0, nameEnd))), std::string(trimmed(label)),
            std::nullopt};
}

std::optional<variableOption> readObjectEntry(std::string_view trimmedEntry) {
    if (trimmedEntry.empty() || !isQuote(trimmedEntry.front())) return std::nullopt;
    const std::string entry = unescapedSlashes(trimmedEntry);
    const std::size_t keyEnd = entry.find(std::string{entry.front(), ':'});
    if (keyEnd == npos) return std::nullopt;

    const std::string_view whole = entry;
    variableOption option = namedOption(dropFirst(trimmed(whole.substr(0, keyEnd))));
    // A value without quotes is taken whole rather than losing its first character.
    const std::string_view value = trimmed(whole.substr(keyEnd + 2));
    const bool hasLoneQuote = !value.empty() && isQuote(value.front()) && !isQuoted(value);
    option.value = hasLoneQuote ? dropFirst(value) : unquoted(value);
    return option;
}

variableOption readArrayPiece(std::string_view piece) {
    // The closing quote goes before the cut at ":", so that it stays with neither part.
    std::string_view text = unquoted(piece);
    if (!isQuoted(piece)) {
        if (isQuote(text.front())) text.remove_prefix(1);
        if (text.ends_with('"')) text.remove_suffix(1);
    }
    variableOption option = namedOption(text);
    option.value = option.name;
    return option;
}

} // namespace

std::optional<std::vector<variableOption>> readHeredocOptions(std::string_view inside) {
    constexpr std::string_view opening = "<<<EOT";
    constexpr std::string_view closing = "EOT;";
    if (!contains(inside, opening) || !contains(inside, closing)) return std::nullopt;

    std::vector<variableOption> options;
    for (const std::string_view block : split(inside, closing)) {
        const std::size_t labelQuote = block.find('"');
        if (labelQuote == npos) continue;
        const std::size_t labelEnd = block.find('"', labelQuote + 1);
        if (labelEnd == npos) continue;

        std::string_view value = trimmed(block.substr(labelEnd + 1));
        if (value.starts_with(opening)) value = trimmed(value.substr(opening.size()));
        options.push_back(
            {std::string(trimmed(block.substr(0, labelQuote))),
             std::string(trimmed(block.substr(labelQuote + 1, labelEnd - labelQuote - 1))),
             unescapedSlashes(value)});
    }
    return options;
}

std::optional<std::vector<variableOption>> readObjectOptions(std::string_view inside) {
    std::vector<variableOption> options;
    for (const std::string_view entry : splitOutsideQuotes(inside)) {
        std::optional<variableOption> option = readObjectEntry(entry);
        if (!option) return std::nullopt;
        options.push_back(std::move(*option));
    }
    return options;
}

std::vector<variableOption> readArrayOptions(std::string_view inside) {
    std::vector<variableOption> options;
    for (const std::string_view piece : splitOutsideQuotes(inside))
        if (!piece.empty()) options.push_back(readArrayPiece(piece));
    return options;
}

std::string markedOption(const std::vector<variableOption>& options) {
    const auto marked = std::ranges::find_if(options, [](const variableOption& option) {
        return option.name && option.name->ends_with('*');
    });
    return std::to_string(marked == options.end() ? 0 : marked - options.begin());
}

std::string_view unquoted(std::string_view text) {
    return isQuoted(text) ? text.substr(1, text.size() - 2) : text;
}

} // namespace tessaril
