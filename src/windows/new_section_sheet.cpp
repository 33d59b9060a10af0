#include "windows/new_section_sheet.h"

#include "model/rule_types.h"
#include "windows/dialog_buttons.h"
#include "windows/form_fields.h"
#include "windows/held_key_filter.h"
#include "windows/pane_form.h"
#include "windows/rule_examples.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

namespace tessaril {

namespace {

constexpr int sheetWidth = 480;

} // namespace

NewSectionSheet::NewSectionSheet(std::function<void(const newSectionFields&)> whenWanted,
                                 QWidget* parent)
    : QDialog(parent)
    , add(std::move(whenWanted))
    , nameField(fieldOf("nameField"))
    , ruleMenu(menuOf("ruleMenu", ruleTypes))
    , ruleField(fieldOf("ruleField"))
    , copyCheckbox(new QCheckBox("&Copy the rules of the current section")) {
    setObjectName("newSectionSheet");
    setWindowTitle("New Section");
    setWindowModality(Qt::WindowModal);
    setAttribute(Qt::WA_DeleteOnClose);
    nameField->setPlaceholderText("Optional");
    ruleMenu->setAccessibleName("Rule type");
    ruleField->setAccessibleName("Rule");
    copyCheckbox->setObjectName("copyCheckbox");

    auto* rule = new QHBoxLayout;
    rule->addWidget(ruleMenu);
    rule->addWidget(ruleField, 1);
    auto* note = new QLabel("Without a rule the section applies to every page.");
    makeNote(*note);

    auto* formPart = new QWidget;
    QFormLayout* form = makePaneForm(*formPart);
    form->setContentsMargins(0, 0, 0, 0);
    form->addRow("&Name:", nameField);
    form->addRow("A&pplies to:", rule);
    form->addRow("", note);
    form->addRow("", copyCheckbox);
    static_cast<QLabel*>(form->labelForField(rule))->setBuddy(ruleField);

    connect(ruleMenu, &QComboBox::currentIndexChanged, this, [this] { showRule(); });
    connect(copyCheckbox, &QCheckBox::toggled, this, [this] { showRule(); });

    auto* parts = new QVBoxLayout(this);
    parts->addWidget(formPart);
    parts->addSpacing(8);
    parts->addStretch();
    addDialogButtons(*this, *parts, "addButton", "&Add", "Cance&l");
    new HeldKeyFilter(this);
    showRule();
    resize(sheetWidth, sizeHint().height());
}

void NewSectionSheet::showRule() {
    ruleField->setPlaceholderText(ruleExamples[static_cast<std::size_t>(ruleMenu->currentIndex())]);
    ruleMenu->setEnabled(!copyCheckbox->isChecked());
    ruleField->setEnabled(!copyCheckbox->isChecked());
}

void NewSectionSheet::accept() {
    const newSectionFields fields{.name = nameField->text().toStdString(),
                                  .ruleType = ruleMenu->currentIndex(),
                                  .rule = ruleField->text().toStdString(),
                                  .copiesRules = copyCheckbox->isChecked()};
    QDialog::accept();
    add(fields);
}

} // namespace tessaril
