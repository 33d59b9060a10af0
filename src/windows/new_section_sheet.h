#pragma once

#include "style_editor/new_section.h"

#include <QDialog>

#include <functional>

class QCheckBox;
class QComboBox;
class QLineEdit;

namespace tessaril {

/// Asks for the name and the first rule of a new section.
class NewSectionSheet : public QDialog {
public:
    /// Modal over the window of `parent`. Deletes itself when it closes.
    /// - add: called with what was asked for when the user wants it
    NewSectionSheet(std::function<void(const newSectionFields&)> add, QWidget* parent);

    void accept() override;

private:
    void showRule();

    std::function<void(const newSectionFields&)> add;
    QLineEdit* nameField;
    QComboBox* ruleMenu;
    QLineEdit* ruleField;
    QCheckBox* copyCheckbox;
};

} // namespace tessaril
