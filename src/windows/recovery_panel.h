#pragma once

#include "events/notification_center.h"
#include "platform/dispatcher.h"
#include "store/style_list_commands.h"
#include "sync/recovery_list.h"

#include <QDialog>
#include <QTimer>

#include <memory>

class QLabel;
class QListWidget;
class QPushButton;

namespace tessaril {

/// What the recovery panel works on. All outlive it.
struct recoveryPanelParts {
    RecoveryList& removed;
    StyleListCommands& listCommands;
    NotificationCenter& center;
    Dispatcher& dispatcher;
};

/// Lists the styles that the sync removed and puts the selected ones back. It follows the merges
/// that come while it is open.
class RecoveryPanel : public QDialog {
public:
    /// A window of its own, also with a `parent`.
    RecoveryPanel(recoveryPanelParts parts, QWidget* parent);

    void bringForward();

    /// Recovers the selected styles. Beeps instead while the list is locked for sync.
    void accept() override;

private:
    void showNames();
    void showButton();

    recoveryPanelParts parts;
    QListWidget* names;
    QLabel* emptyNote;
    QPushButton* recoverButton;
    QTimer reloadTimer;
    std::shared_ptr<int> alive = std::make_shared<int>();
    NotificationCenter::Subscription deletedStylesChanged;
};

} // namespace tessaril
