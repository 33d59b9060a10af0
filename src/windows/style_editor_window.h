#pragma once

#include "style_editor/draft_offer.h"
#include "style_editor/style_editor_controller.h"
#include "undo/undo_manager.h"
#include "windows/editor_parts.h"

#include <QMainWindow>

#include <cstdint>
#include <functional>
#include <memory>

class QDialog;
class QToolBar;

namespace tessaril {

class CodeEditor;
class EditorTitle;
class EditorToolbar;
class SectionMenuBox;
struct editorToolbarCommands;

/// What the window of a Style Editor works with, and what it opens: sheets over it, which are null
/// where none may open now. All outlive it.
struct styleEditorParts {
    editorParts editor;
    styleEditorSurroundings session;
    std::function<QDialog*(QWidget& over)> newStyle;
    std::function<QDialog*(const styleContainer& style, QWidget& over)> exportStyle;
    std::function<void()> openPreferences;
};

/// One style open in the Style Editor: its toolbar, its sections' code, its sheets. Forwards every
/// command to the session, and closes when that lets it. Deletes itself when it closes.
class StyleEditorWindow : public QMainWindow {
public:
    /// - opened: as `StyleEditorController` takes it
    StyleEditorWindow(styleToEdit opened, styleEditorParts parts);
    ~StyleEditorWindow() override;

    /// Closes as by the user's hand, which may ask about what is not saved, and calls `closed` when
    /// that has happened. An open sheet comes forward instead, as what it holds would be lost.
    void closeThen(std::function<void()> closed);

    /// Keeps what is not saved for the next start; for an application that ends unasked.
    void keepUnsaved() { controller->keepUnsaved(); }

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    editorToolbarCommands makeMenus();
    void makeToolbars(const editorToolbarCommands& commands);
    void showName();
    void showSections();
    void showAppearance();
    QDialog* sheet() const;
    void bringForward();
    void moveFocus();
    void openSheet(std::function<QDialog*()> make);
    QDialog* newSectionSheet();
    QDialog* metadataView();
    QDialog* sectionExportPanel();

    styleEditorParts parts;
    UndoManager undoManager;
    std::unique_ptr<CodeEditor> editor;
    std::unique_ptr<StyleEditorController> controller;
    QToolBar* titleRow = nullptr;
    EditorTitle* rowTitle = nullptr;
    SectionMenuBox* sectionMenu = nullptr;
    EditorToolbar* toolbar = nullptr;
    bool mayClose = false; ///< the session has let it
    NotificationCenter::Subscription preferencesChanged;
};

} // namespace tessaril
