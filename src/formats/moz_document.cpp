#include "formats/moz_document.h"

#include "formats/block_comment.h"
#include "formats/byte_places.h"
#include "model/log.h"
#include "model/text.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>

namespace tessaril {

namespace {

constexpr std::string_view keyword = mozDocumentKeyword;
constexpr std::size_t npos = std::string_view::npos;

/// A match function and the list of a section that holds its arguments.
struct matchFunction {
    std::string_view name;
    std::vector<std::string> styleSection::*rules;
};

/// In the order in which they are written.
constexpr std::array<matchFunction, 4> matchFunctions = {{
    {"domain", &styleSection::domains},
    {"url", &styleSection::urls},
    {"url-prefix", &styleSection::urlPrefixes},
    {"regexp", &styleSection::regexps},
}};

bool isLineBreak(char c) {
    return c == '\n' || c == '\r';
}

/// The text between the first `opening` and the last `closing` after it.
std::optional<std::string_view> between(std::string_view text, std::string_view opening,
                                        std::string_view closing) {
    const std::size_t start = text.find(opening);
    if (start == npos) return std::nullopt;
    const std::string_view rest = text.substr(start + opening.size());
    const std::size_t end = rest.rfind(closing);
    if (end == npos) return std::nullopt;
    return rest.substr(0, end);
}

/// The argument of one match function; nothing when its closing pair is missing.
std::optional<std::string_view> functionArgument(std::string_view function, bool mustBeQuoted) {
    if (contains(function, "(\"")) return between(function, "(\"", "\")");
    if (contains(function, "('")) return between(function, "('", "')");
    if (mustBeQuoted) return std::nullopt;
    return between(function, "(", ")");
}

void appendRule(styleSection& section, std::string_view function) {
    const auto kind = std::ranges::find_if(matchFunctions, [&](const matchFunction& candidate) {
        return function.starts_with(candidate.name) &&
               function.substr(candidate.name.size()).starts_with('(');
    });
    if (kind == matchFunctions.end()) return;
    const bool isRegexp = kind->rules == &styleSection::regexps;
    const std::optional<std::string_view> argument = functionArgument(function, isRegexp);
    if (!argument) return;
    std::string rule(*argument);
    if (isRegexp) rule = replacingAll(replacingAll(rule, R"(\\)", R"(\)"), R"(\/)", "/");
    (section.*kind->rules).push_back(std::move(rule));
}

/// Where the header of a chunk ends: at a space, ")" or line break with a brace after it.
std::size_t headerEnd(std::string_view chunk) {
    for (std::size_t brace = chunk.find('{', 1); brace != npos;
         brace = chunk.find('{', brace + 1)) {
        const char before = chunk[brace - 1];
        if (before == ' ' || before == ')' || isLineBreak(before)) return brace - 1;
    }
    return npos;
}

/// The brace that closes the block whose header ends at `start`; npos when the braces never
/// balance. Braces in comments do not count, those in strings do.
std::size_t closingBrace(std::string_view chunk, std::size_t start, bool hasLineComments) {
    BytePlaces<'{', '}', '/'> places(chunk);
    BlockComment comment(chunk);
    std::size_t lineCommentEnd = 0;
    std::size_t opened = 0;
    std::size_t closed = 0;

    for (std::size_t at = places.from(0); at != npos; at = places.from(at + 1)) {
        if (chunk[at] == '/') {
            comment.passSlash(at);
            // A line comment begins in a block comment too, and hides the rest of that line.
            const bool isLineComment = hasLineComments && at >= start && at >= lineCommentEnd &&
                                       chunk.substr(at).starts_with("//");
            if (isLineComment)
                lineCommentEnd = std::min(chunk.find_first_of("\r\n", at), chunk.size());
            continue;
        }
        if (comment.isOpen() || at < start || at < lineCommentEnd) continue;
        if (chunk[at] == '{')
            ++opened;
        else if (++closed == opened)
            return at;
    }
    return npos;
}

/// `text` without one tab at the start of every line but the first.
std::string withoutIndentation(std::string_view text) {
    std::string result(text.size(), '\0');
    char* end = result.data();
    std::size_t done = 0;
    const auto copyUpTo = [&](std::size_t at) {
        // Most lines are short: a copy of fixed size is done with before a call would begin.
        constexpr std::size_t shortLine = 64;
        const std::size_t size = at - done;
        const bool fits = size <= shortLine && done + shortLine <= text.size();
        if (fits)
            std::memcpy(end, text.data() + done, shortLine);
        else
            std::memcpy(end, text.data() + done, size);
        end += size;
    };
    BytePlaces<'\n'> lineBreaks(text);
    for (std::size_t at = lineBreaks.from(0); at != npos; at = lineBreaks.from(at + 1)) {
        if (!text.substr(at + 1).starts_with('\t')) continue;
        copyUpTo(at + 1);
        done = at + 2;
    }
    copyUpTo(text.size());
    result.resize(static_cast<std::size_t>(end - result.data()));
    return result;
}

/// The code of a block without the indentation that writing it as a block gave it.
std::string blockCode(std::string_view body, std::string_view preprocessor) {
    std::string normalised;
    if (preprocessor == "stylus" && contains(body, "\n    "))
        body = normalised = replacingAll(body, "    ", "\t");
    // The replacements below change nothing between white space and other characters, so trimming
    // may come first and saves a copy.
    body = trimmed(body);
    if (body.find('\r') != npos) {
        normalised = replacingAll(body, "\r\n", "\n");
        std::ranges::replace(normalised, '\r', '\n');
        body = normalised;
    }
    return withoutIndentation(body);
}

bool isSingleComment(std::string_view text) {
    if (text.starts_with("//")) return !contains(text, "\n");
    return text.starts_with("/*") && text.ends_with("*/") && text.find("*/") == text.size() - 2;
}

/// Collects the sections of the chunks that it is given in order.
class SectionCollector {
public:
    explicit SectionCollector(std::string_view ownPreprocessor)
        : preprocessor(ownPreprocessor)
        , isStylus(lowercasedASCII(ownPreprocessor) == "stylus")
        , hasLineComments(isStylus || lowercasedASCII(ownPreprocessor) == "less") {}

    /// Code outside any block.
    void addCode(std::string_view code) { sections.emplace_back().code = code; }

    /// A chunk that begins with the keyword.
    void addChunk(std::string_view chunk) {
        const std::size_t split = headerEnd(chunk);
        if (split == npos) {
            if (isStylus) addIndentedBlock(chunk);
            return;
        }
        const std::size_t bodyStart = split + 2; // after the brace
        const std::size_t bodyEnd = closingBrace(chunk, split, hasLineComments);
        if (bodyEnd == npos || bodyEnd == bodyStart) return;

        const std::string_view body = chunk.substr(bodyStart, bodyEnd - bodyStart);
        addSection(trimmed(chunk.substr(0, split)), blockCode(body, preprocessor));
        addTrailing(chunk.substr(bodyEnd + 1));
    }

    std::vector<styleSection> take() { return std::move(sections); }

private:
    std::string_view preprocessor;
    bool isStylus;
    bool hasLineComments;
    std::vector<styleSection> sections;
    /// A lone comment after a block, which belongs to the next section.
    std::optional<std::string> pendingComment;

    void addIndentedBlock(std::string_view chunk) {
        const auto lineBreak = std::ranges::find_if(chunk, isLineBreak);
        if (lineBreak == chunk.end()) return;
        const auto split = static_cast<std::size_t>(lineBreak - chunk.begin());
        addSection(trimmed(chunk.substr(0, split)), std::string(chunk.substr(split + 1)));
    }

    void addSection(std::string_view header, std::string code) {
        if (pendingComment) {
            code = *pendingComment + "\n\n" + code;
            pendingComment.reset();
        }
        sections.push_back(parseSectionHeader(header, std::move(code)));
        if (sections.back().appliesEverywhere()) logHeaderWithoutRules(header);
    }

    void addTrailing(std::string_view trailing) {
        std::string normalised(trimmed(trailing));
        if (normalised.empty()) return;
        std::ranges::replace(normalised, '\r', '\n');
        if (isSingleComment(normalised))
            pendingComment = std::move(normalised);
        else
            addCode(normalised);
    }

    static void logHeaderWithoutRules(std::string_view header) {
        std::string start(header.substr(0, header.size() - dropFirst(header, 80).size()));
        std::ranges::replace_if(start, isLineBreak, ' ');
        logLine("A section without a readable rule applies to every page: " + start);
    }
};

/// The rules of a section as match functions with double quotes.
std::string writtenHeader(const styleSection& section) {
    std::string header;
    for (const auto& [name, rules] : matchFunctions) {
        for (const std::string& rule : section.*rules) {
            header.append(header.empty() ? "" : ", ").append(name).append("(\"");
            header.append(rules == &styleSection::regexps ? replacingAll(rule, R"(\)", R"(\\)")
                                                          : rule);
            header.append("\")");
        }
    }
    return header;
}

} // namespace

std::vector<std::string_view> splitAtMozDocument(std::string_view text) {
    if (trimmed(text).empty()) return {std::string_view()};

    std::vector<std::string_view> chunks;
    std::size_t chunkStart = 0;
    BytePlaces<'/', '@'> places(text);
    BlockComment comment(text);
    for (std::size_t at = places.from(0); at != npos; at = places.from(at + 1)) {
        if (text[at] == '/') {
            comment.passSlash(at);
        } else if (at > 0 && !comment.isOpen() && text.substr(at).starts_with(keyword)) {
            chunks.push_back(trimmed(text.substr(chunkStart, at - chunkStart)));
            chunkStart = at;
        }
    }
    chunks.push_back(trimmed(text.substr(chunkStart)));
    return chunks;
}

styleSection parseSectionHeader(std::string_view header, std::string code) {
    styleSection section;
    section.code = std::move(code);
    if (header.starts_with(keyword)) header = dropFirst(header, keyword.size() + 1);
    for (const std::string_view piece : split(header, "),")) {
        std::string function(trimmed(piece));
        if (!function.ends_with(')')) function += ')';
        appendRule(section, function);
    }
    return section;
}

std::vector<styleSection> sectionsFromCSS(std::string_view css, std::string_view preprocessor) {
    SectionCollector collector(preprocessor);
    bool isFirst = true;
    for (const std::string_view chunk : splitAtMozDocument(css)) {
        if (isFirst && !chunk.starts_with(keyword)) {
            if (!chunk.empty()) collector.addCode(chunk);
        } else {
            collector.addChunk(chunk);
        }
        isFirst = false;
    }
    return collector.take();
}

std::string joinSectionsForPreprocessor(const styleContainer& style) {
    const bool isStylus = lowercasedASCII(style.preprocessor) == "stylus";
    std::string joined;
    bool isFirst = true;
    for (const styleSection& section : style.styleData.sections) {
        if (section.appliesEverywhere()) {
            joined.append(isFirst ? "" : "\n").append(section.code);
        } else {
            joined.append(isFirst ? "" : "\n\n");
            joined.append(keyword).append(" ").append(writtenHeader(section)).append("\n");
            const bool isIndentedBlock = isStylus && !contains(section.code, "{");
            joined.append(isIndentedBlock ? "\n\t" : "{\n\t");
            joined.append(replacingAll(section.code, "\n", "\n\t"));
            joined.append(isIndentedBlock ? "\n" : "\n}");
        }
        isFirst = false;
    }
    return joined;
}

} // namespace tessaril
