#pragma once

#include "settings/value_text.h"

#include <QSlider>

namespace tessaril {

/// A slider over the values of a scale. Only the user's hand makes it say `valueChosen`.
class VarRangeSlider : public QSlider {
    Q_OBJECT

public:
    explicit VarRangeSlider(QWidget* parent = nullptr);

    /// - drawsTicks: one mark for every value
    void setScale(const valueScale& newScale, bool drawsTicks);
    /// Shows the value, or the one nearest to it.
    void showValue(double value);

    QSize sizeHint() const override;

signals:
    void valueChosen(double value);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    valueScale scale;
    bool hasTicks = false;
};

} // namespace tessaril
