#pragma once

#include "compile/color_from_string.h"

#include <QDialog>

class QColorDialog;
class QLabel;
class QLineEdit;
class QPushButton;
class QSlider;

namespace tessaril {

/// Asks for a colour with its opacity: picked, or typed as text. Modal over its window; deletes
/// itself.
class ColorDialog : public QDialog {
public:
    ColorDialog(const colorComponents& color, QWidget* parent);

    const colorComponents& color() const { return chosen; }
    /// Whether the user has touched it.
    bool isChanged() const { return changed; }

protected:
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    void picked(const QColor& color);
    void typed(const QString& text);
    void choose();
    void showColor();
    void showOpacity();

    colorComponents chosen;
    bool changed = false;
    QColorDialog* picker;
    QLineEdit* textField;
    QSlider* opacitySlider;
    QLabel* opacityLabel;
    QPushButton* chooseButton;
};

} // namespace tessaril
