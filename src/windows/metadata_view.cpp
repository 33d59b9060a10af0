#include "windows/metadata_view.h"

#include "windows/form_fields.h"
#include "windows/held_key_filter.h"
#include "windows/pane_form.h"
#include "windows/shown_text.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QShortcut>
#include <QVBoxLayout>

namespace tessaril {

namespace {

constexpr QSize comfortableSize(520, 380);

void fill(QLineEdit& field, const std::string& text, bool isReadOnly) {
    field.setText(qtText(text));
    field.setCursorPosition(0);
    field.setReadOnly(isReadOnly);
}

} // namespace

MetadataView::MetadataView(const metadataFields& fields,
                           std::function<void(const metadataFields&)> whenSaved, QWidget* parent)
    : QDialog(parent)
    , save(std::move(whenSaved))
    , authorField(fieldOf("authorField"))
    , versionField(fieldOf("versionField"))
    , licenseField(fieldOf("licenseField"))
    , namespaceField(fieldOf("namespaceField"))
    , descriptionField(new QPlainTextEdit)
    , preprocMenu(menuOf("preprocMenu", metadataPreprocessorTitles)) {
    setObjectName("metadataView");
    setWindowTitle("Metadata");
    setWindowModality(Qt::WindowModal);
    setAttribute(Qt::WA_DeleteOnClose);

    const bool isReadOnly = !save;
    fill(*authorField, fields.author, isReadOnly);
    fill(*versionField, fields.version, isReadOnly);
    fill(*licenseField, fields.license, isReadOnly);
    fill(*namespaceField, fields.namespace_, isReadOnly);
    descriptionField->setObjectName("descriptionField");
    descriptionField->setPlainText(qtText(fields.description));
    descriptionField->setReadOnly(isReadOnly);
    descriptionField->setTabChangesFocus(true);
    preprocMenu->setCurrentIndex(fields.preprocessor);
    preprocMenu->setEnabled(!isReadOnly);

    auto* formPart = new QWidget;
    QFormLayout* form = makePaneForm(*formPart);
    form->setContentsMargins(0, 0, 0, 0);
    form->addRow("&Author:", authorField);
    form->addRow("&Version:", versionField);
    form->addRow("&License:", licenseField);
    form->addRow("&Namespace:", namespaceField);
    form->addRow("&Description:", descriptionField);
    form->addRow("&Preprocessor:", preprocMenu);

    auto* buttons = new QDialogButtonBox;
    if (!isReadOnly) {
        QPushButton* saveButton = buttons->addButton("&Save", QDialogButtonBox::AcceptRole);
        saveButton->setObjectName("saveButton");
        saveButton->setDefault(true);
        connect(new QShortcut(QKeySequence::Save, this), &QShortcut::activated, this,
                &QDialog::accept);
    }
    QPushButton* cancel =
        buttons->addButton(isReadOnly ? "&Close" : "&Cancel", QDialogButtonBox::RejectRole);
    cancel->setAutoDefault(isReadOnly);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* parts = new QVBoxLayout(this);
    parts->addWidget(formPart, 1);
    parts->addWidget(buttons);
    new HeldKeyFilter(this);
    resize(comfortableSize);
}

void MetadataView::accept() {
    const metadataFields fields{.author = authorField->text().toStdString(),
                                .version = versionField->text().toStdString(),
                                .license = licenseField->text().toStdString(),
                                .namespace_ = namespaceField->text().toStdString(),
                                .description = descriptionField->toPlainText().toStdString(),
                                .preprocessor = preprocMenu->currentIndex()};
    QDialog::accept();
    if (save) save(fields);
}

} // namespace tessaril
