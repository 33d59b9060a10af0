#pragma once

#include "settings/value_text.h"

#include <QAbstractSpinBox>

#include <string>

namespace tessaril {

/// A number that can be stepped or typed, with its units behind it. It shows few decimals but keeps
/// the number as it is. Only the user's hand makes it say `valueChosen`.
class ValueStepper : public QAbstractSpinBox {
    Q_OBJECT

public:
    explicit ValueStepper(QWidget* parent = nullptr);

    /// - units: UTF-8
    void setScale(const valueScale& newScale, std::string newUnits);
    /// - isStored: otherwise it stands in for one that cannot be shown
    void showValue(double value, bool isStored);

    void stepBy(int steps) override;
    QSize sizeHint() const override;

signals:
    void valueChosen(double value);

protected:
    StepEnabled stepEnabled() const override;

private:
    void typed(const QString& text);
    void showText();

    valueScale scale;
    std::string units;
    double value = 0;
    double shownValue = 0; ///< before the text was edited
    bool isChosen = false; ///< `value` is stored
};

} // namespace tessaril
