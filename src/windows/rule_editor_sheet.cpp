#include "windows/rule_editor_sheet.h"

#include "windows/dialog_buttons.h"
#include "windows/form_fields.h"
#include "windows/held_key_filter.h"
#include "windows/pane_form.h"
#include "windows/rule_table.h"
#include "windows/shown_text.h"

#include <QFormLayout>
#include <QLineEdit>
#include <QShortcut>
#include <QVBoxLayout>

namespace tessaril {

namespace {

constexpr QSize comfortableSize(560, 420);

} // namespace

RuleEditorSheet::RuleEditorSheet(RuleEditorDelegate& delegate, bool isReadOnly, QWidget* parent)
    : QDialog(parent), editor(delegate, isReadOnly), sectionNameField(fieldOf("sectionNameField")) {
    setObjectName("ruleEditorSheet");
    setWindowTitle("Rules");
    setWindowModality(Qt::WindowModal);
    setAttribute(Qt::WA_DeleteOnClose);

    sectionNameField->setText(qtText(editor.sectionName()));
    sectionNameField->setEnabled(!isReadOnly);
    auto* table = new RuleTable(editor.rules());
    table->setNoteWithoutRules("Without a rule the section applies to every page.");

    connect(new QShortcut(QKeySequence::Save, this), &QShortcut::activated, this, &QDialog::accept);

    auto* formPart = new QWidget;
    QFormLayout* form = makePaneForm(*formPart);
    form->setContentsMargins(0, 0, 0, 0);
    form->addRow("Section &name:", sectionNameField);
    auto* parts = new QVBoxLayout(this);
    parts->addWidget(formPart);
    parts->addWidget(table, 1);
    addDialogButtons(*this, *parts, "saveButton", "&Save", "&Cancel");
    new HeldKeyFilter(this);
    resize(comfortableSize);
    if (isReadOnly) table->setFocus();
}

void RuleEditorSheet::accept() {
    editor.saveClicked(sectionNameField->text().toStdString());
    QDialog::accept();
}

} // namespace tessaril
