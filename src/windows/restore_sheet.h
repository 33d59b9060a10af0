#pragma once

#include "store/backup_restore.h"

#include <QDialog>

#include <cstddef>
#include <memory>
#include <optional>

class QLabel;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

namespace tessaril {

/// Lists the backups of the style database and what is in the chosen one, and has it merged in.
/// What is known of a backup appears as it is read; closing ends the reading.
class RestoreSheet : public QDialog {
public:
    /// Modal over the window of `parent`. Deletes itself when it closes.
    RestoreSheet(std::unique_ptr<BackupRestore> restore, QWidget* parent);
    ~RestoreSheet() override;

    void accept() override;

protected:
    void showEvent(QShowEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void showBackups();
    void showBackup(std::size_t index);
    void showChosen();
    void showRestoreButton();
    std::optional<std::size_t> chosen() const;

    std::unique_ptr<BackupRestore> restore;
    bool hasBegun = false;
    QTreeWidget* backupList;
    QTreeWidget* styleList;
    QLabel* emptyNote;
    QLabel* summary;
    QPushButton* restoreButton;
};

} // namespace tessaril
