#pragma once

#include "events/notification_center.h"
#include "preferences/cloud_switch.h"
#include "store/database_commands.h"
#include "windows/bound_controls.h"

#include <QWidget>

#include <functional>
#include <memory>

class QCheckBox;
class QFormLayout;
class QLabel;
class QPushButton;

namespace tessaril {

/// The list of styles that a merge removed. What is not set is not there.
struct removedStylesAccess {
    std::function<bool()> hasStyles;
    std::function<void()> openPanel;
    /// Calls `changed` on the main thread whenever `hasStyles` may have changed, while the result
    /// and `alive` live.
    std::function<NotificationCenter::Subscription(std::weak_ptr<const void> alive,
                                                   std::function<void()> changed)>
        observe;
};

/// What the General pane works on. All outlive it.
struct generalPaneParts {
    PreferenceControls& controls;
    CloudSwitch& cloud;
    DatabaseCommands& database;
    removedStylesAccess removedStyles;
};

class GeneralPane : public QWidget {
public:
    explicit GeneralPane(generalPaneParts parts);
    ~GeneralPane() override;

    void reload();

protected:
    void showEvent(QShowEvent* event) override;

private:
    void addCloudRows(QFormLayout& form);
    QWidget* makeButtons();
    void showCloud();
    void showDatabaseButtons();
    void showRecovery();
    void pickImport();
    void pickExport();

    generalPaneParts parts;
    BoundControls bound;
    QCheckBox* cloudBox;
    QLabel* cloudNote;
    QPushButton* importButton;
    QPushButton* exportButton;
    QPushButton* resetButton;
    QPushButton* recoverButton;
    std::shared_ptr<int> alive = std::make_shared<int>();
    NotificationCenter::Subscription removedStylesChanged;
};

} // namespace tessaril
