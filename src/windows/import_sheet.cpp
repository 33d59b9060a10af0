#include "windows/import_sheet.h"

#include "windows/dialog_buttons.h"
#include "windows/pane_form.h"
#include "windows/shown_text.h"

#include <QApplication>
#include <QClipboard>
#include <QFormLayout>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

#include <limits>

namespace tessaril {

namespace {

constexpr int sheetWidth = 520;
constexpr int spinnerHeight = 12; // in a lower one nothing is seen to move

constexpr const char* example = "https://example.com/dark.user.css";
constexpr const char* advice =
    "A style's page on the style-sharing site, or a .css, .styl or .less file.";
constexpr const char* progressText = "Getting the style…";
constexpr const char* failureText = "No style was imported from this address.";

/// Takes its room while it is hidden, too, so that nothing moves when it comes and goes.
void keepRoom(QWidget& widget) {
    QSizePolicy policy = widget.sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    widget.setSizePolicy(policy);
}

QLabel* labelOf(const char* name, const char* text) {
    auto* label = new QLabel(text);
    label->setObjectName(name);
    keepRoom(*label);
    return label;
}

} // namespace

ImportSheet::ImportSheet(UrlImport& urlImport, QWidget* parent)
    : QDialog(parent)
    , importer(urlImport)
    , urlBox(new QLineEdit)
    , loadSpinner(new QProgressBar)
    , importLabel(labelOf("importLabel", progressText))
    , errorLabel(labelOf("errorLabel", failureText)) {
    setObjectName("importSheet");
    setWindowTitle("Import from URL");
    setWindowModality(Qt::WindowModal);
    setAttribute(Qt::WA_DeleteOnClose);

    urlBox->setObjectName("urlBox");
    urlBox->setMaxLength(std::numeric_limits<int>::max()); // what is pasted is never cut in silence
    urlBox->setPlaceholderText(example);
    urlBox->setAccessibleDescription(advice);
    auto* note = new QLabel(advice);
    makeNote(*note);
    loadSpinner->setObjectName("loadSpinner");
    loadSpinner->setAccessibleName("Progress");
    loadSpinner->setTextVisible(false);
    loadSpinner->setFixedHeight(spinnerHeight);
    keepRoom(*loadSpinner);

    connect(urlBox, &QLineEdit::textChanged, this, [this] { showImportButton(); });

    // The two labels share one place.
    auto* status = new QGridLayout;
    status->addWidget(loadSpinner, 0, 0);
    status->addWidget(importLabel, 1, 0);
    status->addWidget(errorLabel, 1, 0);
    auto* importSheetBox = new QWidget;
    importSheetBox->setObjectName("importSheetBox");
    QFormLayout* form = makePaneForm(*importSheetBox);
    form->setContentsMargins(0, 0, 0, 0);
    form->addRow("&Address:", urlBox);
    form->addRow("", note);
    form->addRow("", status);
    auto* parts = new QVBoxLayout(this);
    parts->addWidget(importSheetBox);
    parts->addStretch();
    importButton = addDialogButtons(*this, *parts, "importButton", "&Import", "&Cancel");
    resize(sheetWidth, sizeHint().height());
    enter(importSheetState::idle);
    offerClipboard();
}

void ImportSheet::offerClipboard() {
    const std::string text = QApplication::clipboard()->text().toStdString();
    urlBox->setText(qtText(UrlImport::addressInClipboard(text)));
    urlBox->selectAll();
}

void ImportSheet::accept() {
    if (importButton->isEnabled() && importer.mayBegin()) importClicked();
}

void ImportSheet::done(int result) {
    underWay.reset();
    QDialog::done(result);
}

void ImportSheet::importClicked() {
    enter(importSheetState::working);
    underWay = importer.importClicked(urlBox->text().toStdString(), [this](importSheetState next) {
        underWay.reset();
        enter(next);
    });
}

void ImportSheet::enter(importSheetState next) {
    state = next;
    const bool isWorking = state == importSheetState::working;
    importLabel->setVisible(isWorking);
    errorLabel->setVisible(state == importSheetState::failed);
    loadSpinner->setVisible(isWorking);
    loadSpinner->setRange(0, isWorking ? 0 : 1); // one that is busy without end costs power
    urlBox->setReadOnly(isWorking);
    showImportButton();
    if (state == importSheetState::finished) QDialog::accept();
}

void ImportSheet::showImportButton() {
    const bool isAvailable =
        state != importSheetState::working && UrlImport::canImport(urlBox->text().toStdString());
    // One that goes grey under the focus would pass it on to Cancel, for the next key press.
    if (!isAvailable && importButton->hasFocus()) urlBox->setFocus();
    importButton->setEnabled(isAvailable);
}

} // namespace tessaril
