#pragma once

#include "editor/editor_configuration.h"
#include "editor/wk_ace_view.h"
#include "events/notification_center.h"
#include "platform/alerts.h"
#include "platform/dispatcher.h"
#include "preferences/preference_controls.h"
#include "preferences/preferences.h"
#include "settings/rule_editor.h"
#include "store/style_export.h"
#include "style_editor/editor_saves.h"
#include "style_editor/metadata_fields.h"
#include "style_editor/new_section.h"
#include "style_editor/style_drafts.h"

#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tessaril {

/// What the session of a Style Editor works with. All outlive it.
struct styleEditorSurroundings {
    EditorSaves& saves;
    StyleDrafts& drafts;
    NotificationCenter& center;
    Alerts& alerts;
    Dispatcher& dispatcher;
    Preferences& preferences;
    PreferenceControls& controls;
    StyleExport& exporter;
};

/// The session of one Style Editor: the working copy of a style, its current section in the code
/// editor, and everything that the window's commands do. Nothing is stored before it is saved.
///
/// The editor's page tells late what was typed. So commands that store, switch, delete or close
/// wait until it is known, or the page has been silent for a few seconds, and run one after
/// another.
///
/// Main thread only.
class StyleEditorController : private WKAceViewDelegate, public RuleEditorDelegate {
public:
    /// What the window does when it is told to. Any of it may be empty.
    struct handlers {
        std::function<void()> showSections;       ///< titles or the current section are new
        std::function<void()> showName;           ///< of the style
        std::function<void()> showEdited;         ///< `isDirty` is new
        std::function<void()> focus;              ///< come to the front
        std::function<void()> close;              ///< `leave` follows
        std::function<void()> editorIsReady = {}; ///< the page shows the code
    };

    /// Takes over `cssEditor`, which outlives it.
    /// - style: has a section; its identifier is among the open styles
    /// - isDirty: the style is an unsaved text of an earlier run
    StyleEditorController(styleEditorSurroundings surroundings, styleContainer style, bool isDirty,
                          WKAceView& cssEditor);
    ~StyleEditorController() override;
    StyleEditorController(const StyleEditorController&) = delete;
    StyleEditorController& operator=(const StyleEditorController&) = delete;

    void setHandlers(handlers newHandlers) { window = std::move(newHandlers); }

    const styleContainer& style() const { return currentStyle; }
    std::size_t currentSection() const { return current; }
    std::vector<std::string> sectionTitles() const;
    bool isReadOnly() const { return readOnly; }
    bool isDirty() const { return dirty; }

    // Commands. Those that change a read-only style beep.

    void saveDocument();
    /// A sheet of the window has opened: until it is closed no command is carried out, and those
    /// that were waiting are forgotten, as they were meant for the window.
    void sheetOpened();
    void sheetClosed();

    /// Whether the sheet for a new section may open; beeps otherwise.
    bool mayAddSection();
    void addSection(const newSectionFields& fields);
    void duplicateSection();
    void deleteSectionClicked();
    void selectSection(std::size_t section);
    void previousSection();
    void nextSection();
    void beautifyClicked();
    void goToLine() { cssEditor.goToLine(); }
    void increaseFontSize() { changeFontSize(1); }
    void decreaseFontSize() { changeFontSize(-1); }

    /// Calls `then` once the working copy holds what was typed, after the commands that wait.
    void whenTextIsKnown(std::function<void()> then);

    metadataFields metadata() const { return metadataOf(currentStyle); }
    void setMetadata(const metadataFields& fields);

    /// The file name that the panel proposes for the current section.
    std::string proposedSectionFile() const;
    /// Writes the current section's code in the background; an alert says when that fails.
    void exportSection(const std::filesystem::path& file);

    std::optional<ruleDictionary> rulesForCurrentSection() override;
    void applyRules(const ruleDictionary& rules) override;

    /// Asks about what is not saved, and has the window closed unless the user wants it to stay.
    /// - closed: called once it is closed; not when it stays, or when a sheet opens before that
    void closeClicked(std::function<void()> closed = {});

    /// Keeps what is not saved for the next start; for an application that ends unasked.
    void keepUnsaved();

    /// The window is closed: the style may be opened again. May be called again.
    void leave();

private:
    styleSection& section() { return currentStyle.styleData.sections[current]; }
    const styleSection& section() const { return currentStyle.styleData.sections[current]; }
    bool beepsAsReadOnly();
    void waitForText();
    void limitWait(std::uint64_t wait);
    void runCommand();
    void runNext();
    void show(std::size_t section);
    void appendSection(styleSection added);
    void removeSection();
    void setDirty();
    bool mayClose();
    void dropDraft();
    void save();
    void close();
    void changeFontSize(int by);
    void warnReadOnly();
    void editorConfigured();
    void follow(std::string_view name, std::function<void(const notification&)> handler);
    void textDidChange(const notification& changed) override;

    styleEditorSurroundings machine;
    styleContainer currentStyle;
    WKAceView& cssEditor;
    const bool readOnly;
    std::size_t current = 0;
    bool dirty;
    bool isDraftDue = false;
    bool wasWarned = false;
    bool isOpen = true;
    bool isRunning = false; ///< a command, which may have asked a question
    bool hasSheet = false;
    bool isClosing = false; ///< to close waits or is asked about
    std::function<void()> whenClosed;
    handlers window;
    std::deque<std::function<void()>> commands; ///< the first one waits for the text
    std::uint64_t waits = 0;                    ///< counts what has waited
    std::shared_ptr<int> alive = std::make_shared<int>();
    std::vector<NotificationCenter::Subscription> subscriptions;
    std::unique_ptr<ConfiguredEditor> configured;
};

} // namespace tessaril
