#pragma once

#include "preferences/record_password.h"
#include "windows/bound_controls.h"

#include <QWidget>

class QFormLayout;
class QLabel;
class QLineEdit;

namespace tessaril {

class AdvancedPane : public QWidget {
public:
    /// Both outlive it; `passwords` may be null.
    AdvancedPane(PreferenceControls& controls, PasswordStore* passwords);

    void reload();

protected:
    void showEvent(QShowEvent* event) override;

private:
    void addPasswordRow(QFormLayout& form);
    void showPassword();

    BoundControls bound;
    RecordPassword password;
    QLineEdit* passwordField;
    QLabel* passwordNote;
};

} // namespace tessaril
