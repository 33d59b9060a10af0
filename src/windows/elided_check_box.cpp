#include "windows/elided_check_box.h"

#include "windows/shown_text.h"

#include <QResizeEvent>
#include <QStyle>
#include <QStyleOptionButton>

namespace tessaril {

void ElidedCheckBox::showTitle(std::string_view title) {
    whole = oneLine(title);
    setToolTip(toolTipText(whole));
    elide();
}

QSize ElidedCheckBox::minimumSizeHint() const {
    return {0, QCheckBox::minimumSizeHint().height()};
}

void ElidedCheckBox::resizeEvent(QResizeEvent* event) {
    QCheckBox::resizeEvent(event);
    elide();
}

void ElidedCheckBox::elide() {
    QStyleOptionButton option;
    initStyleOption(&option);
    const int room = style()->subElementRect(QStyle::SE_CheckBoxContents, &option, this).width();
    // With "&" doubled, or it would mark a key.
    setText(fontMetrics().elidedText(whole, Qt::ElideRight, room).replace("&", "&&"));
}

} // namespace tessaril
