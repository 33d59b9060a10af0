#include "windows/rule_delegate.h"

#include "windows/rule_examples.h"
#include "windows/rule_table_model.h"
#include "windows/shown_text.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QHelpEvent>
#include <QLineEdit>
#include <QPainter>
#include <QPersistentModelIndex>
#include <QToolTip>

#include <limits>
#include <optional>

namespace tessaril {

namespace {

// In logical pixels.
constexpr int menuMargin = 3;
constexpr int textMargin = 6;

constexpr qsizetype mostInToolTip = 2000; // characters

bool isType(const QModelIndex& index) {
    return index.column() == RuleTableModel::typeColumn;
}

QStyle* styleOf(const QStyleOptionViewItem& option) {
    return option.widget ? option.widget->style() : QApplication::style();
}

QRect menuRect(const QStyleOptionViewItem& option) {
    return option.rect.adjusted(menuMargin, menuMargin, -menuMargin, -menuMargin);
}

QRect textRect(const QStyleOptionViewItem& option) {
    return option.rect.adjusted(textMargin, 0, -textMargin, 0);
}

QStyleOptionComboBox menuOption(const QStyleOptionViewItem& option, const QString& title) {
    QStyleOptionComboBox menu;
    menu.rect = menuRect(option);
    menu.state = option.state & (QStyle::State_Enabled | QStyle::State_Active);
    menu.direction = option.direction;
    menu.fontMetrics = option.fontMetrics;
    menu.palette = option.palette;
    menu.editable = false;
    menu.frame = true;
    const QRect field = styleOf(option)->subControlRect(QStyle::CC_ComboBox, &menu,
                                                        QStyle::SC_ComboBoxEditField, nullptr);
    menu.currentText = option.fontMetrics.elidedText(title, Qt::ElideRight, field.width());
    return menu;
}

/// Ends the editing as soon as the menu closes, whatever was chosen.
class TypeMenu : public QComboBox {
public:
    using QComboBox::QComboBox;

    void hidePopup() override {
        QComboBox::hidePopup();
        // The choice comes after this. The focus gone, the delegate closes its editor.
        QMetaObject::invokeMethod(
            this, [this] { parentWidget()->setFocus(); }, Qt::QueuedConnection);
    }
};

class RuleField : public QLineEdit {
public:
    RuleField(QWidget* parent, const QModelIndex& index, std::optional<std::string> rule)
        : QLineEdit(parent), place(index), before(std::move(rule)) {
        setFrame(false);
        constexpr int own = 2; // which the field adds
        setTextMargins(textMargin - own, 0, textMargin - own, 0);
    }

    const QPersistentModelIndex place;
    const std::optional<std::string> before; ///< the rule when the editing began

protected:
    /// With a line around it: on the table's ground nothing else says where it ends.
    void paintEvent(QPaintEvent* event) override {
        QLineEdit::paintEvent(event);
        QPainter painter(this);
        painter.setPen(palette().color(QPalette::Highlight));
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }
};

} // namespace

RuleDelegate::RuleDelegate(RuleTableModel& tableModel, QObject* parent)
    : QStyledItemDelegate(parent), model(tableModel) {}

QSize RuleDelegate::typeSize(const QWidget& view) {
    QComboBox menu;
    menu.setFont(view.font());
    for (const std::string_view type : ruleTypes)
        menu.addItem(qtText(type));
    return menu.sizeHint().grownBy({menuMargin, menuMargin, menuMargin, menuMargin});
}

// Drawing

void RuleDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                         const QModelIndex& index) const {
    const QStyle& style = *styleOf(option);
    style.drawPrimitive(QStyle::PE_PanelItemViewItem, &option, painter, option.widget);
    const bool isSelected = option.state & QStyle::State_Selected;
    const QColor color = option.palette.color(
        option.state & QStyle::State_Active ? QPalette::Active : QPalette::Inactive,
        isSelected ? QPalette::HighlightedText : QPalette::Text);
    const QString text = index.data().toString();
    painter->save();
    painter->setFont(option.font);
    painter->setPen(color);
    // Where nothing can be chosen, a menu that is greyed out would only be hard to read.
    if (isType(index) && !model.isReadOnly()) {
        const QStyleOptionComboBox menu = menuOption(option, text);
        style.drawComplexControl(QStyle::CC_ComboBox, &menu, painter, nullptr);
        style.drawControl(QStyle::CE_ComboBoxLabel, &menu, painter, nullptr);
    } else {
        const QRect place = textRect(option);
        painter->drawText(place, Qt::AlignLeading | Qt::AlignVCenter | Qt::TextSingleLine,
                          option.fontMetrics.elidedText(text, Qt::ElideRight, place.width()));
    }
    // A frame of its own: the style's is lost on a selected row.
    if (option.state & QStyle::State_HasFocus) {
        painter->setPen(color);
        painter->drawRect(option.rect.adjusted(1, 1, -2, -2));
    }
    painter->restore();
}

bool RuleDelegate::helpEvent(QHelpEvent* event, QAbstractItemView* view,
                             const QStyleOptionViewItem& option, const QModelIndex& index) {
    if (event->type() != QEvent::ToolTip || !index.isValid()) return false;
    const QString shown = index.data().toString();
    const bool isCut = isType(index)
                           ? menuOption(option, shown).currentText != shown
                           : option.fontMetrics.horizontalAdvance(shown) > textRect(option).width();
    QString text;
    if (isCut) {
        const typedRule& row = model.rule(index);
        const QString whole =
            oneLine(isType(index) ? row.type : row.rule.value_or(""), mostInToolTip);
        text = toolTipText(whole);
    }
    QToolTip::showText(event->globalPos(), text, view->viewport(), option.rect);
    return true;
}

// Editing

QWidget* RuleDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem&,
                                    const QModelIndex& index) const {
    return isType(index) ? makeTypeMenu(parent, index) : makeRuleField(parent, index);
}

QWidget* RuleDelegate::makeTypeMenu(QWidget* parent, const QModelIndex& index) const {
    auto* menu = new TypeMenu(parent);
    menu->setObjectName("typeMenu");
    menu->setAccessibleName("Rule type");
    for (const std::string_view type : ruleTypes)
        menu->addItem(qtText(type));
    connect(menu, &QComboBox::activated, menu,
            [this, menu, place = QPersistentModelIndex(index)](int chosen) {
                model.setData(place, menu->itemText(chosen), Qt::EditRole);
            });
    return menu;
}

QWidget* RuleDelegate::makeRuleField(QWidget* parent, const QModelIndex& index) const {
    const typedRule& row = model.rule(index);
    auto* field = new RuleField(parent, index, row.rule);
    field->setObjectName("ruleField");
    field->setAccessibleName("Rule");
    field->setMaxLength(std::numeric_limits<int>::max()); // what is pasted is never cut in silence
    field->setPlaceholderText(ruleExample(row.type));
    connect(field, &QLineEdit::textChanged, field, [this, field](const QString& text) {
        model.setData(field->place, text, Qt::EditRole);
    });
    return field;
}

void RuleDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const {
    // Called again after every change that the editor itself made.
    const QString text = index.data(Qt::EditRole).toString();
    if (auto* menu = qobject_cast<QComboBox*>(editor)) {
        menu->setCurrentIndex(menu->findText(text));
        menu->setPlaceholderText(index.data().toString()); // of none of the types
    } else if (auto* field = qobject_cast<QLineEdit*>(editor); field && field->text() != text) {
        field->setText(text);
    }
}

void RuleDelegate::setModelData(QWidget*, QAbstractItemModel*, const QModelIndex&) const {
    // It is there already; so an editor that was only opened and closed writes nothing.
}

void RuleDelegate::updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                                        const QModelIndex& index) const {
    editor->setGeometry(isType(index) ? menuRect(option) : option.rect);
}

bool RuleDelegate::eventFilter(QObject* editor, QEvent* event) {
    auto* field = dynamic_cast<RuleField*>(editor);
    if (!field || !field->place.isValid() || event->type() != QEvent::KeyPress)
        return QStyledItemDelegate::eventFilter(editor, event);
    switch (static_cast<QKeyEvent*>(event)->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        // Goes no further, to the window's default button.
        emit closeEditor(field, NoHint);
        return true;
    case Qt::Key_Escape:
        if (model.rule(field->place).rule != field->before)
            model.setRule(field->place, field->before.value_or(""));
        break;
    default:
        break;
    }
    return QStyledItemDelegate::eventFilter(editor, event);
}

} // namespace tessaril
