#pragma once

#include <QProxyStyle>

namespace tessaril {

/// The application's widget style: Fusion, with check boxes that also stand out on dark ground,
/// where Fusion draws their outline nearly in the colour of the ground.
class WidgetStyle : public QProxyStyle {
public:
    WidgetStyle();

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget = nullptr) const override;
};

} // namespace tessaril
