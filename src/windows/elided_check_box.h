#pragma once

#include <QCheckBox>
#include <QString>

#include <string_view>

namespace tessaril {

/// A check box titled with a stranger's text: one plain line, cut where there is no room for it;
/// whole in the tool tip.
class ElidedCheckBox : public QCheckBox {
public:
    using QCheckBox::QCheckBox;

    /// - title: UTF-8
    void showTitle(std::string_view title);

    QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void elide();

    QString whole;
};

} // namespace tessaril
