#include "windows/export_sheet.h"

#include "editor/editor_configuration.h"
#include "formats/user_css_writer.h"
#include "windows/code_dialog.h"
#include "windows/code_editor.h"
#include "windows/file_panel.h"
#include "windows/shown_text.h"

#include <QDialogButtonBox>
#include <QPushButton>
#include <QShortcut>
#include <QVBoxLayout>

namespace tessaril {

ExportSheet::ExportSheet(const styleContainer& style, exportSheetParts parts, QWidget* parent)
    : QDialog(parent)
    , exporter(parts.exporter)
    , text(writeUserCSS(style))
    , proposedName(proposedExportName(style.styleData.name))
    , editor(std::make_unique<CodeEditor>(parts.editor.makeWebView, parts.editor.page,
                                          parts.editor.center, undoManager)) {
    setWindowModality(Qt::WindowModal);
    setWindowTitle(windowTitleText("Export “" + style.styleData.name + "”"));
    editor->setBorderType(borderType::bezel);

    auto* buttons = new QDialogButtonBox;
    QPushButton* save = buttons->addButton("&Save…", QDialogButtonBox::AcceptRole);
    buttons->addButton("&Close", QDialogButtonBox::RejectRole);
    save->setObjectName("saveButton");
    connect(save, &QPushButton::clicked, this, [this] { this->save(); });
    connect(new QShortcut(QKeySequence::Save, this), &QShortcut::activated, this,
            [this] { this->save(); });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* rows = new QVBoxLayout(this);
    rows->addWidget(editor.get(), 1);
    rows->addWidget(buttons);
    setUpCodeDialog(*this, *editor, *buttons, *save);
    save->setFocus();

    configured = std::make_unique<ConfiguredEditor>(
        editor->aceView(), parts.editor.preferences, parts.editor.center,
        [this] { return editorContent{.text = text, .isReadOnly = true}; });
}

ExportSheet::~ExportSheet() = default;

void ExportSheet::save() {
    openSavePanel(this, exportStyleTitle, "User CSS files", exportStyleTypes, proposedName,
                  [this](const std::filesystem::path& file) { exporter.write(file, text); });
}

} // namespace tessaril
