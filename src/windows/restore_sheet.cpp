#include "windows/restore_sheet.h"

#include "windows/dialog_buttons.h"
#include "windows/pane_form.h"
#include "windows/shown_text.h"

#include <QDateTime>
#include <QEvent>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QSplitter>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace tessaril {

namespace {

constexpr QSize comfortableSize(760, 460);

enum backupColumn { dateColumn, countColumn, missingColumn };
enum styleColumn { nameColumn, stateColumn };

constexpr const char* lookingText = "Looking for backups…";
constexpr const char* emptyText =
    "There are no backups yet. Tessaril keeps one before it saves for the first time on a day, and "
    "before it imports, resets or merges the style database.";
constexpr const char* adviceText = "Choose a backup to see what is in it.";
constexpr const char* readingText = "Reading the backup…";

QTreeWidget* listOf(const char* name, const char* accessibleName, const QStringList& columns) {
    auto* list = new QTreeWidget;
    list->setObjectName(name);
    list->setAccessibleName(accessibleName);
    list->setHeaderLabels(columns);
    list->setRootIsDecorated(false);
    list->setUniformRowHeights(true);
    list->setAllColumnsShowFocus(true);
    list->header()->setSectionsMovable(false);
    list->header()->setStretchLastSection(false);
    list->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    list->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    return list;
}

/// The list below its title, whose letter leads to it.
QWidget* titled(const char* title, QWidget* list) {
    auto* part = new QWidget;
    auto* label = new QLabel(title);
    label->setBuddy(list);
    auto* parts = new QVBoxLayout(part);
    parts->setContentsMargins(0, 0, 0, 0);
    parts->addWidget(label);
    parts->addWidget(list, 1);
    return part;
}

QDateTime momentOf(const databaseBackup& backup) {
    return QDateTime::fromSecsSinceEpoch(backup.made.time_since_epoch().count());
}

QString stateText(backupStyleState state) {
    switch (state) {
    case backupStyleState::missing:
        return "missing";
    case backupStyleState::changed:
        return "changed";
    case backupStyleState::present:
        break;
    }
    return {};
}

/// A row with some air; the first column's counts for all.
QTreeWidgetItem* rowOf(const QTreeWidget& list, const QStringList& texts) {
    constexpr int air = 8;
    auto* item = new QTreeWidgetItem(texts);
    item->setSizeHint(0, QSize(0, list.fontMetrics().height() + air));
    return item;
}

/// The styles with those that are missing first, then the changed ones, each in their order.
std::vector<const backupStyle*> inShownOrder(const std::vector<backupStyle>& styles) {
    std::vector<const backupStyle*> shown;
    for (const backupStyle& style : styles)
        shown.push_back(&style);
    std::ranges::stable_sort(shown, {}, [](const backupStyle* style) { return style->state; });
    return shown;
}

QTreeWidgetItem* itemOf(const QTreeWidget& list, const backupStyle& style) {
    auto* item = rowOf(list, {oneLine(style.name), stateText(style.state)});
    item->setToolTip(nameColumn, toolTipText(oneLine(style.name)));
    if (style.state == backupStyleState::missing) {
        QFont bold = list.font();
        bold.setBold(true);
        item->setFont(nameColumn, bold);
    }
    return item;
}

} // namespace

RestoreSheet::RestoreSheet(std::unique_ptr<BackupRestore> ownRestore, QWidget* parent)
    : QDialog(parent)
    , restore(std::move(ownRestore))
    , backupList(listOf("backups", "Backups", {"Date", "Styles", "Missing today"}))
    , styleList(listOf("backupStyles", "Styles in the backup", {"Style", "Today"}))
    , emptyNote(new QLabel(lookingText))
    , summary(new QLabel) {
    setObjectName("restoreSheet");
    setWindowTitle("Restore from Backup");
    setWindowModality(Qt::WindowModal);
    setAttribute(Qt::WA_DeleteOnClose);
    makeNote(*emptyNote);
    emptyNote->setObjectName("emptyNote");
    emptyNote->setAlignment(Qt::AlignCenter);
    emptyNote->setWordWrap(true);
    emptyNote->setAttribute(Qt::WA_TransparentForMouseEvents);
    auto* inside = new QVBoxLayout(backupList->viewport());
    inside->addWidget(emptyNote);
    summary->setObjectName("summary");
    summary->setTextFormat(Qt::PlainText);
    summary->setWordWrap(true);
    summary->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    summary->setMinimumHeight(3 * summary->fontMetrics().lineSpacing()); // nothing moves below
    styleList->setSelectionMode(QAbstractItemView::NoSelection);

    connect(backupList, &QTreeWidget::itemSelectionChanged, this, [this] { showChosen(); });

    auto* lists = new QSplitter;
    lists->setChildrenCollapsible(false);
    lists->addWidget(titled("&Backups:", backupList));
    lists->addWidget(titled("&Styles in the backup:", styleList));
    lists->setSizes({comfortableSize.width() / 2, comfortableSize.width() / 2});
    auto* parts = new QVBoxLayout(this);
    parts->addWidget(lists, 1);
    parts->addWidget(summary);
    restoreButton = addDialogButtons(*this, *parts, "restoreButton", "&Restore", "&Cancel");
    resize(comfortableSize);
    backupList->setFocus();
    showChosen();
}

RestoreSheet::~RestoreSheet() = default;

void RestoreSheet::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    if (std::exchange(hasBegun, true)) return;
    restore->begin([this] { showBackups(); }, [this](std::size_t index) { showBackup(index); });
}

/// The list of styles may have been locked or freed while another window was the active one.
void RestoreSheet::changeEvent(QEvent* event) {
    QDialog::changeEvent(event);
    if (event->type() == QEvent::ActivationChange) showRestoreButton();
}

void RestoreSheet::accept() {
    const auto index = chosen();
    if (index && restore->restore(*index)) return QDialog::accept();
    showRestoreButton();
}

void RestoreSheet::showBackups() {
    QList<QTreeWidgetItem*> items;
    for (const listedBackup& backup : restore->backups()) {
        const QDateTime made = momentOf(backup.file);
        auto* item = rowOf(*backupList, {QLocale().toString(made, QLocale::ShortFormat), "…", ""});
        item->setToolTip(dateColumn, toolTipText(QLocale().toString(made, QLocale::LongFormat)));
        for (const int column : {countColumn, missingColumn})
            item->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
        items.append(item);
    }
    backupList->addTopLevelItems(items);
    emptyNote->setText(emptyText);
    emptyNote->setVisible(items.isEmpty());
    showChosen();
}

void RestoreSheet::showBackup(std::size_t index) {
    const listedBackup& backup = restore->backups()[index];
    QTreeWidgetItem& item = *backupList->topLevelItem(static_cast<int>(index));
    if (backup.reading == listedBackup::stage::unreadable) {
        item.setText(countColumn, "unreadable");
        item.setSelected(false);
        item.setDisabled(true);
        return;
    }
    item.setText(countColumn, QLocale().toString(qulonglong(backup.contents.styles.size())));
    item.setText(missingColumn, QLocale().toString(qulonglong(backup.contents.missing)));
    if (chosen() == index) showChosen();
}

void RestoreSheet::showChosen() {
    styleList->clear();
    const auto index = chosen();
    const listedBackup* backup = index ? &restore->backups()[*index] : nullptr;
    const bool isKnown = backup && backup->reading == listedBackup::stage::known;
    if (isKnown) {
        QList<QTreeWidgetItem*> items;
        for (const backupStyle* style : inShownOrder(backup->contents.styles))
            items.append(itemOf(*styleList, *style));
        styleList->addTopLevelItems(items);
    }
    if (isKnown)
        summary->setText(qtText(restoreSummary(backup->contents)));
    else
        summary->setText(backup ? readingText : restore->backups().empty() ? "" : adviceText);
    showRestoreButton();
}

void RestoreSheet::showRestoreButton() {
    const auto index = chosen();
    const bool isAvailable = index && restore->canRestore(*index);
    // One that goes grey under the focus would pass it on to Cancel, for the next key press.
    if (!isAvailable && restoreButton->hasFocus()) backupList->setFocus();
    restoreButton->setEnabled(isAvailable);
}

std::optional<std::size_t> RestoreSheet::chosen() const {
    const QList<QTreeWidgetItem*> selected = backupList->selectedItems();
    if (selected.isEmpty()) return std::nullopt;
    return static_cast<std::size_t>(backupList->indexOfTopLevelItem(selected.front()));
}

} // namespace tessaril
