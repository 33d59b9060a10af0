#include "windows/pane_form.h"

#include <QFormLayout>
#include <QLabel>
#include <QSpacerItem>

namespace tessaril {

QFormLayout* makePaneForm(QWidget& pane) {
    constexpr int margin = 18;
    auto* form = new QFormLayout(&pane);
    form->setContentsMargins(margin, margin, margin, margin);
    form->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
    form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    return form;
}

void addGap(QFormLayout& form) {
    constexpr int gap = 8;
    form.addItem(new QSpacerItem(0, gap));
}

void makeNote(QLabel& label) {
    label.setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    label.setForegroundRole(QPalette::PlaceholderText);
}

} // namespace tessaril
