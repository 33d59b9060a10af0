#include "windows/recovery_panel.h"

#include "events/notification_names.h"
#include "events/observe_on_main.h"
#include "windows/bring_to_front.h"
#include "windows/dialog_buttons.h"
#include "windows/pane_form.h"
#include "windows/shown_text.h"

#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QShortcut>
#include <QStyledItemDelegate>
#include <QVBoxLayout>

#include <string>
#include <vector>

namespace tessaril {

namespace {

constexpr QSize comfortableSize(440, 380);

constexpr const char* adviceText =
    "Styles that the sync removed from your list, as another machine has them no more. Tessaril "
    "keeps them here until you quit it; a recovered one goes to the end of your list.";
constexpr const char* emptyText = "There are no removed styles to recover.";

} // namespace

RecoveryPanel::RecoveryPanel(recoveryPanelParts panelParts, QWidget* parent)
    : QDialog(parent)
    , parts(panelParts)
    , names(new QListWidget)
    , emptyNote(new QLabel(emptyText))
    , deletedStylesChanged(observeOnMain(parts.center, parts.dispatcher,
                                         notifications::deletedStylesChanged, alive,
                                         [this](const notification&) { reloadTimer.start(); })) {
    setObjectName("recoveryPanel");
    setWindowTitle("Recover Removed Styles");
    names->setObjectName("removedStyles");
    names->setAccessibleName("Removed styles");
    names->setSelectionMode(QAbstractItemView::ExtendedSelection);
    names->setUniformItemSizes(true);
    names->setTextElideMode(Qt::ElideRight);
    names->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* row = new QStyledItemDelegate(names);
    row->setObjectName("styleRow");
    names->setItemDelegate(row);
    makeNote(*emptyNote);
    emptyNote->setObjectName("emptyNote");
    emptyNote->setAlignment(Qt::AlignCenter);
    emptyNote->setWordWrap(true);
    emptyNote->setAttribute(Qt::WA_TransparentForMouseEvents);
    auto* inside = new QVBoxLayout(names->viewport());
    inside->addWidget(emptyNote);
    auto* advice = new QLabel(adviceText);
    advice->setWordWrap(true);

    connect(names, &QListWidget::itemSelectionChanged, this, [this] { showButton(); });
    connect(names, &QListWidget::itemDoubleClicked, this, &QDialog::accept);
    connect(new QShortcut(QKeySequence("Ctrl+W"), this), &QShortcut::activated, this,
            &QDialog::reject);
    // A merge posts one notification for each style that it removes.
    reloadTimer.setSingleShot(true);
    connect(&reloadTimer, &QTimer::timeout, this, [this] { showNames(); });

    auto* rows = new QVBoxLayout(this);
    rows->addWidget(advice);
    rows->addWidget(names, 1);
    recoverButton = addDialogButtons(*this, *rows, "recoverSelectedButton", "&Recover", "&Close");
    resize(comfortableSize);
    names->setFocus();
    showNames();
    showButton();
}

void RecoveryPanel::bringForward() {
    bringToFront(*this);
}

void RecoveryPanel::accept() {
    const QModelIndexList selected = names->selectionModel()->selectedRows();
    if (selected.isEmpty() || parts.listCommands.beepsAsLocked()) return;
    std::vector<std::size_t> positions;
    for (const QModelIndex& index : selected)
        positions.push_back(static_cast<std::size_t>(index.row()));
    names->clear();
    parts.removed.recover(positions);
    showNames();
    showButton();
}

/// Merges only append, so that the rows that are there stand, and stay selected.
void RecoveryPanel::showNames() {
    const std::vector<std::string> all = parts.removed.names();
    if (all.size() < static_cast<std::size_t>(names->count())) names->clear();
    for (std::size_t i = static_cast<std::size_t>(names->count()); i < all.size(); ++i) {
        auto* item = new QListWidgetItem(oneLine(all[i]), names);
        item->setToolTip(toolTipText(item->text()));
    }
    emptyNote->setVisible(all.empty());
}

void RecoveryPanel::showButton() {
    // One that goes grey under the focus would pass it on to Close, for the next key press.
    const bool isAvailable = names->selectionModel()->hasSelection();
    if (!isAvailable && recoverButton->hasFocus()) names->setFocus();
    recoverButton->setEnabled(isAvailable);
}

} // namespace tessaril
