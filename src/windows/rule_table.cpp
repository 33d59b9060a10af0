#include "windows/rule_table.h"

#include "model/rule_types.h"
#include "windows/pane_form.h"
#include "windows/row_slide.h"
#include "windows/rule_table_model.h"
#include "windows/rule_table_view.h"
#include "windows/shown_text.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QScrollBar>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

namespace tessaril {

RuleTable::RuleTable(TypedRules& rules, QWidget* parent)
    : QWidget(parent)
    , model(new RuleTableModel(rules, this))
    , view(new RuleTableView(*model))
    , slide(new RowSlide(*view->viewport()))
    , emptyNote(new QLabel)
    , addRuleButton(new QToolButton)
    , removeRuleButton(new QToolButton) {
    setFocusProxy(view);
    setFocusPolicy(Qt::StrongFocus); // or a mnemonic would not lead here
    makeNote(*emptyNote);
    emptyNote->setObjectName("emptyNote");
    emptyNote->setTextFormat(Qt::PlainText);
    emptyNote->setAlignment(Qt::AlignCenter);
    emptyNote->setWordWrap(true);
    emptyNote->setAttribute(Qt::WA_TransparentForMouseEvents);
    auto* inside = new QVBoxLayout(view->viewport());
    inside->addWidget(emptyNote);
    makeButtons();

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(addRuleButton);
    buttons->addWidget(removeRuleButton);
    buttons->addStretch();
    auto* parts = new QVBoxLayout(this);
    parts->setContentsMargins(0, 0, 0, 0);
    parts->addWidget(view, 1);
    parts->addLayout(buttons);

    connect(view, &RuleTableView::removeWanted, this, &RuleTable::removeSelected);
    connect(view, &RuleTableView::selectionTurned, this, &RuleTable::showRows);
    connect(view->verticalScrollBar(), &QScrollBar::valueChanged, slide, &RowSlide::stop);
    showRows();
}

void RuleTable::makeButtons() {
    addRuleButton->setObjectName("addRuleButton");
    addRuleButton->setText("&Add");
    addRuleButton->setPopupMode(QToolButton::MenuButtonPopup);
    addRuleButton->setEnabled(!model->isReadOnly());
    addRuleButton->installEventFilter(this);
    auto* menu = new QMenu(addRuleButton);
    for (const std::string_view type : ruleTypes)
        menu->addAction(qtText(type), this, [this, type] { add(type); });
    addRuleButton->setMenu(menu);
    removeRuleButton->setObjectName("removeRuleButton");
    removeRuleButton->setText("&Remove");
    connect(addRuleButton, &QToolButton::clicked, this, [this] { add(domainRule); });
    connect(removeRuleButton, &QToolButton::clicked, this, &RuleTable::removeSelected);
}

void RuleTable::setNoteWithoutRules(const QString& note) {
    emptyNote->setText(note);
}

void RuleTable::add(std::string_view type) {
    view->setFocus(); // closes an open editor, whose text is in its row
    if (!model->add(type)) return;
    const int row = model->rowCount() - 1;
    view->select(row, RuleTableModel::ruleColumn);
    view->editRule(row);
    const QModelIndex added = model->index(row, RuleTableModel::ruleColumn);
    slide->slideIn(view->visualRect(added));
}

void RuleTable::removeSelected() {
    const int row = view->selectedRow();
    if (row < 0 || model->isReadOnly()) return;
    if (view->isAncestorOf(focusWidget())) view->setFocus(); // closes an open editor
    const auto column = RuleTableModel::column(view->currentIndex().column());
    const QRect place =
        view->visualRect(model->index(row, RuleTableModel::typeColumn))
            .united(view->visualRect(model->index(row, RuleTableModel::ruleColumn)));
    const int scrolled = view->verticalScrollBar()->value();
    slide->keep(place);
    model->remove(row);
    if (model->rowCount() > 0) view->select(std::min(row, model->rowCount() - 1), column);
    showRows();
    // Where the whole table moved, the rows below did not.
    if (view->verticalScrollBar()->value() == scrolled) slide->slideOut();
}

void RuleTable::showRows() {
    emptyNote->setVisible(model->rowCount() == 0);
    const bool canRemove = !model->isReadOnly() && view->selectedRow() >= 0;
    // One that goes grey under the focus would pass it on to a neighbour, for the next key press.
    if (!canRemove && removeRuleButton->hasFocus()) view->setFocus();
    removeRuleButton->setEnabled(canRemove);
}

/// A button with a menu beside it has no key for the menu.
bool RuleTable::eventFilter(QObject* object, QEvent* event) {
    const bool isDown =
        event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Down;
    if (object != addRuleButton || !isDown) return QWidget::eventFilter(object, event);
    addRuleButton->showMenu();
    return true;
}

void RuleTable::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    slide->stop();
}

} // namespace tessaril
