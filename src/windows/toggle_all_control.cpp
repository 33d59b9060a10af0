#include "windows/toggle_all_control.h"

#include "windows/segment.h"

#include <QHBoxLayout>
#include <QToolButton>

namespace tessaril {

namespace {

QToolButton* named(QToolButton* button, const char* name, const QString& text,
                   const QString& toolTip) {
    button->setObjectName(name);
    button->setText(text);
    button->setToolTip(toolTip);
    button->setFocusPolicy(Qt::TabFocus);
    return button;
}

} // namespace

ToggleAllControl::ToggleAllControl(StyleListCommands& commands)
    : enableAll(
          named(new Segment(Qt::RightEdge), "enableAllSegment", "Enable All", "Enable all styles"))
    , disableAll(named(new Segment(Qt::LeftEdge), "disableAllSegment", "Disable All",
                       "Disable all styles"))
    , toggleAll(named(new QToolButton, "toggleOverflow", "Toggle All",
                      "Disable all styles, or enable all if most are disabled")) {
    setObjectName("toggleAllControl");
    auto* segments = new QHBoxLayout(this);
    segments->setContentsMargins(0, 0, 0, 0);
    segments->setSpacing(0);
    for (QToolButton* button : {enableAll, disableAll, toggleAll})
        segments->addWidget(button);
    QObject::connect(enableAll, &QToolButton::clicked, this,
                     [&commands] { commands.toggleAllClicked(0); });
    QObject::connect(disableAll, &QToolButton::clicked, this,
                     [&commands] { commands.toggleAllClicked(1); });
    QObject::connect(toggleAll, &QToolButton::clicked, this,
                     [&commands] { commands.toggleOverflow(); });
    setNarrow(false);
}

void ToggleAllControl::setNarrow(bool isNarrow) {
    enableAll->setVisible(!isNarrow);
    disableAll->setVisible(!isNarrow);
    toggleAll->setVisible(isNarrow);
}

} // namespace tessaril
