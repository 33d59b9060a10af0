#include "windows/editor_title.h"

#include "windows/elided_label.h"
#include "windows/pane_form.h"

#include <QHBoxLayout>

namespace tessaril {

namespace {

constexpr int narrowest = 80; // pixels

} // namespace

EditorTitle::EditorTitle(bool isReadOnly) : nameLabel(new ElidedLabel) {
    nameLabel->setObjectName("styleNameLabel");
    QFont bold = nameLabel->font();
    bold.setBold(true);
    nameLabel->setFont(bold);

    auto* parts = new QHBoxLayout(this);
    parts->setContentsMargins(8, 0, 8, 0);
    parts->addStretch(1);
    parts->addWidget(nameLabel);
    if (isReadOnly) {
        auto* remark = new QLabel("Read-only");
        remark->setObjectName("readOnlyLabel");
        makeNote(*remark);
        parts->addWidget(remark);
    }
    parts->addStretch(1);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
}

void EditorTitle::showName(const std::string& name) {
    nameLabel->showText(name);
}

void EditorTitle::setShowsName(bool shows) {
    nameLabel->setVisible(shows);
}

QSize EditorTitle::sizeHint() const {
    return {narrowest, QWidget::sizeHint().height()};
}

} // namespace tessaril
