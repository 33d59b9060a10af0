#pragma once

#include "undo/undo_manager.h"
#include "windows/editor_parts.h"

#include <QWidget>

#include <memory>

namespace tessaril {

class CodeEditor;
class ConfiguredEditor;

/// A code editor with a sample that shows the editor's settings. The editor is made when the
/// preview is first seen, as it may be the first of the process.
class EditorPreview : public QWidget {
public:
    EditorPreview(editorParts parts, QWidget* parent);
    ~EditorPreview() override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void makeEditor();

    editorParts parts;
    UndoManager undoManager;
    std::unique_ptr<CodeEditor> editor;
    std::unique_ptr<ConfiguredEditor> configured;
};

} // namespace tessaril
