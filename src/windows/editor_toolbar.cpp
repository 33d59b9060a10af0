#include "windows/editor_toolbar.h"

#include "windows/editor_title.h"
#include "windows/section_menu_box.h"
#include "windows/segment.h"

#include <QAction>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QVBoxLayout>

#include <utility>

namespace tessaril {

namespace {

// In pixels.
constexpr int normalIcon = 22;
constexpr int smallIcon = 16;
constexpr int labelLift = 4; // onto the line of the other labels

} // namespace

EditorToolbar::EditorToolbar(const editorToolbarCommands& commands, SectionMenuBox& sectionMenu,
                             bool isReadOnly, QWidget* parent)
    : QToolBar("Toolbar", parent)
    , title(new EditorTitle(isReadOnly))
    , addRemoveLabel(new QLabel("Add/Remove Sections")) {
    setObjectName("editorToolbar");
    setMovable(false);
    setContextMenuPolicy(Qt::PreventContextMenu);
    addWidget(&sectionMenu);
    addWidget(makeAddRemove(commands));
    addCommand(commands.duplicateSection);
    addWidget(title);
    addCommand(commands.rules);
    addCommand(commands.metadata);
    addCommand(commands.beautify);
    makeExport(commands);
}

void EditorToolbar::addCommand(QAction* action) {
    addAction(action);
    widgetForAction(action)->setFocusPolicy(Qt::TabFocus);
}

QWidget* EditorToolbar::makeAddRemove(const editorToolbarCommands& commands) {
    auto* segments = new QHBoxLayout;
    segments->setSpacing(0);
    segments->addStretch();
    for (const auto& [sharedSide, action] : {std::pair(Qt::RightEdge, commands.addSection),
                                             std::pair(Qt::LeftEdge, commands.deleteSection)}) {
        auto* segment = new Segment(sharedSide);
        segment->setDefaultAction(action);
        segment->setToolButtonStyle(Qt::ToolButtonIconOnly);
        segment->setAutoRaise(true);
        segment->setFocusPolicy(Qt::TabFocus);
        connect(this, &QToolBar::iconSizeChanged, segment, &QToolButton::setIconSize);
        segments->addWidget(segment);
    }
    segments->addStretch();
    addRemoveLabel->setAlignment(Qt::AlignCenter);
    addRemoveLabel->setContentsMargins(0, 0, 0, labelLift);

    auto* control = new QWidget;
    auto* parts = new QVBoxLayout(control);
    parts->setContentsMargins(4, 0, 4, 0);
    parts->setSpacing(0);
    parts->addLayout(segments);
    parts->addWidget(addRemoveLabel);
    control->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
    return control;
}

void EditorToolbar::makeExport(const editorToolbarCommands& commands) {
    auto* command = new QAction(commands.exportStyle->icon(), "Export", this);
    auto* menu = new QMenu(this);
    menu->addActions({commands.exportStyle, commands.exportSection});
    command->setMenu(menu);
    addCommand(command);
    static_cast<QToolButton*>(widgetForAction(command))->setPopupMode(QToolButton::InstantPopup);
}

void EditorToolbar::setAppearance(const windowAppearance& wanted) {
    appearance = wanted;
    const int side = wanted.toolbar == toolbarStyle::compact ? smallIcon : normalIcon;
    setIconSize({side, side});
    const bool isAbove = wanted.toolbar == toolbarStyle::expanded;
    title->setShows(wanted.showsTitle && !isAbove, !isAbove);
    if (labelledWidth > 0) fit();
}

void EditorToolbar::showName(const std::string& name) {
    title->showName(name);
}

void EditorToolbar::setLabelled(bool isLabelled) {
    setToolButtonStyle(isLabelled ? Qt::ToolButtonTextUnderIcon : Qt::ToolButtonIconOnly);
    addRemoveLabel->setVisible(isLabelled);
}

void EditorToolbar::fit() {
    setLabelled(appearance.toolbar == toolbarStyle::expanded && width() >= labelledWidth);
}

void EditorToolbar::showEvent(QShowEvent* event) {
    QToolBar::showEvent(event);
    setLabelled(true);
    labelledWidth = sizeHint().width();
    setLabelled(false);
    window()->setMinimumWidth(sizeHint().width());
    fit();
}

void EditorToolbar::resizeEvent(QResizeEvent* event) {
    QToolBar::resizeEvent(event);
    if (labelledWidth > 0) fit();
}

} // namespace tessaril
