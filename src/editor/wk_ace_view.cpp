#include "editor/wk_ace_view.h"

#include "editor/escaping.h"
#include "editor/text_places.h"
#include "events/notification_names.h"
#include "model/log.h"
#include "model/text.h"

#include <optional>
#include <utility>

namespace tessaril {

namespace {

constexpr std::string_view messageHandler = "callback";
constexpr std::string_view changeMessage = "stringChanged";
constexpr std::string_view inputMessage = "inputHandled";
constexpr std::string_view escapeMessage = "escape";
constexpr std::string_view undoMessage = "undo";
constexpr std::string_view redoMessage = "redo";
constexpr const char* beautifyName = "Beautify";
constexpr std::string_view beautifyStatement =
    "css_beautify(editor.getValue(), {indent_with_tabs: true, preserve_newlines: true, "
    "max_preserve_newlines:2, selector_separator_newline: false});";

/// How often the page is loaded again when it is lost again and again within this time.
constexpr int mostLossesInARow = 3;
constexpr std::chrono::minutes inARow(1);

std::string joined(std::initializer_list<std::string_view> pieces) {
    std::string result;
    for (const std::string_view piece : pieces)
        result += piece;
    return result;
}

const std::string* textIn(const std::optional<scriptValue>& result) {
    return result ? std::get_if<std::string>(&*result) : nullptr;
}

/// `text` as the page may give it back: it makes all line ends equal.
std::string withEqualLineEnds(std::string_view text) {
    return replacingAll(replacingAll(text, "\r\n", "\n"), "\r", "\n");
}

std::string_view scriptBool(bool value) {
    return value ? "true" : "false";
}

} // namespace

WKAceView::WKAceView(WebView& ownWebView, NotificationCenter& ownCenter,
                     UndoManager& ownUndoManager)
    : webView(ownWebView), center(ownCenter), undoManager(ownUndoManager) {
    webView.setObserver(this);
}

WKAceView::~WKAceView() {
    webView.setObserver(nullptr);
    undoManager.removeActions(this);
}

void WKAceView::load(const std::filesystem::path& newPage) {
    page = newPage;
    pageIsReady = false;
    webView.loadPage(page);
}

void WKAceView::navigationFinished() {
    pageIsReady = true;
    forgetReads();
    newest = setting::done;
    if (layOut) layOut();
    if (onReady) onReady();
}

void WKAceView::giveUp(std::string_view why) {
    logLine(why);
    if (onGivenUp) onGivenUp();
}

void WKAceView::pageNotLoaded() {
    giveUp("The code editor's page could not be loaded.");
}

void WKAceView::pageLost() {
    pageIsReady = false;
    forgetReads();
    const auto now = std::chrono::steady_clock::now();
    if (now - std::exchange(lastLoss, now) > inARow) lossesInARow = 0;
    if (++lossesInARow > mostLossesInARow)
        return giveUp("The code editor's page was lost too often; giving up.");
    logLine("The code editor's page was lost; loading it again.");
    webView.loadPage(page);
}

void WKAceView::evaluate(std::string_view statement, WebView::Completion completion) {
    webView.evaluate(statement, [this, watched = std::weak_ptr(alive),
                                 whenDone = std::move(completion)](const auto& result) {
        if (watched.expired()) return;
        ++heard;
        whenDone(result);
    });
}

void WKAceView::setString(std::string text) {
    // An undo of the text before would put one text into the place of another.
    if (text != stringValue) forgetUndo();
    sendText(std::move(text));
}

void WKAceView::sendText(std::string text) {
    textFinder.forgetPutOff();
    textFinder.textWillChange();
    stringValue = std::move(text);
    newest = setting::underWay;
    webView.evaluate("reportChanges = false;");
    evaluate(joined({"editor.setValue(\"", escapedForScript(stringValue), "\");"}),
             [this, sent = ++generation](const std::optional<scriptValue>& result) {
                 textWasTaken(result.has_value(), sent);
             });
}

void WKAceView::textWasTaken(bool taken, std::uint64_t sent) {
    const bool isNewest = sent == generation;
    if (isNewest) newest = taken ? setting::done : setting::failed;
    if (taken) {
        webView.evaluate("editor.clearSelection();");
        webView.evaluate("editor.moveCursorTo(0,0);");
        webView.evaluate("reportChanges = true;");
        webView.evaluate("editor.getSession().setUndoManager(new ace.UndoManager());");
    }
    if (!isNewest) return; // the find bar already looks at a newer text
    if (taken)
        textFinder.textDidChange();
    else
        textFinder.textWillChange(); // what was to be selected in it won't come
}

void WKAceView::messageReceived(std::string_view handler, const scriptValue& body) {
    ++heard;
    const auto* message = std::get_if<std::string>(&body);
    if (handler != messageHandler || !message) return;
    if (*message == inputMessage) return inputWasHandled();
    if (*message == escapeMessage && onEscape) return onEscape();
    if (*message == undoMessage) return undoManager.undo();
    if (*message == redoMessage) return undoManager.redo();
    if (*message != changeMessage) return;
    // The page shows another text than the one that was set: a host that stored it would mix two.
    if (newest == setting::failed) return;
    readChange();
}

void WKAceView::readChange() {
    ++changeReports;
    // Sent by the page before it took the newest text, or typed into that text already? The answer
    // tells: statements run in order, so it is the new text, unchanged or not.
    readText(newest == setting::underWay);
    textFinder.textWillChange();
}

void WKAceView::settle() {
    if (!pageIsReady) return readText(true);
    whenSettled([] {}); // the finder is told with whoever else waits
}

void WKAceView::whenSettled(std::function<void()> settled) {
    if (!pageIsReady) return settled();
    awaitingInput.push_back(std::move(settled));
    webView.evaluate("announceInput();");
}

void WKAceView::inputWasHandled() {
    if (awaitingInput.empty()) return;
    settling.push_back(std::move(awaitingInput.front()));
    awaitingInput.pop_front();
    readText(true);
}

void WKAceView::readText(bool mayBeKnown) {
    ++readsUnderWay;
    evaluate("editor.getValue();", [this, began = generation, mayBeKnown,
                                    from = pageNumber](const std::optional<scriptValue>& result) {
        if (from != pageNumber) return;
        --readsUnderWay;
        if (!textIn(result) || newest == setting::failed) textFinder.forgetPutOff();
        textRead(textIn(result), began, mayBeKnown);
        if (readsUnderWay > 0) return;
        if (awaitingInput.empty()) textFinder.textDidSettle();
        for (const auto& settled : std::exchange(settling, {}))
            settled();
    });
}

void WKAceView::textRead(const std::string* text, std::uint64_t began, bool mayBeKnown) {
    if (!text) return;
    // Typed just before an undo took the text away: the redo is to give it back.
    if (replacedText && began == replacedGeneration) *replacedText = *text;
    if (began != generation || newest == setting::failed) return;
    if (mayBeKnown && withEqualLineEnds(*text) == withEqualLineEnds(stringValue)) return;
    lossesInARow = 0;
    textFinder.textWillChange();
    stringValue = *text;
    undoManager.removeRedos(this); // it would take away what has been typed
    textFinder.textDidChange();
    reportChange();
}

/// Their page is gone; what it may still answer is about nothing.
void WKAceView::forgetReads() {
    ++pageNumber;
    readsUnderWay = 0;
    awaitingInput.clear();
    settling.clear();
    textFinder.forgetPutOff();
}

void WKAceView::reportChange() {
    const notification changed{.name = notifications::ACEDidChange, .object = this};
    center.post(changed);
    if (delegate) delegate->textDidChange(changed);
}

std::shared_ptr<std::string> WKAceView::textToReplace() {
    replacedText = std::make_shared<std::string>(stringValue);
    replacedGeneration = generation;
    return replacedText;
}

UndoManager::Token WKAceView::registerTextUndo(const std::string& name,
                                               std::shared_ptr<std::string> text) {
    return undoManager.registerAction(
        name, this, [this, name, before = std::move(text)] { restore(name, *before); });
}

// Registered from within an undo this is its redo, and it takes the text that is being undone,
// whatever the user has typed since. The change is reported like any other, or a host's working
// copy would keep what the user no longer sees.
void WKAceView::restore(const std::string& name, const std::string& text) {
    registerTextUndo(name, textToReplace());
    sendText(text);
    reportChange();
}

void WKAceView::undo() {
    webView.evaluate("editor.execCommand(\"undo\");");
}

void WKAceView::redo() {
    webView.evaluate("editor.execCommand(\"redo\");");
}

void WKAceView::beautify() {
    if (readOnly) return;
    const std::shared_ptr<std::string> before = textToReplace();
    const UndoManager::Token undo = registerTextUndo(beautifyName, before);
    evaluate(beautifyStatement, [this, before, undo, began = generation, reports = changeReports](
                                    const std::optional<scriptValue>& result) {
        const std::string* text = textIn(result);
        const bool isCurrent = began == generation && reports == changeReports;
        if (!text || !isCurrent || newest == setting::failed) {
            undoManager.removeAction(undo); // nothing was done that could be undone
            return;
        }
        *before = stringValue; // with what was typed last, if that has only arrived meanwhile
        if (*text == stringValue) undoManager.removeAction(undo);
        sendText(*text);
        reportChange();
    });
}

void WKAceView::replaceCharacters(const textRange& range, std::string_view replacement,
                                  std::string_view undoName) {
    registerTextUndo(std::string(undoName), textToReplace());
    const textRange replaced = clamped(range, utf16Length(stringValue));
    sendText(replacing(stringValue, {{replaced, replacement}}));
    reportChange();
}

void WKAceView::setOption(std::string_view name, std::string_view value) {
    webView.evaluate(joined({"editor.setOption(\"", name, "\", ", value, ")"}));
}

void WKAceView::setFontSize(std::int64_t points) {
    webView.evaluate(joined({"editor.setFontSize(", std::to_string(points), ");"}));
}

void WKAceView::setTheme(std::string_view name) {
    webView.evaluate(joined({"editor.setTheme(\"ace/theme/", name, "\");"}));
}

void WKAceView::setMode(std::string_view name) {
    webView.evaluate(joined({"editor.session.setMode(\"ace/mode/", name, "\");"}));
}

void WKAceView::setKeyboardHandler(std::string_view name) {
    webView.evaluate(joined({"editor.setKeyboardHandler(\"ace/keyboard/", name, "\");"}));
}

void WKAceView::setReadOnly() {
    readOnly = true;
    webView.evaluate("editor.setReadOnly(true);");
}

void WKAceView::setFontFamily(std::string_view name) {
    // Escaped: the name comes from the user's preferences, which other machines write too.
    webView.evaluate(
        joined({"editor.setOptions({fontFamily: \"", escapedForScript(name), "\"});"}));
}

void WKAceView::setWrap(bool on) {
    webView.evaluate(joined({"editor.session.setUseWrapMode(", scriptBool(on), ");"}));
}

void WKAceView::setShowPrintMargin(bool on) {
    webView.evaluate(joined({"editor.setShowPrintMargin(", scriptBool(on), ");"}));
}

void WKAceView::setUseSoftTabs(bool on) {
    webView.evaluate(joined({"editor.getSession().setUseSoftTabs(", scriptBool(on), ");"}));
}

void WKAceView::selectRange(const textRange& range) {
    firstSelected = range;
    const auto [start, end] = placesOf(stringValue, range);
    webView.evaluate(joined({"editor.session.selection.clearSelection();"
                             "editor.session.selection.setRange(new Range(",
                             std::to_string(start.row), ", ", std::to_string(start.column), ", ",
                             std::to_string(end.row), ", ", std::to_string(end.column),
                             "));editor.centerSelection();"}));
}

void WKAceView::goToLine() {
    webView.evaluate("editor.prompt({ $type: \"gotoLine\" });");
}

void WKAceView::scrollToTop() {
    webView.evaluate("editor.scrollToRow(0);");
}

void WKAceView::focus() {
    webView.evaluate("focusEditor();");
}

} // namespace tessaril
