#include "windows/code_dialog.h"

#include "windows/code_editor.h"

#include <QAction>
#include <QDialog>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QScreen>
#include <QShortcut>

namespace tessaril {

namespace {

constexpr QSize comfortableSize(760, 560);

/// The default button where that can be pressed, else the first one that can.
QPushButton* buttonToReach(const QDialogButtonBox& buttons) {
    QPushButton* reached = nullptr;
    for (QPushButton* button : buttons.findChildren<QPushButton*>())
        if (button->isEnabled() && (!reached || button->isDefault())) reached = button;
    return reached;
}

} // namespace

void setUpCodeDialog(QDialog& dialog, CodeEditor& editor, QDialogButtonBox& buttons) {
    for (const textFinderAction tag :
         {textFinderAction::showFindInterface, textFinderAction::showReplaceInterface,
          textFinderAction::nextMatch, textFinderAction::previousMatch})
        editor.findAction(tag)->setShortcutContext(Qt::WindowShortcut);

    for (QAbstractButton* button : buttons.buttons())
        button->setIcon({});
    QObject::connect(new QShortcut(Qt::Key_F6, &dialog), &QShortcut::activated, &dialog,
                     [&editor, &buttons] {
                         QPushButton* button = buttonToReach(buttons);
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
