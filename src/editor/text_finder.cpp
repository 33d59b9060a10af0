#include "editor/text_finder.h"

#include "editor/text_places.h"
#include "model/case_folding.h"

#include <algorithm>
#include <utility>

namespace tessaril {

TextFinder::TextFinder(TextFinderClient& ownClient) : client(ownClient) {}

bool TextFinder::canPerform(textFinderAction action) const {
    switch (action) {
    case textFinderAction::showFindInterface:
    case textFinderAction::nextMatch:
    case textFinderAction::previousMatch:
        return true;
    case textFinderAction::hideFindInterface:
        return shown != findBarVisibility::hidden;
    case textFinderAction::showReplaceInterface:
        return client.isEditable();
    case textFinderAction::hideReplaceInterface:
        return shown == findBarVisibility::findAndReplace;
    case textFinderAction::replace:
    case textFinderAction::replaceAndFind:
    case textFinderAction::replaceAll:
        return !searchedText.empty() && client.isEditable();
    }
    return false;
}

void TextFinder::perform(textFinderAction action) {
    if (!canPerform(action)) return;
    switch (action) {
    case textFinderAction::showFindInterface:
        return show(std::max(shown, findBarVisibility::find));
    case textFinderAction::hideFindInterface:
        return hide(findBarVisibility::hidden);
    case textFinderAction::showReplaceInterface:
        return show(findBarVisibility::findAndReplace);
    case textFinderAction::hideReplaceInterface:
        return hide(findBarVisibility::find);
    case textFinderAction::nextMatch:
        return step(true);
    case textFinderAction::previousMatch:
        return step(false);
    case textFinderAction::replace:
    case textFinderAction::replaceAndFind:
    case textFinderAction::replaceAll:
        putOff = action;
        return client.settle();
    }
}

void TextFinder::setSearchText(std::string text) {
    if (text == searchedText) return;
    forgetPutOff(); // it was about another search
    searchedText = std::move(text);
    matchStarts.reset();
    if (shown == findBarVisibility::hidden || toSelect || searchedText.empty()) return tell({});

    if (!searchStart) searchStart = client.firstSelectedRange().location;
    searchFrom(*searchStart);
}

void TextFinder::setReplacement(std::string text) {
    forgetPutOff();
    replacementText = std::move(text);
}

void TextFinder::setMatchCase(bool matters) {
    if (matters == caseMatters) return;
    forgetPutOff();
    caseMatters = matters;
    comparedText.reset();
    matchStarts.reset();
    tell({});
}

void TextFinder::textWillChange() {
    comparedText.reset();
    matchStarts.reset();
    searchStart.reset();
    toSelect.reset();
    lastReport.replaced.reset();
    // Whatever stands there in the new text, nobody has selected it.
    client.setSelectedRanges({});
}

void TextFinder::textDidChange() {
    comparedText.reset();
    matchStarts.reset();
    const auto [replaced, findNext] = toSelect.value_or(selectionToCome{});
    if (!std::exchange(toSelect, std::nullopt)) {
        // Counting can wait while nobody sees it.
        if (shown != findBarVisibility::hidden) tell({.replaced = lastReport.replaced});
        return;
    }
    // Selected even if no match follows: otherwise the cursor would stay at the text's start.
    select(replaced);
    if (findNext) return step(true);
    tell({});
}

void TextFinder::textDidSettle() {
    const auto action = std::exchange(putOff, std::nullopt);
    if (action && canPerform(*action)) makeReplacement(*action);
}

void TextFinder::makeReplacement(textFinderAction action) {
    if (action == textFinderAction::replaceAll) return replaceAll();
    replaceCurrent(action == textFinderAction::replaceAndFind);
}

const std::vector<std::size_t>& TextFinder::matches() {
    if (matchStarts) return *matchStarts;
    matchStarts.emplace();
    if (searchedText.empty()) return *matchStarts;

    if (!comparedText) {
        comparedText = utf16Text(client.string());
        if (!caseMatters) foldCase(*comparedText);
    }
    std::u16string searched = utf16Text(searchedText);
    if (!caseMatters) foldCase(searched);
    matchLength = searched.size();
    for (std::size_t at = comparedText->find(searched); at != std::u16string::npos;
         at = comparedText->find(searched, at + matchLength))
        matchStarts->push_back(at);
    return *matchStarts;
}

textRange TextFinder::matchAt(std::size_t index) {
    return {matches()[index], matchLength};
}

std::optional<std::size_t> TextFinder::currentMatch() {
    const std::vector<textRange>& selected = client.selectedRanges();
    const std::vector<std::size_t>& starts = matches();
    if (selected.size() != 1 || selected.front().length != matchLength) return std::nullopt;
    const auto found = std::ranges::lower_bound(starts, selected.front().location);
    if (found == starts.end() || *found != selected.front().location) return std::nullopt;
    return static_cast<std::size_t>(found - starts.begin());
}

void TextFinder::show(findBarVisibility visibility) {
    shown = visibility;
    searchStart.reset();
    tell({});
    if (bar) bar->finderShown();
}

void TextFinder::hide(findBarVisibility visibility) {
    forgetPutOff();
    shown = visibility;
    tell({});
}

void TextFinder::step(bool forward) {
    if (searchedText.empty()) return show(std::max(shown, findBarVisibility::find));
    searchStart.reset();
    if (putOff) {
        // First the replacement, of the match that is selected now.
        if (*putOff == textFinderAction::replace) putOff = textFinderAction::replaceAndFind;
        return;
    }
    if (toSelect) {
        toSelect->findNext = true;
        return;
    }
    const textRange from = client.firstSelectedRange();
    if (forward) return searchFrom(from.end());

    const std::vector<std::size_t>& starts = matches();
    const auto isBefore = [&](std::size_t start) { return start + matchLength <= from.location; };
    const auto after = std::ranges::partition_point(starts, isBefore);
    const bool wrapped = after == starts.begin();
    if (starts.empty() || (wrapped && !wrapsAround)) return tell({.notFound = true});
    selectMatch((wrapped ? starts.size() : static_cast<std::size_t>(after - starts.begin())) - 1,
                wrapped);
}

/// Selects the first match that starts at or after `location`.
void TextFinder::searchFrom(std::size_t location) {
    const std::vector<std::size_t>& starts = matches();
    const auto found = std::ranges::lower_bound(starts, location);
    const bool wrapped = found == starts.end();
    if (starts.empty() || (wrapped && !wrapsAround)) return tell({.notFound = true});
    selectMatch(wrapped ? 0 : static_cast<std::size_t>(found - starts.begin()), wrapped);
}

void TextFinder::selectMatch(std::size_t index, bool wrapped) {
    select(matchAt(index));
    tell({.wrapped = wrapped});
}

void TextFinder::select(const textRange& range) {
    client.setSelectedRanges({range});
    client.scrollRangeToVisible(range);
}

void TextFinder::replaceCurrent(bool findNext) {
    const std::optional<std::size_t> current = currentMatch();
    if (!current) return step(true); // as while the text of the last replacement is on its way

    const textRange match = matchAt(*current);
    client.replaceCharacters(match, replacementText, "Replace");
    // The new text puts the cursor to its start when it arrives; only then a selection lasts.
    toSelect = {{match.location, utf16Length(replacementText)}, findNext};
}

void TextFinder::replaceAll() {
    const std::vector<std::size_t>& starts = matches();
    if (starts.empty()) return tell({.notFound = true});

    // From the first match to the end of the last one, as one replacement.
    const std::size_t count = starts.size();
    const textRange whole{starts.front(), starts.back() + matchLength - starts.front()};
    std::vector<textReplacement> replacements;
    replacements.reserve(count);
    for (const std::size_t start : starts)
        replacements.push_back({{start - whole.location, matchLength}, replacementText});
    client.replaceCharacters(whole, replacing(textIn(client.string(), whole), replacements),
                             "Replace All");
    tell({.replaced = count});
}

/// Completes the report with what holds now, and passes it on.
void TextFinder::tell(findReport report) {
    if (shown != findBarVisibility::hidden || matchStarts) {
        report.matches = matches().size();
        report.current = currentMatch();
        report.notFound =
            report.notFound || (report.matches == 0 && !searchedText.empty() && !report.replaced);
    }
    lastReport = report;
    if (bar) bar->finderChanged();
}

} // namespace tessaril
