#pragma once

#include "settings/rule_editor.h"

#include <QDialog>

class QLineEdit;

namespace tessaril {

/// Edits the rules of one section and its name. Nothing is changed before Save.
class RuleEditorSheet : public QDialog {
public:
    /// Modal over the window of `parent`. `delegate` must live longer. Deletes itself when it
    /// closes.
    RuleEditorSheet(RuleEditorDelegate& delegate, bool isReadOnly, QWidget* parent);

    void accept() override;

private:
    RuleEditor editor;
    QLineEdit* sectionNameField;
};

} // namespace tessaril
