#include "store/style_filter.h"

#include "model/case_folding.h"
#include "model/text.h"

#include <algorithm>
#include <utility>

namespace tessaril {

namespace {

std::u16string folded(std::string_view text) {
    std::u16string result = utf16Text(text);
    foldCase(result);
    return result;
}

/// The words between white space, which is the Unicode set.
std::vector<std::u16string> wordsOf(std::string_view text) {
    const std::u16string whole = folded(text);
    std::vector<std::u16string> words;
    std::u16string word;
    const auto endWord = [&] {
        if (!word.empty()) words.push_back(std::exchange(word, {}));
    };
    for (const char16_t unit : whole) {
        if (isWhitespaceOrNewline(unit))
            endWord();
        else
            word += unit;
    }
    endWord();
    return words;
}

/// What tells an address of a site from the site itself, whose rules name it in other ways.
std::u16string withoutScheme(std::u16string word) {
    for (const std::u16string_view scheme : {u"https://", u"http://"})
        if (word.starts_with(scheme)) word.erase(0, scheme.size());
    return word;
}

} // namespace

bool StyleFilter::setText(std::string_view text) {
    std::vector<std::u16string> typed = wordsOf(text);
    for (std::u16string& word : typed)
        word = withoutScheme(std::move(word));
    std::erase(typed, u"");
    if (typed == words) return false;
    words = std::move(typed);
    return true;
}

bool StyleFilter::shows(const styleObject& row) const {
    return std::ranges::all_of(words, [&](const std::u16string& word) {
        return row.searchText.find(word) != std::u16string::npos;
    });
}

std::u16string searchTextOf(const styleContainer& style) {
    // A line break, which no word holds, keeps them apart.
    std::string text = style.styleData.name + "\n" + style.author + "\n" + style.homepageURL;
    const auto add = [&](const std::vector<std::string>& rules) {
        for (const std::string& rule : rules)
            text.append("\n").append(rule);
    };
    for (const styleSection& section : style.styleData.sections) {
        add(section.domains);
        add(section.urls);
        add(section.urlPrefixes);
        for (const std::string& rule : section.regexps)
            text.append("\n").append(replacingAll(rule, "\\", ""));
    }
    return folded(text);
}

} // namespace tessaril
