#pragma once

#include "model/style_container.h"
#include "store/style_export.h"
#include "undo/undo_manager.h"
#include "windows/editor_parts.h"

#include <QDialog>

#include <memory>
#include <string>

namespace tessaril {

class CodeEditor;
class ConfiguredEditor;

/// What the export sheet works with. All outlive it.
struct exportSheetParts {
    editorParts editor;
    StyleExport& exporter;
};

/// Shows a style as UserCSS text and saves it to files. It stays open then, for another copy or a
/// second try. Where the machine cannot show the text it can still be saved.
class ExportSheet : public QDialog {
public:
    /// Modal over the window of `parent`.
    ExportSheet(const styleContainer& style, exportSheetParts parts, QWidget* parent);
    ~ExportSheet() override;

private:
    void save();

    StyleExport& exporter;
    std::string text; ///< what the editor shows, which nobody can change
    std::string proposedName;
    UndoManager undoManager;
    std::unique_ptr<CodeEditor> editor;
    std::unique_ptr<ConfiguredEditor> configured;
};

} // namespace tessaril
