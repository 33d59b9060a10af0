#include "icons/html_links.h"

#include "model/text.h"
#include "model/utf8.h"
#include "platform/url_loader.h"

#include <algorithm>
#include <array>
#include <optional>

namespace tessaril {

namespace {

constexpr std::size_t mostLinks = 200;

/// Elements whose content is no markup.
constexpr std::array<std::string_view, 5> rawElements{"script", "style", "title", "textarea",
                                                      "noframes"};

bool isSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f';
}

struct attribute {
    std::string name; ///< in lower case
    std::string_view value;
};

/// The character that a reference without its "&" and ";" stands for, of those that are met in
/// addresses.
std::optional<char32_t> referenced(std::string_view name) {
    if (name == "amp") return U'&';
    if (name == "quot") return U'"';
    if (name == "apos") return U'\'';
    if (!name.starts_with('#')) return std::nullopt;
    name.remove_prefix(1);
    const char32_t radix = name.starts_with('x') || name.starts_with('X') ? 16 : 10;
    if (radix == 16) name.remove_prefix(1);
    if (name.empty()) return std::nullopt;
    char32_t c = 0;
    for (const char digit : name) {
        const auto value = hexDigit(digit);
        if (!value || *value >= radix) return std::nullopt;
        c = c * radix + *value;
        if (c > 0x10FFFF) return std::nullopt;
    }
    if (c >= 0xD800 && c <= 0xDFFF) return std::nullopt;
    return c;
}

std::string decoded(std::string_view value) {
    constexpr std::size_t longestName = 8;
    std::string text;
    for (std::size_t at = 0; at < value.size(); ++at) {
        if (value[at] == '&') {
            const std::size_t end = value.substr(at, longestName + 2).find(';');
            if (end != std::string_view::npos) {
                if (const auto c = referenced(value.substr(at + 1, end - 1))) {
                    appendUTF8(text, *c);
                    at += end;
                    continue;
                }
            }
        }
        text += value[at];
    }
    return text;
}

/// Goes through the tags of a page. Every member moves forward only.
class TagReader {
public:
    explicit TagReader(std::string_view markup) : html(markup) {}

    /// Moves behind the name of the next tag; its name in lower case, with a leading slash where
    /// the tag closes. Nothing at the end.
    std::optional<std::string> nextTag() {
        while ((at = html.find('<', at)) != std::string_view::npos) {
            ++at;
            if (rest().starts_with("!--")) {
                skipBehind("-->");
            } else if (const std::string name = takeName(); !name.empty() && name != "/") {
                return name;
            }
        }
        at = html.size();
        return std::nullopt;
    }

    /// The attributes up to the tag's end.
    std::vector<attribute> attributes() {
        std::vector<attribute> found;
        for (;;) {
            skipWhile([](char c) { return isSpace(c) || c == '/'; });
            if (at >= html.size()) return found;
            if (html[at] == '>') {
                ++at;
                return found;
            }
            attribute next;
            const std::size_t start = at++; // also where it is a stray "="
            skipWhile([](char c) { return !isSpace(c) && c != '/' && c != '>' && c != '='; });
            next.name = lowercasedASCII(html.substr(start, at - start));
            skipWhile(isSpace);
            if (rest().starts_with('=')) {
                ++at;
                skipWhile(isSpace);
                next.value = takeValue();
            }
            found.push_back(std::move(next));
        }
    }

    /// Moves to the closing tag of the element whose opening tag was just read.
    void skipContent(std::string_view name) {
        while ((at = html.find("</", at)) != std::string_view::npos) {
            if (lowercasedASCII(html.substr(at + 2, name.size())) == name) return;
            at += 2;
        }
        at = html.size();
    }

private:
    std::string_view rest() const { return html.substr(std::min(at, html.size())); }

    template <typename Condition>
    void skipWhile(Condition holds) {
        while (at < html.size() && holds(html[at]))
            ++at;
    }

    void skipBehind(std::string_view end) {
        const std::size_t found = html.find(end, at);
        at = found == std::string_view::npos ? html.size() : found + end.size();
    }

    std::string takeName() {
        const std::size_t start = at;
        if (rest().starts_with('/')) ++at;
        skipWhile([](char c) { return (c | 0x20) >= 'a' && (c | 0x20) <= 'z'; });
        return lowercasedASCII(html.substr(start, at - start));
    }

    std::string_view takeValue() {
        if (at >= html.size()) return {};
        const char quote = html[at];
        std::size_t start = at;
        if (quote == '"' || quote == '\'') {
            start = ++at;
            skipWhile([quote](char c) { return c != quote; });
            const std::string_view value = html.substr(start, at - start);
            if (at < html.size()) ++at;
            return value;
        }
        skipWhile([](char c) { return !isSpace(c) && c != '>'; });
        return html.substr(start, at - start);
    }

    std::string_view html;
    std::size_t at = 0;
};

std::vector<std::string> lowerCaseWords(std::string_view text) {
    std::vector<std::string> words;
    std::string word;
    for (const char c : text) {
        if (!isSpace(c)) {
            word += c;
        } else if (!word.empty()) {
            words.push_back(lowercasedASCII(word));
            word.clear();
        }
    }
    if (!word.empty()) words.push_back(lowercasedASCII(word));
    return words;
}

/// The value of the first attribute of the name, as browsers take it; an overlong one counts as
/// empty, none of those read here being longer than an address.
std::string valueOf(std::string_view name, const std::vector<attribute>& attributes) {
    const auto found = std::ranges::find(attributes, name, &attribute::name);
    if (found == attributes.end() || found->value.size() > longestWebAddress) return {};
    return decoded(found->value);
}

} // namespace

htmlHead readHead(std::string_view html) {
    htmlHead head;
    TagReader tags(html);
    while (const auto tag = tags.nextTag()) {
        if (*tag == "/head" || *tag == "body") break;
        const auto attributes = tags.attributes();
        if (std::ranges::find(rawElements, *tag) != rawElements.end()) {
            tags.skipContent(*tag);
        } else if (*tag == "base" && head.base.empty()) {
            head.base = valueOf("href", attributes);
        } else if (*tag == "link" && head.links.size() < mostLinks) {
            head.links.push_back({.rel = lowerCaseWords(valueOf("rel", attributes)),
                                  .href = valueOf("href", attributes),
                                  .type = valueOf("type", attributes),
                                  .sizes = valueOf("sizes", attributes)});
        }
    }
    return head;
}

} // namespace tessaril
