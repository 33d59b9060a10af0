#pragma once

#include "events/notification_center.h"
#include "platform/password_store.h"
#include "windows/general_pane.h"

#include <QWidget>

#include <functional>

namespace tessaril {

/// What the Preferences window works on. All outlive it.
struct preferencesWindowParts {
    NotificationCenter& center;
    generalPaneParts general;
    /// Makes the code editor of the Editor pane's preview; none: there is no preview.
    std::function<QWidget*(QWidget* parent)> makePreview;
    /// The keychain for the record store's password; none: it is not there.
    PasswordStore* passwords = nullptr;
};

/// The window of the preferences, in three panes. It follows changes from elsewhere.
class PreferencesWindow : public QWidget {
public:
    /// A window of its own, also with a `parent`.
    PreferencesWindow(preferencesWindowParts parts, QWidget* parent);
    ~PreferencesWindow() override;

    void bringForward();

protected:
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    PreferenceControls& controls;
    NotificationCenter::Subscription remoteChanges;
    NotificationCenter::Subscription localChanges;
};

} // namespace tessaril
