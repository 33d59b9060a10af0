#pragma once

#include "compile/color_from_string.h"

#include <QAbstractButton>

class QPainter;

namespace tessaril {

/// The nearest colour that can be shown.
QColor qtColor(const colorComponents& color);

/// Fills `place` with the colour, over a pattern where it lets something through.
void paintSwatch(QPainter& painter, const QRectF& place, const QColor& color);

/// Shows a colour; pressed, it asks for another one. Only the user's choice makes it say
/// `colorChosen`.
class ColorButton : public QAbstractButton {
    Q_OBJECT

public:
    explicit ColorButton(QWidget* parent = nullptr);

    void showColor(const colorComponents& newColor);
    /// Whether the colour that is shown is the value; otherwise it stands in for one that cannot be
    /// shown, and choosing it is a choice.
    void setStored(bool isTheValue) { isStored = isTheValue; }

    QSize sizeHint() const override;

signals:
    void colorChosen(const tessaril::colorComponents& color);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void askForColor();

    colorComponents color{.red = 1, .green = 1, .blue = 1};
    bool isStored = false;
};

} // namespace tessaril
