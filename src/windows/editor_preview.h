#pragma once

#include "events/notification_center.h"
#include "platform/web_view_factory.h"
#include "preferences/preferences.h"
#include "undo/undo_manager.h"

#include <QWidget>

#include <filesystem>
#include <memory>

namespace tessaril {

class CodeEditor;
class ConfiguredEditor;

/// What an editor preview needs. All outlive it.
struct editorPreviewParts {
    WebViewFactory makeWebView;
    std::filesystem::path page; ///< the editor page
    const Preferences& preferences;
    NotificationCenter& center;
};

/// A code editor with a sample that shows the editor's settings. The editor is made when the
/// preview is first seen, as it may be the first of the process.
class EditorPreview : public QWidget {
public:
    EditorPreview(editorPreviewParts parts, QWidget* parent);
    ~EditorPreview() override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void makeEditor();

    editorPreviewParts parts;
    UndoManager undoManager;
    std::unique_ptr<CodeEditor> editor;
    std::unique_ptr<ConfiguredEditor> configured;
};

} // namespace tessaril
