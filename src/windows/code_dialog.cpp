#include "windows/code_dialog.h"

#include "windows/code_editor.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QScreen>
#include <QShortcut>

namespace tessaril {

namespace {

constexpr QSize comfortableSize(760, 560);

QPushButton* firstEnabled(const QDialogButtonBox& buttons) {
    for (QPushButton* button : buttons.findChildren<QPushButton*>())
        if (button->isEnabled()) return button;
    return nullptr;
}

} // namespace

void setUpCodeDialog(QDialog& dialog, CodeEditor& editor, QDialogButtonBox& buttons,
                     QPushButton& main) {
    editor.offerFindInWholeWindow();
    for (QAbstractButton* button : buttons.buttons())
        button->setIcon({});
    main.setDefault(true); // only now does the dialog hear of it
    QObject::connect(new QShortcut(Qt::Key_F6, &dialog), &QShortcut::activated, &dialog,
                     [&editor, &buttons, &main] {
                         QPushButton* button = main.isEnabled() ? &main : firstEnabled(buttons);
                         if (button && !buttons.isAncestorOf(buttons.window()->focusWidget()))
                             button->setFocus(Qt::TabFocusReason);
                         else
                             editor.focusEditor();
                     });
    QObject::connect(new QShortcut(QKeySequence("Ctrl+W"), &dialog), &QShortcut::activated, &dialog,
                     &QWidget::close);
    dialog.resize(comfortableSize.boundedTo(dialog.screen()->availableSize() * 9 / 10));
}

} // namespace tessaril
