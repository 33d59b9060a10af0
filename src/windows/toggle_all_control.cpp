#include "windows/toggle_all_control.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QStyleOptionToolButton>
#include <QStylePainter>
#include <QToolButton>

namespace tessaril {

namespace {

/// One of two buttons that share a side: its frame goes on behind that side, cut off, and a line
/// parts the two.
class Segment : public QToolButton {
public:
    explicit Segment(Qt::Edge sharedSide) : shared(sharedSide) {}

protected:
    void paintEvent(QPaintEvent*) override {
        constexpr int beyond = 6;
        const bool isLeft = shared == Qt::RightEdge;
        QStylePainter painter(this);
        QStyleOptionToolButton option;
        initStyleOption(&option);
        QStyleOptionToolButton frame = option;
        frame.text.clear();
        frame.rect.adjust(isLeft ? 0 : -beyond, 0, isLeft ? beyond : 0, 0);
        frame.state.setFlag(QStyle::State_HasFocus, false);
        painter.drawComplexControl(QStyle::CC_ToolButton, frame);
        painter.drawControl(QStyle::CE_ToolButtonLabel, option);
        if (!isLeft) {
            QColor line = palette().color(QPalette::ButtonText);
            line.setAlphaF(0.25F);
            painter.fillRect(QRect(0, 3, 1, height() - 6), line);
        }
        if (option.state & QStyle::State_HasFocus) {
            QStyleOptionFocusRect focus;
            focus.QStyleOption::operator=(option);
            focus.rect.adjust(3, 3, -3, -3);
            painter.drawPrimitive(QStyle::PE_FrameFocusRect, focus);
        }
    }

private:
    Qt::Edge shared;
};

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
