#include "windows/general_pane.h"

#include "preferences/preference_keys.h"
#include "windows/file_panel.h"
#include "windows/pane_form.h"
#include "windows/shown_text.h"

#include <QCheckBox>
#include <QFileDialog>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace tessaril {

namespace {

namespace keys = preferenceKeys;

constexpr const char* noAccountText = "Not available: no cloud account is set up.";
constexpr const char* siteIconsText = "Asking tells a site that someone has a style for it.";
constexpr const char* nothingRemovedText = "There are no removed styles to recover.";
constexpr const char* recoverText = "Bring back styles that the last sync removed.";

QFileDialog* databasePanel(QWidget* parent, std::string_view title) {
    return makeFilePanel(parent, title, "Tessaril style databases",
                         std::span(&databaseFileType, 1));
}

} // namespace

GeneralPane::GeneralPane(generalPaneParts paneParts)
    : parts(std::move(paneParts))
    , bound(parts.controls)
    , cloudBox(new QCheckBox("Syn&c styles and preferences through iCloud"))
    , cloudNote(new QLabel(noAccountText))
    , importButton(new QPushButton)
    , exportButton(new QPushButton("Expor&t Style DB"))
    , resetButton(new QPushButton("&Reset Style DB"))
    , recoverButton(new QPushButton("Reco&ver Removed Styles…")) {
    QFormLayout* form = makePaneForm(*this);
    form->addRow("Default a&uthor:", bound.field(keys::defaultAuthor));
    form->addRow("Default &namespace:", bound.field(keys::defaultNamespace));
    addGap(*form);
    form->addRow("At launch:", bound.checkBox("U&pdate all styles", keys::updateOnLaunch));
    form->addRow("", bound.checkBox("Warn when the e&xtension is disabled", keys::warnIfDisabled));
    form->addRow("In the editor:",
                 bound.checkBox("&Warn when a style is read-only", keys::warnReadOnly));
    form->addRow("In the browser:",
                 bound.checkBox("Switch styles by the toggle &shortcut", keys::toggleShortcut));
    QCheckBox* icons = bound.checkBox("S&how the icons of web sites", keys::fetchSiteIcons);
    icons->setAccessibleDescription(siteIconsText);
    auto* iconsNote = new QLabel(siteIconsText);
    makeNote(*iconsNote);
    form->addRow("In the list:", icons);
    form->addRow("", iconsNote);
    addGap(*form);
    addCloudRows(*form);
    form->addRow("Mood:", bound.checkBox("Awes&ome", keys::awesomeness));
    addGap(*form);
    form->addRow("Style database:", makeButtons());

    parts.database.setChangeHandler([this] { showDatabaseButtons(); });
    parts.cloud.setChangeHandler([this] { showCloud(); });
    if (parts.removedStyles.observe)
        removedStylesChanged = parts.removedStyles.observe(alive, [this] { showRecovery(); });
    showDatabaseButtons();
    reload();
}

GeneralPane::~GeneralPane() {
    parts.database.setChangeHandler({});
    parts.cloud.setChangeHandler({});
}

void GeneralPane::addCloudRows(QFormLayout& form) {
    cloudBox->setObjectName(qtText(keys::useiCloud));
    connect(cloudBox, &QCheckBox::clicked, this, [this](bool on) { parts.cloud.turn(on); });
    makeNote(*cloudNote);
    form.addRow("Cloud:", cloudBox);
    form.addRow("", cloudNote);
}

QWidget* GeneralPane::makeButtons() {
    importButton->setObjectName("importButton");
    exportButton->setObjectName("exportButton");
    resetButton->setObjectName("resetButton");
    recoverButton->setObjectName("recoverButton");
    connect(importButton, &QPushButton::clicked, this, [this] { pickImport(); });
    connect(exportButton, &QPushButton::clicked, this, [this] { pickExport(); });
    connect(resetButton, &QPushButton::clicked, this, [this] { parts.database.reset(); });
    connect(recoverButton, &QPushButton::clicked, this,
            [this] { parts.removedStyles.openPanel(); });

    auto* buttons = new QWidget;
    auto* grid = new QGridLayout(buttons);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->addWidget(importButton, 0, 0);
    grid->addWidget(exportButton, 0, 1);
    grid->addWidget(resetButton, 1, 0);
    grid->addWidget(recoverButton, 1, 1);
    grid->setColumnStretch(0, 1);
    grid->setColumnStretch(1, 1);
    return buttons;
}

void GeneralPane::reload() {
    bound.reload();
    showCloud();
}

void GeneralPane::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    parts.cloud.paneShown();
    showRecovery();
}

void GeneralPane::showCloud() {
    const bool isAvailable = parts.cloud.isAvailable();
    cloudBox->setEnabled(isAvailable);
    cloudBox->setChecked(isAvailable && parts.cloud.isOn());
    cloudBox->setToolTip(isAvailable ? "" : noAccountText);
    cloudBox->setAccessibleDescription(cloudBox->toolTip());
    cloudNote->setVisible(!isAvailable);
}

void GeneralPane::showDatabaseButtons() {
    importButton->setText("&" + qtText(parts.database.importTitle()));
    // One that goes grey under the focus would pass it on to a neighbour, for the next key press.
    const bool areAvailable = parts.database.areAvailable();
    for (QPushButton* button : {importButton, exportButton, resetButton}) {
        if (!areAvailable && button->hasFocus()) setFocus();
        button->setEnabled(areAvailable);
    }
}

void GeneralPane::showRecovery() {
    const auto& [hasStyles, openPanel, observe] = parts.removedStyles;
    const bool canRecover = openPanel && hasStyles && hasStyles();
    if (!canRecover && recoverButton->hasFocus()) setFocus();
    recoverButton->setEnabled(canRecover);
    recoverButton->setToolTip(canRecover ? recoverText : nothingRemovedText);
    recoverButton->setAccessibleDescription(recoverButton->toolTip());
}

void GeneralPane::pickImport() {
    QFileDialog* panel = databasePanel(this, importDatabaseTitle);
    panel->setFileMode(QFileDialog::ExistingFile);
    connect(panel, &QFileDialog::fileSelected, this,
            [this](const QString& file) { parts.database.importFrom(pathOf(file)); });
    panel->open();
}

void GeneralPane::pickExport() {
    QFileDialog* panel = databasePanel(this, exportDatabaseTitle);
    panel->setAcceptMode(QFileDialog::AcceptSave);
    panel->setDefaultSuffix(qtText(databaseFileType));
    panel->selectFile(qtText(exportedDatabaseName));
    connect(panel, &QFileDialog::fileSelected, this,
            [this](const QString& file) { parts.database.exportTo(pathOf(file)); });
    panel->open();
}

} // namespace tessaril
