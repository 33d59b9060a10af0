#include "windows/list_toolbar.h"

#include "windows/filter_field.h"
#include "windows/toggle_all_control.h"

#include <QAction>

namespace tessaril {

namespace {

constexpr int narrowestFilter = 130;
constexpr int widestFilter = 320;

} // namespace

ListToolbar::ListToolbar(const std::vector<QAction*>& commandActions,
                         StyleListCommands& listCommands, QWidget* parent)
    : QToolBar("Toolbar", parent)
    , filter(new FilterField)
    , toggleAll(new ToggleAllControl(listCommands)) {
    setMovable(false);
    setContextMenuPolicy(Qt::PreventContextMenu);
    setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    for (QAction* action : commandActions) {
        addAction(action);
        // The keyboard reaches the toolbar as it does the list.
        widgetForAction(action)->setFocusPolicy(Qt::TabFocus);
    }
    auto* space = new QWidget;
    space->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    addWidget(space);
    addWidget(toggleAll);
    auto* gap = new QWidget;
    gap->setFixedWidth(8);
    addWidget(gap);
    filter->setMinimumWidth(narrowestFilter);
    filter->setMaximumWidth(widestFilter);
    addWidget(filter);
}

void ListToolbar::setHasStyles(bool hasStyles) {
    toggleAll->setEnabled(hasStyles);
    filter->setEnabled(hasStyles);
}

void ListToolbar::take(shape wanted) {
    current = wanted;
    toggleAll->setNarrow(wanted != shape::full);
    setToolButtonStyle(wanted == shape::iconsOnly ? Qt::ToolButtonIconOnly
                                                  : Qt::ToolButtonTextBesideIcon);
}

void ListToolbar::measure() {
    // The field asks for more than it needs.
    const int spare = filter->sizeHint().width() - narrowestFilter;
    const auto widthOf = [&](shape measured) {
        take(measured);
        return sizeHint().width() - spare;
    };
    window()->setMinimumWidth(widthOf(shape::iconsOnly));
    oneToggle = widthOf(shape::oneToggle);
    full = widthOf(shape::full);
}

void ListToolbar::fit() {
    const shape wanted = width() >= full        ? shape::full
                         : width() >= oneToggle ? shape::oneToggle
                                                : shape::iconsOnly;
    if (wanted != current) take(wanted);
}

void ListToolbar::showEvent(QShowEvent* event) {
    QToolBar::showEvent(event);
    measure();
    fit();
}

void ListToolbar::resizeEvent(QResizeEvent* event) {
    QToolBar::resizeEvent(event);
    if (full > 0) fit();
}

} // namespace tessaril
