#include "style_editor/style_editor_controller.h"

#include "events/notification_names.h"
#include "events/observe_on_main.h"
#include "model/text.h"
#include "preferences/preference_keys.h"
#include "style_editor/section_menu.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace tessaril {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

/// How long the page may be silent before it has told its text; after that, what is known counts.
constexpr seconds longestSilence(3);
/// What is typed in that time may be lost when the application is killed.
constexpr seconds draftDelay(2);

constexpr std::int64_t smallestFont = 8, largestFont = 24;

constexpr std::string_view onlySectionTitle = "Cannot Delete Section";
constexpr std::string_view onlySectionText = "A custom style must have at least one section.";
constexpr const char* deleteText = "You cannot undo this action, though you can choose not to save "
                                   "changes to the document afterwards.";
constexpr const char* closeText = "If you close without saving, any unsaved changes will be lost.";
constexpr const char* readOnlyTitle = "Style is Read-Only";
constexpr const char* readOnlyText =
    "Styles imported from a URL are read-only. To modify an imported style, please make a "
    "duplicate "
    "from the Style List (Right-click → \"Duplicate\"). Please note that the duplicate will not be "
    "able to automatically update.";

enum closeAnswer { saveAnswer, cancelAnswer, dontSaveAnswer };

std::string modeFor(const styleContainer& style) {
    const std::string language = lowercasedASCII(style.preprocessor);
    return language == "less" || language == "stylus" ? language : "css";
}

styleContainer withSection(styleContainer style) {
    if (style.styleData.sections.empty()) style.styleData.sections.emplace_back();
    return style;
}

} // namespace

StyleEditorController::StyleEditorController(styleEditorSurroundings surroundings,
                                             styleContainer style, bool isDirty, WKAceView& editor)
    : machine(surroundings)
    , currentStyle(withSection(std::move(style)))
    , cssEditor(editor)
    , readOnly(currentStyle.source != sourceCustom)
    , dirty(isDirty && !readOnly) {
    cssEditor.setDelegate(this);
    configured = std::make_unique<ConfiguredEditor>(
        cssEditor, machine.preferences, machine.center,
        [this] {
            return editorContent{section().code, modeFor(currentStyle), readOnly};
        },
        [this] { editorConfigured(); });
    follow(notifications::checkIfWindowFocus, [this](const notification& posted) {
        if (posted.id() == currentStyle.uniqueID && window.focus) window.focus();
    });
    follow(notifications::styleNameChanged, [this](const notification& posted) {
        const auto* name = posted.info<std::string>("newname");
        if (posted.id() != currentStyle.uniqueID || !name) return;
        currentStyle.styleData.name = *name;
        if (window.showName) window.showName();
    });
    follow(notifications::stylesChangedInCloud, [this](const notification& posted) {
        const auto* ids = posted.info<std::vector<std::int64_t>>("changedIDs");
        if (!ids || std::ranges::find(*ids, currentStyle.uniqueID) == ids->end()) return;
        // Offered at the next start, rather than gone.
        keepUnsaved();
        close();
    });
}

StyleEditorController::~StyleEditorController() {
    leave();
}

void StyleEditorController::follow(std::string_view name,
                                   std::function<void(const notification&)> handler) {
    subscriptions.push_back(
        observeOnMain(machine.center, machine.dispatcher, name, alive, std::move(handler)));
}

void StyleEditorController::editorConfigured() {
    if (window.editorIsReady) window.editorIsReady();
    if (!readOnly || std::exchange(wasWarned, true)) return;
    // Later: a question asked from within the engine's answer stops the engine.
    machine.dispatcher.onMain([this, watched = std::weak_ptr(alive)] {
        if (!watched.expired()) warnReadOnly();
    });
}

void StyleEditorController::warnReadOnly() {
    if (!machine.preferences.boolean(preferenceKeys::warnReadOnly)) return;
    PreferenceControls& controls = machine.controls; // the window may close meanwhile
    const auto answer = machine.alerts.ask({.title = readOnlyTitle,
                                            .text = readOnlyText,
                                            .buttons = {"OK"},
                                            .offersSuppression = true});
    if (answer.suppressed) controls.turn(preferenceKeys::warnReadOnly, false);
}

// What waits for the text

void StyleEditorController::whenTextIsKnown(std::function<void()> then) {
    commands.push_back(std::move(then));
    if (!isRunning && !hasSheet && commands.size() == 1) waitForText();
}

void StyleEditorController::sheetOpened() {
    hasSheet = true;
    ++waits;
    commands.clear();
    isClosing = false;
    whenClosed = nullptr;
}

void StyleEditorController::sheetClosed() {
    hasSheet = false;
    if (!isRunning) runNext();
}

void StyleEditorController::runNext() {
    if (!hasSheet && !commands.empty()) waitForText();
}

void StyleEditorController::waitForText() {
    if (readOnly) return runCommand();
    const auto once = [this, watched = std::weak_ptr(alive), wait = ++waits] {
        if (watched.expired() || wait != waits) return;
        ++waits;
        runCommand();
    };
    limitWait(waits);
    // Later: a question asked from within the engine's answer stops the engine.
    cssEditor.whenSettled([&dispatcher = machine.dispatcher, once] { dispatcher.onMain(once); });
}

/// A page that is only slow, as under many keys in a large text, goes on telling something.
void StyleEditorController::limitWait(std::uint64_t wait) {
    machine.dispatcher.onMainAfter(longestSilence, [this, watched = std::weak_ptr(alive), wait,
                                                    heard = cssEditor.timesHeard()] {
        if (watched.expired() || wait != waits) return;
        if (cssEditor.timesHeard() != heard) return limitWait(wait);
        ++waits;
        runCommand();
    });
}

void StyleEditorController::runCommand() {
    if (commands.empty()) return;
    const auto command = std::move(commands.front());
    commands.pop_front();
    const std::weak_ptr watched(alive);
    isRunning = true;
    command();
    if (watched.expired()) return;
    isRunning = false;
    runNext();
}

void StyleEditorController::textDidChange(const notification&) {
    if (!configured->isReady()) return;
    section().code = cssEditor.string();
    setDirty();
}

// Sections

std::vector<std::string> StyleEditorController::sectionTitles() const {
    return tessaril::sectionTitles(currentStyle.styleData.sections);
}

bool StyleEditorController::beepsAsReadOnly() {
    if (readOnly) machine.alerts.beep();
    return readOnly;
}

bool StyleEditorController::mayAddSection() {
    return !beepsAsReadOnly();
}

void StyleEditorController::addSection(const newSectionFields& fields) {
    if (beepsAsReadOnly()) return;
    whenTextIsKnown([this, fields] { appendSection(makeSection(fields, &section())); });
}

void StyleEditorController::duplicateSection() {
    if (beepsAsReadOnly()) return;
    whenTextIsKnown([this] { appendSection(section()); });
}

void StyleEditorController::appendSection(styleSection added) {
    currentStyle.styleData.sections.push_back(std::move(added));
    show(currentStyle.styleData.sections.size() - 1);
    setDirty();
}

void StyleEditorController::deleteSectionClicked() {
    if (beepsAsReadOnly()) return;
    whenTextIsKnown([this] {
        if (currentStyle.styleData.sections.size() < 2)
            return machine.alerts.showAlert(onlySectionTitle, onlySectionText);
        if (isEmptySection(section())) return removeSection();
        const std::weak_ptr watched(alive);
        const auto answer = machine.alerts.ask(
            {.title = "Are you sure you want to delete " + sectionTitle(section(), current) + "?",
             .text = deleteText,
             .buttons = {"Yes", "No"}});
        if (!watched.expired() && answer.button == 0) removeSection();
    });
}

void StyleEditorController::removeSection() {
    auto& sections = currentStyle.styleData.sections;
    sections.erase(sections.begin() + static_cast<std::ptrdiff_t>(current));
    show(current > 0 ? current - 1 : 0);
    setDirty();
}

void StyleEditorController::selectSection(std::size_t wanted) {
    whenTextIsKnown([this, wanted] {
        if (wanted != current) return show(wanted);
        if (window.showSections) window.showSections();
    });
}

void StyleEditorController::previousSection() {
    whenTextIsKnown([this] {
        if (current > 0) show(current - 1);
    });
}

void StyleEditorController::nextSection() {
    whenTextIsKnown([this] { show(current + 1); });
}

void StyleEditorController::show(std::size_t wanted) {
    if (wanted < currentStyle.styleData.sections.size()) {
        current = wanted;
        cssEditor.forgetUndo(); // also where the two texts are equal
        cssEditor.setString(section().code);
        cssEditor.scrollToTop();
    }
    if (window.showSections) window.showSections();
}

// Rules, metadata and the rest

std::optional<ruleDictionary> StyleEditorController::rulesForCurrentSection() {
    return tessaril::rulesForCurrentSection(section());
}

void StyleEditorController::applyRules(const ruleDictionary& rules) {
    if (readOnly) return;
    tessaril::applyRules(rules, section());
    if (window.showSections) window.showSections();
    setDirty();
}

void StyleEditorController::setMetadata(const metadataFields& fields) {
    if (readOnly) return;
    applyMetadata(fields, currentStyle);
    if (configured->isReady()) cssEditor.setMode(modeFor(currentStyle));
    setDirty();
}

void StyleEditorController::beautifyClicked() {
    if (beepsAsReadOnly()) return;
    whenTextIsKnown([this] { cssEditor.beautify(); });
}

std::string StyleEditorController::proposedSectionFile() const {
    return proposedExportName(exportedSectionName(currentStyle.styleData.name, section()),
                              exportSectionTypes);
}

void StyleEditorController::exportSection(const std::filesystem::path& file) {
    whenTextIsKnown(
        [this, file] { machine.exporter.write(file, section().code, exportSectionTypes); });
}

void StyleEditorController::changeFontSize(int by) {
    const std::int64_t size = machine.controls.fontSize() + by;
    if (by > 0 ? size > largestFont : size < smallestFont) return machine.alerts.beep();
    machine.controls.setFontSize(size);
}

// Saving and closing

void StyleEditorController::setDirty() {
    if (readOnly) return;
    if (!std::exchange(dirty, true) && window.showEdited) window.showEdited();
    if (std::exchange(isDraftDue, true)) return;
    machine.dispatcher.onMainAfter(draftDelay, [this, watched = std::weak_ptr(alive)] {
        if (watched.expired()) return;
        isDraftDue = false;
        keepUnsaved();
    });
}

void StyleEditorController::keepUnsaved() {
    if (!dirty || !isOpen) return;
    machine.dispatcher.inBackground(
        taskPriority::utility, [&drafts = machine.drafts, style = currentStyle,
                                version = machine.drafts.next()] { drafts.keep(style, version); });
}

void StyleEditorController::saveDocument() {
    if (beepsAsReadOnly()) return;
    whenTextIsKnown([this] { save(); });
}

void StyleEditorController::save() {
    machine.saves.save(currentStyle);
    dirty = false;
    if (window.showEdited) window.showEdited();
}

void StyleEditorController::closeClicked(std::function<void()> closed) {
    if (closed) whenClosed = std::move(closed);
    if (std::exchange(isClosing, true)) return;
    whenTextIsKnown([this] {
        const std::weak_ptr watched(alive);
        const bool closes = !dirty || mayClose();
        if (watched.expired()) return;
        isClosing = false;
        const auto then = std::exchange(whenClosed, nullptr);
        if (!closes) return;
        close();
        if (then) then();
    });
}

/// Asks about what is not saved, and does what is answered.
bool StyleEditorController::mayClose() {
    const std::weak_ptr watched(alive);
    if (window.focus) window.focus(); // the user sees what the question is about
    const auto answer = machine.alerts.ask(
        {.title = "Would you like to save changes to " + currentStyle.styleData.name + "?",
         .text = closeText,
         .buttons = {"Save", "Cancel", "Don't Save"},
         .destructiveButton = dontSaveAnswer,
         .closingButton = cancelAnswer});
    if (watched.expired() || answer.button == cancelAnswer) return false;
    if (answer.button == saveAnswer)
        save();
    else
        dropDraft();
    return true;
}

void StyleEditorController::dropDraft() {
    machine.dispatcher.inBackground(
        taskPriority::utility, [&drafts = machine.drafts, id = currentStyle.uniqueID,
                                version = machine.drafts.next()] { drafts.drop(id, version); });
}

void StyleEditorController::close() {
    leave();
    if (window.close) window.close();
}

void StyleEditorController::leave() {
    if (!std::exchange(isOpen, false)) return;
    ++waits;
    commands.clear();
    subscriptions.clear();
    cssEditor.setDelegate(nullptr);
    machine.center.post(notifications::removeFromOpenStyles, currentStyle.uniqueID);
}

} // namespace tessaril
