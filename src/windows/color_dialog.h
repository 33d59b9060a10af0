#pragma once

#include "compile/color_from_string.h"

#include <QDialog>

class QColorDialog;
class QLineEdit;
class QPushButton;

namespace tessaril {

/// Asks for a colour with its opacity: picked, or typed as text. Modal over its window; deletes
/// itself.
class ColorDialog : public QDialog {
public:
    ColorDialog(const colorComponents& color, QWidget* parent);

    const colorComponents& color() const { return chosen; }

protected:
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    void picked(const QColor& color);
    void typed(const QString& text);

    colorComponents chosen;
    QColorDialog* picker;
    QLineEdit* textField;
    QPushButton* chooseButton;
};

} // namespace tessaril
