#pragma once

#include <QLabel>
#include <QString>

#include <string_view>

namespace tessaril {

/// A label for a stranger's text: one plain line, cut where there is no room for it; whole in the
/// tool tip.
class ElidedLabel : public QLabel {
public:
    using QLabel::QLabel;

    /// - text: UTF-8
    void showText(std::string_view text);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    QString whole;
};

} // namespace tessaril
