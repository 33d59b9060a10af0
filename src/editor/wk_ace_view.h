#pragma once

#include "editor/text_finder.h"
#include "editor/text_finder_client.h"
#include "editor/text_range.h"
#include "events/notification_center.h"
#include "platform/web_view.h"
#include "undo/undo_manager.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tessaril {

class WKAceViewDelegate {
public:
    virtual ~WKAceViewDelegate() = default;

    /// The text of the editor that `changed.object` is has changed, by the user, the find bar,
    /// Beautify, undo or redo; not by `setString`.
    virtual void textDidChange(const notification& changed) = 0;
};

/// The code editor: drives the editor page in a web view by short statements, keeps a copy of its
/// text, and reports every change. Statements are sent at once and never waited for; what they
/// come to is known only where an operation says so. Texts are UTF-8, ranges count UTF-16 units.
/// Main thread only.
///
/// Texts on their way don't get mixed up: what the page answers about a text that a later
/// `setString` has replaced is dropped, and Beautify is dropped when the text changed meanwhile.
class WKAceView : public WebViewObserver, public TextFinderClient {
public:
    /// All must live longer. Becomes the observer of `webView`.
    WKAceView(WebView& webView, NotificationCenter& center, UndoManager& undoManager);
    ~WKAceView() override;
    WKAceView(const WKAceView&) = delete;
    WKAceView& operator=(const WKAceView&) = delete;

    /// Called when the page has loaded, before `onReady`.
    void setLayout(std::function<void()> layout) { layOut = std::move(layout); }

    /// Called whenever the page has loaded: once, and once more each time when its process had
    /// ended and it was loaded again. The page is empty then; only from here on it can be
    /// configured, and `string` still gives the text it had.
    void setOnReady(std::function<void()> ready) { onReady = std::move(ready); }

    /// Called when the page's process has ended too often to try again.
    void setOnGivenUp(std::function<void()> givenUp) { onGivenUp = std::move(givenUp); }

    /// Called when Escape was pressed in the page and closed nothing there.
    void setOnEscape(std::function<void()> escape) { onEscape = std::move(escape); }

    /// Nothing to stop telling.
    void setDelegate(WKAceViewDelegate* newDelegate) { delegate = newDelegate; }

    /// Loads the editor page, an absolute path.
    void load(const std::filesystem::path& page);

    /// Whether the page has loaded and its process lives.
    bool isReady() const { return pageIsReady; }

    /// Puts `text` into the editor, the cursor at its start, and forgets what could be undone in
    /// the editor before. If the page doesn't take it, changes in the page are not reported until
    /// it takes a text again. The page joins all lines with the first line end that it finds: in a
    /// text that mixes them the others become like it with the user's first change.
    void setString(std::string text);
    const std::string& string() const override { return stringValue; }

    /// Beautify and replacements so far cannot be undone any more; for a text in whose place
    /// another one comes.
    void forgetUndo() { undoManager.removeActions(this); }

    /// Counts whatever the page answers or tells: one that goes on is only slow.
    std::uint64_t timesHeard() const { return heard; }

    /// Asks the page for its text and calls `settled` once `string` is what the user sees, with
    /// what was typed a moment ago; at once while there is no page. Not called when the page goes
    /// or hangs meanwhile: who waits sets a limit.
    void whenSettled(std::function<void()> settled);

    /// `value` is a script value as it is written, for example "true".
    void setOption(std::string_view name, std::string_view value);
    void setFontSize(std::int64_t points);
    void setTheme(std::string_view name);
    void setMode(std::string_view name);
    void setKeyboardHandler(std::string_view name);
    void setReadOnly();
    void setFontFamily(std::string_view name);
    void setWrap(bool on);
    void setShowPrintMargin(bool on);
    void setUseSoftTabs(bool on);
    void selectRange(const textRange& range);
    void goToLine();
    void scrollToTop();
    void focus();

    /// What was typed goes first, then what was done by the operations below and the find bar.
    void undo();
    void redo();

    /// Lays the code out anew, as one change that can be undone. Nothing happens when the page
    /// can't do it, when the text changes before it has done it, or in a read-only text.
    void beautify();

    /// The controller of the find bar over this text.
    TextFinder& finder() { return textFinder; }
    void performTextFinderAction(textFinderAction tag) { textFinder.perform(tag); }

    // What the find bar asks.
    bool isEditable() const override { return !readOnly; }
    void settle() override;
    textRange firstSelectedRange() const override { return firstSelected; }
    const std::vector<textRange>& selectedRanges() const override { return selected; }
    void setSelectedRanges(std::vector<textRange> ranges) override { selected = std::move(ranges); }
    void scrollRangeToVisible(const textRange& range) override { selectRange(range); }
    void replaceCharacters(const textRange& range, std::string_view replacement,
                           std::string_view undoName) override;

    // What the web view tells.
    void navigationFinished() override;
    void messageReceived(std::string_view handler, const scriptValue& body) override;
    void pageNotLoaded() override;
    void pageLost() override;

private:
    /// What became of the newest text that was set.
    enum class setting { done, underWay, failed };

    void evaluate(std::string_view statement, WebView::Completion completion);
    void sendText(std::string text);
    void textWasTaken(bool taken, std::uint64_t generation);
    void readChange();
    void readText(bool mayBeKnown);
    void textRead(const std::string* text, std::uint64_t began, bool mayBeKnown);
    void inputWasHandled();
    void forgetReads();
    UndoManager::Token registerTextUndo(const std::string& name, std::shared_ptr<std::string> text);
    void restore(const std::string& name, const std::string& text);
    std::shared_ptr<std::string> textToReplace();
    void reportChange();
    void giveUp(std::string_view why);

    WebView& webView;
    NotificationCenter& center;
    UndoManager& undoManager;
    std::string stringValue;
    bool readOnly = false;
    TextFinder textFinder{*this};
    textRange firstSelected;
    std::vector<textRange> selected;
    WKAceViewDelegate* delegate = nullptr;
    std::function<void()> layOut;
    std::function<void()> onReady;
    std::function<void()> onGivenUp;
    std::function<void()> onEscape;

    std::filesystem::path page;
    bool pageIsReady = false;
    int lossesInARow = 0;
    std::chrono::steady_clock::time_point lastLoss;
    setting newest = setting::done;
    std::uint64_t generation = 0;                    ///< counts the texts that were set
    std::uint64_t changeReports = 0;                 ///< counts the changes that the page reported
    std::deque<std::function<void()>> awaitingInput; ///< who waits for the page to have all keys
    std::vector<std::function<void()>> settling;     ///< who waits for the reads under way
    int readsUnderWay = 0;                           ///< of the text after a change, in this page
    std::uint64_t heard = 0;                         ///< counts the page's answers and messages
    std::uint64_t pageNumber = 0;                    ///< counts the pages that were there
    /// What the newest undo action holds, and which of the texts that is.
    std::shared_ptr<std::string> replacedText;
    std::uint64_t replacedGeneration = 0;
    /// Completions look whether this is still there before they touch the view.
    std::shared_ptr<const bool> alive = std::make_shared<const bool>(true);
};

} // namespace tessaril
