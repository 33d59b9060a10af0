#pragma once

class QDialog;
class QDialogButtonBox;
class QPushButton;

namespace tessaril {

class CodeEditor;

/// What dialogs around one code editor share: a useful size; `main` as the default button; the find
/// commands wherever the focus is; F6, which leads out of the code, where the Tab key is a tab, to
/// the buttons and back; Ctrl+W, which closes. To be called when the dialog's layout is there.
void setUpCodeDialog(QDialog& dialog, CodeEditor& editor, QDialogButtonBox& buttons,
                     QPushButton& main);

} // namespace tessaril
