#include "windows/new_style_sheet.h"

#include "windows/dialog_buttons.h"
#include "windows/form_fields.h"
#include "windows/pane_form.h"
#include "windows/rule_examples.h"
#include "windows/shown_text.h"

#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace tessaril {

namespace {

constexpr int sheetWidth = 480;

} // namespace

NewStyleSheet::NewStyleSheet(NewStyle& styleMaker, QWidget* parent)
    : QDialog(parent)
    , newStyle(styleMaker)
    , nameField(fieldOf("nameField"))
    , ruleTypeMenu(menuOf("ruleTypeMenu", ruleTypes))
    , ruleField(fieldOf("ruleField"))
    , preprocessorMenu(menuOf("preprocessorMenu", preprocessorTitles)) {
    setObjectName("newStyleSheet");
    setWindowTitle("New Style");
    setWindowModality(Qt::WindowModal);
    setAttribute(Qt::WA_DeleteOnClose);
    ruleTypeMenu->setAccessibleName("Rule type");
    ruleField->setAccessibleName("Rule");

    auto* rule = new QHBoxLayout;
    rule->addWidget(ruleTypeMenu);
    rule->addWidget(ruleField, 1);
    auto* note = new QLabel("Without a rule the style applies to every page.");
    makeNote(*note);

    connect(ruleTypeMenu, &QComboBox::currentIndexChanged, this, [this] { showRuleExample(); });
    showRuleExample();

    auto* formPart = new QWidget;
    QFormLayout* form = makePaneForm(*formPart);
    form->setContentsMargins(0, 0, 0, 0);
    form->addRow("&Name:", nameField);
    form->addRow("&Applies to:", rule);
    form->addRow("", note);
    form->addRow("&Preprocessor:", preprocessorMenu);
    static_cast<QLabel*>(form->labelForField(rule))->setBuddy(ruleField);
    auto* parts = new QVBoxLayout(this);
    parts->addWidget(formPart);
    parts->addSpacing(8);
    parts->addStretch();
    QPushButton* create = addDialogButtons(*this, *parts, "createButton", "&Create", "Cance&l");
    create->setEnabled(false);
    connect(nameField, &QLineEdit::textChanged, create, [create](const QString& name) {
        create->setEnabled(NewStyle::canCreate(name.toStdString()));
    });
    resize(sheetWidth, sizeHint().height());
}

void NewStyleSheet::showRuleExample() {
    ruleField->setPlaceholderText(
        ruleExamples[static_cast<std::size_t>(ruleTypeMenu->currentIndex())]);
}

void NewStyleSheet::accept() {
    const newStyleFields fields{.name = nameField->text().toStdString(),
                                .ruleType = ruleTypeMenu->currentIndex(),
                                .rule = ruleField->text().toStdString(),
                                .preprocessor = preprocessorMenu->currentIndex()};
    if (!NewStyle::canCreate(fields.name) || !newStyle.mayBegin()) return;
    // Closed first, so that what opens now opens over the window.
    QDialog::accept();
    newStyle.create(fields);
}

QDialog* openNewStyleSheet(NewStyle& newStyle, QWidget& over) {
    if (!newStyle.mayBegin()) return nullptr;
    auto* sheet = new NewStyleSheet(newStyle, &over);
    sheet->open();
    return sheet;
}

} // namespace tessaril
