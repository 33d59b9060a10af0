#include "preferences/ini_text.h"

#include "model/text.h"
#include "model/utf8.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tessaril {

namespace {

constexpr std::string_view generalGroup = "[General]";
constexpr std::string_view commentSigns = ";#";

constexpr std::array<std::pair<char, char>, 11> escapes = {{{'a', '\a'},
                                                            {'b', '\b'},
                                                            {'f', '\f'},
                                                            {'n', '\n'},
                                                            {'r', '\r'},
                                                            {'t', '\t'},
                                                            {'v', '\v'},
                                                            {'"', '"'},
                                                            {'?', '?'},
                                                            {'\'', '\''},
                                                            {'\\', '\\'}}};

/// Without the blanks around it that belong to the line and not to its value.
std::string_view withoutBlanks(std::string_view text) {
    constexpr std::string_view blanks = " \t\r";
    const std::size_t begin = std::min(text.find_first_not_of(blanks), text.size());
    return text.substr(begin, text.find_last_not_of(blanks) + 1 - begin);
}

/// Reads what follows a backslash at `at`, which moves behind it.
void appendEscaped(std::string& text, std::string_view written, std::size_t& at) {
    const char kind = written[at++];
    if (kind == 'x') {
        // As many digits as there are; a UTF-16 unit has four.
        char32_t unit = 0;
        for (; at < written.size() && hexDigit(written[at]); ++at)
            unit = (unit << 4 | *hexDigit(written[at])) & 0xFFFF;
        appendUTF8(text, unit);
        return;
    }
    if (kind >= '0' && kind <= '7') {
        char32_t unit = static_cast<char32_t>(kind - '0');
        for (; at < written.size() && written[at] >= '0' && written[at] <= '7'; ++at)
            unit = (unit << 3 | static_cast<char32_t>(written[at] - '0')) & 0xFFFF;
        appendUTF8(text, unit);
        return;
    }
    const auto found = std::ranges::find(escapes, kind, &std::pair<char, char>::first);
    text += found != escapes.end() ? found->second : kind;
}

/// The name in the line of a group; a comment may stand behind it.
std::optional<std::string_view> groupIn(std::string_view line) {
    const std::size_t end = line.find(']');
    if (end == line.npos) return std::nullopt;
    const std::string_view rest = withoutBlanks(line.substr(end + 1));
    if (!rest.empty() && commentSigns.find(rest.front()) == commentSigns.npos) return std::nullopt;
    return withoutBlanks(line.substr(1, end - 1));
}

std::string decoded(std::string_view written) {
    std::string text;
    std::size_t keep = 0; // what stood in quotes is not trimmed
    bool isQuoted = false;
    for (std::size_t at = 0; at < written.size();) {
        const char c = written[at++];
        if (c == '"') {
            isQuoted = !isQuoted;
        } else if (c == '\\' && at < written.size()) {
            appendEscaped(text, written, at);
        } else if (c == ';' && !isQuoted) {
            break; // a comment behind the value
        } else {
            text += c;
            if (!isQuoted) continue;
        }
        keep = text.size();
    }
    while (text.size() > keep && (text.back() == ' ' || text.back() == '\t'))
        text.pop_back();
    // An "@" at the start is doubled, as alone it opens a value of another type.
    return validUTF8(text.starts_with("@@") ? std::string_view(text).substr(1) : text);
}

std::string encoded(std::string_view value) {
    constexpr std::string_view hexDigits = "0123456789abcdef";
    std::string text = value.starts_with('@') ? "@" : "";
    bool needsQuotes = value.find_first_of(";,=\"\\") != value.npos || trimmed(value) != value;
    bool isAfterHex = false; // where a digit would be taken for one more of it
    for (const char c : value) {
        const auto byte = static_cast<unsigned char>(c);
        const auto known = std::ranges::find(escapes, c, &std::pair<char, char>::second);
        if (known != escapes.end() && c != '?' && c != '\'') {
            text += {'\\', known->first};
            isAfterHex = false;
            needsQuotes = true;
        } else if (byte < 0x20 || byte == 0x7F || (isAfterHex && hexDigit(c))) {
            text += {'\\', 'x', hexDigits[byte >> 4], hexDigits[byte & 0xF]};
            isAfterHex = true;
            needsQuotes = true;
        } else {
            text += c;
            isAfterHex = false;
        }
    }
    return needsQuotes ? '"' + text + '"' : text;
}

} // namespace

std::optional<IniText> IniText::parse(std::string bytes) {
    IniText parsed;
    // What stands behind the last line break is no line, or not all of one: it may end within a
    // character.
    const std::size_t whole = bytes.rfind('\n') + 1;
    parsed.cutShort = whole < bytes.size();
    bytes.resize(whole);
    const auto text = textFromUTF8(std::move(bytes));
    if (!text || text->find('\0') != text->npos) return std::nullopt;

    bool isGeneral = true;
    auto pieces = split(*text, "\n");
    pieces.pop_back();
    for (std::string_view piece : pieces) {
        if (piece.ends_with('\r')) piece.remove_suffix(1);
        const std::string_view content = trimmed(piece);
        line read{std::string(piece), "", isGeneral};
        if (content.starts_with('[')) {
            const auto name = groupIn(content);
            if (!name) return std::nullopt;
            isGeneral = lowercasedASCII(*name) == "general";
            read.isGeneral = isGeneral;
        } else if (!content.empty() && commentSigns.find(content.front()) == commentSigns.npos) {
            const std::size_t equals = content.find('=');
            if (equals == content.npos || equals == 0) return std::nullopt;
            read.key = trimmed(content.substr(0, equals));
        }
        parsed.lines.push_back(std::move(read));
    }
    return parsed;
}

std::optional<std::string> IniText::value(std::string_view key) const {
    for (auto each = lines.rbegin(); each != lines.rend(); ++each)
        if (each->isGeneral && each->key == key)
            return decoded(
                withoutBlanks(std::string_view(each->text).substr(each->text.find('=') + 1)));
    return std::nullopt;
}

void IniText::set(std::string_view key, std::string_view value) {
    line written{std::string(key) + '=' + encoded(validUTF8(value)), std::string(key)};
    bool isReplaced = false;
    auto place = lines.end(); // behind the last line of the group
    for (auto each = lines.begin(); each != lines.end(); ++each) {
        if (!each->isGeneral) continue;
        if (each->key == key) {
            *each = written;
            isReplaced = true;
        }
        if (!trimmed(each->text).empty()) place = each + 1;
    }
    if (isReplaced) return;
    if (place == lines.end() && (lines.empty() || !lines.back().isGeneral)) {
        lines.push_back({std::string(generalGroup), ""});
        place = lines.end();
    }
    lines.insert(place, std::move(written));
}

void IniText::remove(std::string_view key) {
    std::erase_if(lines, [&](const line& each) { return each.isGeneral && each.key == key; });
}

bool IniText::isEmpty() const {
    return std::ranges::all_of(lines, [](const line& each) { return each.key.empty(); });
}

std::string IniText::text() const {
    std::string whole;
    for (const line& each : lines)
        whole += each.text + '\n';
    return whole;
}

} // namespace tessaril
