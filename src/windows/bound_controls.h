#pragma once

#include "preferences/preference_controls.h"

#include <QString>

#include <functional>
#include <string_view>
#include <vector>

class QCheckBox;
class QComboBox;
class QLineEdit;
class QSpinBox;

namespace tessaril {

/// Makes the controls of a preferences pane, each bound to what it shows. Only the user's hand
/// makes a control store anything, never its loading. Each has its key as object name. The keys
/// and menus must live longer than the controls.
class BoundControls {
public:
    explicit BoundControls(PreferenceControls& preferences);

    QCheckBox* checkBox(const QString& title, std::string_view key);
    QComboBox* menu(const valueMenu& menu);
    QSpinBox* fontSize();
    QLineEdit* field(std::string_view key);
    /// - entered: told what came of an address once it was stored, or not: then it stays in the
    /// field
    QLineEdit* addressField(std::string_view key,
                            std::function<void(PreferenceControls::entered)> entered = {});

    /// Shows in every control what is stored.
    void reload();

private:
    PreferenceControls& preferences;
    std::vector<std::function<void()>> loaders;
};

} // namespace tessaril
