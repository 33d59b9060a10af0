#pragma once

#include "store/new_style.h"

#include <QDialog>

class QComboBox;
class QLineEdit;

namespace tessaril {

/// Asks for what a new style needs and has `NewStyle` make it.
class NewStyleSheet : public QDialog {
public:
    /// `newStyle` must live longer. Deletes itself when it closes.
    NewStyleSheet(NewStyle& newStyle, QWidget* parent);

    void accept() override;

private:
    void showRuleExample();

    NewStyle& newStyle;
    QLineEdit* nameField;
    QComboBox* ruleTypeMenu;
    QLineEdit* ruleField;
    QComboBox* preprocessorMenu;
};

/// Opens the sheet over the window; null, with a beep, where no style may be made now.
QDialog* openNewStyleSheet(NewStyle& newStyle, QWidget& over);

} // namespace tessaril
