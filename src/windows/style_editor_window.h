#pragma once

#include "style_editor/style_editor_controller.h"
#include "undo/undo_manager.h"
#include "windows/editor_parts.h"

#include <QMainWindow>

#include <cstdint>
#include <functional>
#include <memory>

class QToolBar;

namespace tessaril {

class CodeEditor;
class EditorTitle;
class EditorToolbar;
struct editorToolbarCommands;

/// What the window of a Style Editor works with, and what it opens. All outlive it.
struct styleEditorParts {
    editorParts editor;
    styleEditorSurroundings session;
    std::function<void(QWidget& over)> newStyle;
    std::function<void(const styleContainer& style, QWidget& over)> exportStyle;
};

/// One style open in the Style Editor: its toolbar, its sections' code, its sheets. Forwards every
/// command to the session, and closes when that lets it. Deletes itself when it closes.
class StyleEditorWindow : public QMainWindow {
public:
    /// - style, isDirty: as `StyleEditorController` takes them
    StyleEditorWindow(styleContainer style, bool isDirty, styleEditorParts parts);
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
    bool bringSheetForward();
    void moveFocus();
    void openNewSection();
    void openRuleEditor();
    void openMetadataView();
    void openSectionExport();

    styleEditorParts parts;
    UndoManager undoManager;
    std::unique_ptr<CodeEditor> editor;
    std::unique_ptr<StyleEditorController> controller;
    QToolBar* titleRow = nullptr;
    EditorTitle* rowTitle = nullptr;
    EditorToolbar* toolbar = nullptr;
    bool mayClose = false; ///< the session has let it
    NotificationCenter::Subscription preferencesChanged;
};

} // namespace tessaril
