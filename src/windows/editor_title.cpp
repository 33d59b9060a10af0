#include "windows/editor_title.h"

#include "windows/elided_label.h"
#include "windows/pane_form.h"

#include <QHBoxLayout>

namespace tessaril {

namespace {

constexpr int narrowest = 80; // pixels

} // namespace

EditorTitle::EditorTitle(bool isReadOnlyStyle)
    : nameLabel(new ElidedLabel)
    , remarkLabel(new QLabel("Read-only"))
    , isReadOnly(isReadOnlyStyle) {
    nameLabel->setObjectName("styleNameLabel");
    QFont bold = nameLabel->font();
    bold.setBold(true);
    nameLabel->setFont(bold);

    auto* parts = new QHBoxLayout(this);
    parts->setContentsMargins(8, 0, 8, 0);
    parts->addStretch(1);
    parts->addWidget(nameLabel);
    remarkLabel->setObjectName("readOnlyLabel");
    makeNote(*remarkLabel);
    parts->addWidget(remarkLabel);
    parts->addStretch(1);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    setShows(true, true);
}

void EditorTitle::showName(const std::string& name) {
    nameLabel->showText(name);
}

void EditorTitle::setShows(bool name, bool remark) {
    nameLabel->setVisible(name);
    remarkLabel->setVisible(remark && isReadOnly);
}

QSize EditorTitle::sizeHint() const {
    return {narrowest, QWidget::sizeHint().height()};
}

} // namespace tessaril
