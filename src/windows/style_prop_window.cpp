#include "windows/style_prop_window.h"

#include "windows/bring_to_front.h"
#include "windows/droplet.h"
#include "windows/elided_label.h"
#include "windows/held_key_filter.h"
#include "windows/pane_form.h"
#include "windows/rule_table.h"
#include "windows/shown_text.h"
#include "windows/spinner.h"
#include "windows/variable_table_view.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QShortcut>
#include <QVBoxLayout>

namespace tessaril {

namespace {

constexpr QSize comfortableSize(580, 680);
constexpr QSize smallSize(580, 400); // without variables
constexpr int iconSize = 32;
constexpr int groupGap = 6;

/// In the order of `StylePropView::themes`.
constexpr std::array<const char*, StylePropView::themes.size()> themeTitles = {
    "Light and dark", "Light only", "Dark only"};

QPixmap pictureOf(const std::shared_ptr<const siteIcon>& icon, qreal ratio) {
    QPixmap picture;
    if (!icon || !picture.loadFromData(reinterpret_cast<const uchar*>(icon->png.data()),
                                       static_cast<uint>(icon->png.size()), "PNG"))
        return dropletPixmap(iconSize, ratio);
    picture = picture.scaled(QSize(iconSize, iconSize) * ratio, Qt::KeepAspectRatio,
                             Qt::SmoothTransformation);
    picture.setDevicePixelRatio(ratio);
    return picture;
}

/// A title over the widget below it, which its mnemonic leads to.
QWidget* titled(const char* title, QWidget* below, QWidget* focused) {
    auto* label = new QLabel(title);
    label->setBuddy(focused);
    auto* group = new QWidget;
    auto* parts = new QVBoxLayout(group);
    parts->setContentsMargins(0, 0, 0, 0);
    parts->addWidget(label);
    parts->addWidget(below, 1);
    return group;
}

} // namespace

StylePropWindow::StylePropWindow(std::unique_ptr<StylePropView> ownView,
                                 const std::shared_ptr<const siteIcon>& icon, QWidget* parent)
    : QDialog(parent, Qt::Window)
    , view(std::move(ownView))
    , styleNameField(new ElidedLabel)
    , resetVarButton(new QPushButton("Reset &Variables…"))
    , saveSpinner(new Spinner) {
    setObjectName("stylePropWindow");
    setAttribute(Qt::WA_DeleteOnClose);

    const bool hasVariables = view->variables().rowCount() > 0;
    auto* parts = new QVBoxLayout(this);
    parts->addWidget(makeHeader(icon));
    parts->addWidget(makeSettings());
    parts->addWidget(makeExclusions(), 1);
    if (hasVariables) parts->addSpacing(groupGap);
    if (hasVariables) parts->addWidget(makeVariables(), 2);
    parts->addSpacing(groupGap);
    parts->addWidget(makeButtons());

    showName(view->style().styleData.name);
    view->setHandlers({.showName = [this](const std::string& name) { showName(name); },
                       .focus = [this] { bringForward(); },
                       .close = [this] { close(); }});
    connect(new QShortcut(QKeySequence::Save, this), &QShortcut::activated, this,
            [this] { save(); });
    connect(new QShortcut(QKeySequence("Ctrl+W"), this), &QShortcut::activated, this,
            [this] { close(); });
    new HeldKeyFilter(this);
    const QSize size = hasVariables ? comfortableSize : smallSize;
    resize(size.boundedTo(screen()->availableSize() * 9 / 10));
}

StylePropWindow::~StylePropWindow() = default;

QWidget* StylePropWindow::makeHeader(const std::shared_ptr<const siteIcon>& icon) {
    auto* faviconView = new QLabel;
    faviconView->setPixmap(pictureOf(icon, devicePixelRatioF()));
    styleNameField->setObjectName("styleNameField");
    QFont bold = styleNameField->font();
    bold.setBold(true);
    styleNameField->setFont(bold);
    auto* styleTypeField = new QLabel(qtText(view->typeText()));
    styleTypeField->setObjectName("styleTypeField");
    makeNote(*styleTypeField);

    auto* header = new QWidget;
    auto* parts = new QGridLayout(header);
    parts->setContentsMargins(0, 0, 0, 0);
    parts->setVerticalSpacing(0);
    parts->setColumnStretch(1, 1);
    parts->addWidget(faviconView, 0, 0, 2, 1);
    parts->addWidget(styleNameField, 0, 1);
    parts->addWidget(styleTypeField, 1, 1);
    return header;
}

QWidget* StylePropWindow::makeSettings() {
    auto* iframeCheck = new QCheckBox("Apply inside &frames as well");
    iframeCheck->setObjectName("iframeCheck");
    iframeCheck->setChecked(view->allowsIframe());
    connect(iframeCheck, &QCheckBox::clicked, this,
            [this](bool isOn) { view->iframeToggled(isOn); });

    auto* themeToggle = new QComboBox;
    themeToggle->setObjectName("themeToggle");
    for (const char* title : themeTitles)
        themeToggle->addItem(title);
    themeToggle->setCurrentIndex(static_cast<int>(view->theme()));
    connect(themeToggle, &QComboBox::activated, this,
            [this](int item) { view->themeChanged(static_cast<std::size_t>(item)); });

    auto* settings = new QWidget;
    auto* parts = new QHBoxLayout(settings);
    parts->setContentsMargins(0, 4, 0, 4);
    auto* themeLabel = new QLabel("A&ppearance:");
    themeLabel->setBuddy(themeToggle);
    parts->addWidget(themeLabel);
    parts->addWidget(themeToggle);
    parts->addSpacing(16);
    parts->addWidget(iframeCheck);
    parts->addStretch();
    return settings;
}

QWidget* StylePropWindow::makeExclusions() {
    auto* excludeTable = new RuleTable(view->exclusions());
    excludeTable->setObjectName("excludeTable");
    excludeTable->setNoteWithoutRules("Nothing is excluded.");
    return titled("&Does not apply to:", excludeTable, excludeTable);
}

QWidget* StylePropWindow::makeVariables() {
    variableTable = new VariableTableView(view->variables());
    return titled("Varia&bles:", variableTable, variableTable);
}

QWidget* StylePropWindow::makeButtons() {
    resetVarButton->setObjectName("resetVarButton");
    resetVarButton->setAutoDefault(false);
    resetVarButton->setEnabled(variableTable != nullptr);
    connect(resetVarButton, &QPushButton::clicked, this, [this, window = QPointer(this)] {
        if (view->variables().setDefaults() && window) variableTable->reload();
    });

    auto* buttons = new QDialogButtonBox;
    QPushButton* saveButton = buttons->addButton("&Save", QDialogButtonBox::AcceptRole);
    QPushButton* cancelButton = buttons->addButton("&Cancel", QDialogButtonBox::RejectRole);
    saveButton->setObjectName("saveButton");
    saveButton->setDefault(true);
    cancelButton->setObjectName("cancelButton");
    cancelButton->setAutoDefault(false);
    connect(buttons, &QDialogButtonBox::accepted, this, [this] { save(); });
    connect(buttons, &QDialogButtonBox::rejected, this, [this] { view->cancelClicked(); });

    auto* row = new QWidget;
    auto* parts = new QHBoxLayout(row);
    parts->setContentsMargins(0, 0, 0, 0);
    parts->addWidget(resetVarButton);
    parts->addWidget(saveSpinner);
    parts->addStretch();
    parts->addWidget(buttons);
    return row;
}

void StylePropWindow::showName(const std::string& name) {
    styleNameField->showText(name);
    setWindowTitle(windowTitleText("Properties of " + name));
}

void StylePropWindow::save() {
    setEnabled(false); // until it is stored
    saveSpinner->setSpinning(true);
    view->saveClicked();
}

void StylePropWindow::bringForward() {
    bringToFront(*this);
}

void StylePropWindow::reject() {
    close();
}

void StylePropWindow::closeEvent(QCloseEvent* event) {
    view->leave();
    event->accept(); // a dialog's own way would be by `reject`
}

} // namespace tessaril
