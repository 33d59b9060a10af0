#include "windows/dialog_buttons.h"

#include <QBoxLayout>
#include <QDialog>
#include <QDialogButtonBox>
#include <QPushButton>

namespace tessaril {

QPushButton* addDialogButtons(QDialog& dialog, QBoxLayout& below, const char* acceptName,
                              const QString& acceptTitle, const QString& rejectTitle) {
    auto* buttons = new QDialogButtonBox;
    QPushButton* accept = buttons->addButton(acceptTitle, QDialogButtonBox::AcceptRole);
    QPushButton* reject = buttons->addButton(rejectTitle, QDialogButtonBox::RejectRole);
    accept->setObjectName(acceptName);
    reject->setAutoDefault(false);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    below.addWidget(buttons);
    // Once it is within the dialog, which else forgets about it when the focus leaves it.
    accept->setDefault(true);
    return accept;
}

} // namespace tessaril
