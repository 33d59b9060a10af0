#pragma once

#include "editor/wk_ace_view.h"
#include "import/paste_import.h"
#include "undo/undo_manager.h"
#include "windows/editor_parts.h"

#include <QDialog>

#include <cstdint>
#include <functional>
#include <memory>

class QPushButton;

namespace tessaril {

class CodeEditor;
class ConfiguredEditor;

/// What the paste window works with. All outlive it.
struct importMozDocViewParts {
    editorParts editor;
    PasteImport& importer;
};

/// The paste window: a code editor whose text becomes a style. The Cancel button closes it and what
/// it holds is gone; Escape, Ctrl+W and the window's own button ask before a text is lost. While an
/// import is under way, Escape stops it and the text stays.
class ImportMozDocView : public QDialog, private WKAceViewDelegate {
public:
    ImportMozDocView(importMozDocViewParts parts, QWidget* parent);
    ~ImportMozDocView() override;

    void bringForward();

    /// Closes as the window's own button does: a little later, when it is known what was typed, and
    /// not if the user wants to keep that. Calls `closed`, if there is one, once it has closed; of
    /// two only the later one, and none when the window stays.
    void closeThen(std::function<void()> closed);

    /// Escape; the window may stay.
    void reject() override;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void importClicked();
    void cancelClicked();
    void startImport();
    void stopImport();
    void setImporting(bool importing);
    void showImportButton();
    void whenTextIsKnown(std::function<void()> then);
    void textDidChange(const notification& changed) override;

    PasteImport& importer;
    UndoManager undoManager;
    QPushButton* importButton;
    std::unique_ptr<CodeEditor> cssEditor;
    std::unique_ptr<ConfiguredEditor> configured;
    bool isImporting = false;
    PasteImport::Ticket underWay;
    std::uint64_t waits = 0;            ///< counts what has waited for the text to be known
    std::function<void()> afterClosing; ///< of a closing that waits for that
};

} // namespace tessaril
