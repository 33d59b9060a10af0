#pragma once

#include "editor/text_finder_client.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessaril {

/// The tags of the find bar's menu commands.
enum class textFinderAction {
    showFindInterface,
    hideFindInterface,
    showReplaceInterface,
    hideReplaceInterface,
    nextMatch, ///< shows the bar when there is nothing to search for yet; so does the previous one
    previousMatch,
    replace,        ///< the selected match; without one, selects the next match
    replaceAndFind, ///< the same, then selects the match that follows
    replaceAll      ///< all matches as one change
};

enum class findBarVisibility { hidden, find, findAndReplace };

/// What the last search came to.
struct findReport {
    std::size_t matches = 0;             ///< in the whole text
    std::optional<std::size_t> current;  ///< which of them is selected, from 0
    bool notFound = false;               ///< there was nothing to select
    bool wrapped = false;                ///< it went on from the text's other end
    std::optional<std::size_t> replaced; ///< how many "replace all" has just replaced

    bool operator==(const findReport&) const = default;
};

/// What the find bar's controller tells the widget that shows it.
class TextFinderBar {
public:
    virtual ~TextFinderBar() = default;

    /// Visibility, search text, options or report are new.
    virtual void finderChanged() = 0;

    /// A command asks for the bar, which may be visible already: the search field takes the focus.
    virtual void finderShown() = 0;
};

/// The find bar's controller. Matches don't overlap. Unless the case matters, letters match by
/// Unicode's simple case folding. Main thread only.
class TextFinder {
public:
    /// `client` must live longer.
    explicit TextFinder(TextFinderClient& client);

    /// Nothing to stop telling.
    void setBar(TextFinderBar* newBar) { bar = newBar; }

    /// Whether the command has something to work on, for menus. `perform` of another one does no
    /// harm.
    bool canPerform(textFinderAction action) const;
    void perform(textFinderAction action);

    /// Looks at once for the first match from where the search began, if the bar is visible.
    void setSearchText(std::string text);
    void setReplacement(std::string text);
    void setMatchCase(bool matters);
    void setWrapAround(bool wraps) { wrapsAround = wraps; }

    const std::string& searchText() const { return searchedText; }
    const std::string& replacement() const { return replacementText; }
    bool matchCase() const { return caseMatters; }
    findBarVisibility visibility() const { return shown; }
    const findReport& report() const { return lastReport; }

    /// To be called when the client's text is about to become another one.
    void textWillChange();

    /// To be called when the client's text is new and selecting in it works. The selection that a
    /// replacement leads to is made here.
    void textDidChange();

    /// To be called when the client's text has settled. A replacement that was asked for is made
    /// here, in the text as it is now.
    void textDidSettle();

    /// To be called when the client shows another text, or cannot tell what it shows: a replacement
    /// that was asked for is not made.
    void forgetPutOff() { putOff.reset(); }

private:
    /// What is to be selected once the replaced text has arrived.
    struct selectionToCome {
        textRange replaced;
        bool findNext;
    };

    const std::vector<std::size_t>& matches();
    textRange matchAt(std::size_t index);
    std::optional<std::size_t> currentMatch();
    void show(findBarVisibility visibility);
    void hide(findBarVisibility visibility);
    void step(bool forward);
    void searchFrom(std::size_t location);
    void selectMatch(std::size_t index, bool wrapped);
    void select(const textRange& range);
    void replaceCurrent(bool findNext);
    void replaceAll();
    void makeReplacement(textFinderAction action);
    void tell(findReport report);

    TextFinderClient& client;
    TextFinderBar* bar = nullptr;
    std::string searchedText;
    std::string replacementText;
    bool caseMatters = false;
    bool wrapsAround = true;
    findBarVisibility shown = findBarVisibility::hidden;
    findReport lastReport;

    /// The text as it is compared, kept for as long as it and the meaning of case stay the same.
    std::optional<std::u16string> comparedText;
    /// Where the matches begin, ascending, and their length, all in UTF-16 units.
    std::optional<std::vector<std::size_t>> matchStarts;
    std::size_t matchLength = 0;
    /// Where typing into the search field began to search.
    std::optional<std::size_t> searchStart;
    std::optional<selectionToCome> toSelect;
    /// A replacement that waits for the text to settle.
    std::optional<textFinderAction> putOff;
};

} // namespace tessaril
