#include "windows/editor_preview.h"

#include "editor/editor_configuration.h"
#include "preferences/editor_preview_text.h"
#include "windows/code_editor.h"

#include <QVBoxLayout>

namespace tessaril {

EditorPreview::EditorPreview(editorParts ownParts, QWidget* parent)
    : QWidget(parent), parts(std::move(ownParts)) {
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::Base);
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
}

EditorPreview::~EditorPreview() = default;

void EditorPreview::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    // Later: the pane is to be on the screen first.
    if (!editor)
        QMetaObject::invokeMethod(
            this, [this] { makeEditor(); }, Qt::QueuedConnection);
}

void EditorPreview::makeEditor() {
    if (editor) return;
    editor = std::make_unique<CodeEditor>(parts.makeWebView, parts.page, parts.center, undoManager);
    editor->setTakesTabFocus(false); // who tabs into code does not tab out of it
    layout()->addWidget(editor.get());
    configured =
        std::make_unique<ConfiguredEditor>(editor->aceView(), parts.preferences, parts.center, [] {
            return editorContent{.text = std::string(editorPreviewText)};
        });
}

} // namespace tessaril
