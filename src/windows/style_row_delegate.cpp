#include "windows/style_row_delegate.h"

#include "windows/droplet.h"
#include "windows/line_icons.h"
#include "windows/shown_text.h"
#include "windows/spinner.h"
#include "windows/style_list_model.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QHelpEvent>
#include <QLineEdit>
#include <QPainter>
#include <QToolTip>

#include <algorithm>
#include <limits>

namespace tessaril {

namespace {

// In logical pixels.
constexpr int margin = 12;
constexpr int spacing = 12;
constexpr int iconPlace = 32;
constexpr int iconSize = 24;
constexpr int buttonSize = 30;
constexpr int buttonPicture = 18;
constexpr int verticalPadding = 9;
constexpr int lineGap = 2;
constexpr int editorPadding = 4;

constexpr qreal disabledIconOpacity = 0.3;
constexpr qreal unavailableOpacity = 0.35;
constexpr qreal lockedOpacity = 0.45;
// How much of the text's colour the weaker ones keep; on a selection more, for the same contrast.
struct strengths {
    qreal secondary;
    qreal tertiary;
};
constexpr strengths onBase{0.7, 0.55};
constexpr strengths onSelection{0.92, 0.78};

QStyle* styleOf(const QStyleOptionViewItem& option) {
    return option.widget ? option.widget->style() : QApplication::style();
}

int indicatorWidth(const QStyleOptionViewItem& option) {
    return styleOf(option)->pixelMetric(QStyle::PM_IndicatorWidth, &option, option.widget);
}

/// From left to right mirrored where the language asks for it.
QRect visual(const QStyleOptionViewItem& option, const QRect& logical) {
    return QStyle::visualRect(option.direction, option.rect, logical);
}

QRect iconRect(const QStyleOptionViewItem& option) {
    const int left = option.rect.left() + margin + indicatorWidth(option) + spacing;
    return visual(option,
                  QRect(left, option.rect.center().y() - iconPlace / 2 + 1, iconPlace, iconPlace));
}

QFont secondFont(const QFont& nameFont) {
    QFont smaller = nameFont;
    smaller.setPointSizeF(nameFont.pointSizeF() * 0.9);
    return smaller;
}

/// The text's colour, weakened towards its background.
QColor weakened(const QColor& text, const QColor& background, qreal strength) {
    const auto mix = [strength](int a, int b) {
        return static_cast<int>(a * strength + b * (1 - strength));
    };
    return QColor(mix(text.red(), background.red()), mix(text.green(), background.green()),
                  mix(text.blue(), background.blue()));
}

struct rowColors {
    QColor name;
    QColor second;
    QColor buttons;
};

rowColors colorsOf(const QStyleOptionViewItem& option, bool isEnabled) {
    const bool selected = option.state & QStyle::State_Selected;
    const QPalette::ColorGroup group =
        option.state & QStyle::State_Active ? QPalette::Active : QPalette::Inactive;
    const QColor text =
        option.palette.color(group, selected ? QPalette::HighlightedText : QPalette::Text);
    const QColor background =
        option.palette.color(group, selected ? QPalette::Highlight : QPalette::Base);
    const strengths& strength = selected ? onSelection : onBase;
    const QColor secondary = weakened(text, background, strength.secondary);
    const QColor tertiary = weakened(text, background, strength.tertiary);
    if (!isEnabled) return {tertiary, tertiary, secondary};
    return {text, secondary, secondary};
}

void paintLine(QPainter& painter, const QRect& place, const QFont& font, const QColor& color,
               const QString& text) {
    painter.setFont(font);
    painter.setPen(color);
    painter.drawText(place, Qt::AlignLeading | Qt::AlignVCenter | Qt::TextSingleLine,
                     QFontMetrics(font).elidedText(text, Qt::ElideRight, place.width()));
}

void paintIcon(QPainter& painter, const QStyleOptionViewItem& option, const QModelIndex& index) {
    QRect place(0, 0, iconSize, iconSize);
    place.moveCenter(iconRect(option).center());
    const QPixmap picture = index.data(Qt::DecorationRole).value<QPixmap>();
    if (picture.isNull()) return paintDroplet(painter, place);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(place, picture);
}

bool isBeingEdited(const QStyleOptionViewItem& option, const QModelIndex& index) {
    const auto* view = qobject_cast<const QAbstractItemView*>(option.widget);
    return view && view->indexWidget(index);
}

bool isChecking(const QModelIndex& index) {
    return index.data(StyleListModel::updateStatusRole) == qtText(updateStatuses::checking);
}

} // namespace

StyleRowDelegate::StyleRowDelegate(const StyleListCommands& listCommands, RowMotion& rowMotion,
                                   QObject* parent)
    : QStyledItemDelegate(parent), commands(listCommands), motion(rowMotion) {}

bool StyleRowDelegate::has(rowControl control, const QModelIndex& index) const {
    switch (control) {
    case rowControl::checkBox:
        return true;
    case rowControl::update:
        return commands.availableRoutes().updateIndividual &&
               !index.data(StyleListModel::isCustomRole).toBool();
    case rowControl::properties:
        return static_cast<bool>(commands.availableRoutes().openStyleProps);
    case rowControl::none:
        break;
    }
    return false;
}

QRect StyleRowDelegate::controlRect(rowControl control, const QStyleOptionViewItem& option) {
    const QRect& row = option.rect;
    if (control == rowControl::checkBox) {
        const int height =
            styleOf(option)->pixelMetric(QStyle::PM_IndicatorHeight, &option, option.widget);
        const QPoint corner(row.left() + margin, row.top() + (row.height() - height) / 2);
        return visual(option, QRect(corner, QSize(indicatorWidth(option), height)));
    }
    if (control == rowControl::none) return {};
    const int fromRight = control == rowControl::properties ? 1 : 2;
    return visual(option, QRect(row.right() - margin / 2 - fromRight * buttonSize,
                                row.center().y() - buttonSize / 2 + 1, buttonSize, buttonSize));
}

rowControl StyleRowDelegate::controlAt(const QPoint& place, const QStyleOptionViewItem& option,
                                       const QModelIndex& index) const {
    if (isChecking(index)) return rowControl::none;
    for (const rowControl control :
         {rowControl::checkBox, rowControl::update, rowControl::properties}) {
        // The box itself is small to hit.
        const int reach = control == rowControl::checkBox ? 6 : 0;
        const QRect hit = controlRect(control, option).adjusted(-reach, -reach, reach, reach);
        if (has(control, index) && hit.contains(place)) return control;
    }
    return rowControl::none;
}

void StyleRowDelegate::setPointedAt(const QModelIndex& index, rowControl control,
                                    bool isButtonDown) {
    pointedRow = index;
    pointed = control;
    isPressed = isButtonDown;
}

QRect StyleRowDelegate::nameRect(const QStyleOptionViewItem& option,
                                 const QModelIndex& index) const {
    const int nameHeight = QFontMetrics(option.font).height();
    const int secondHeight = QFontMetrics(secondFont(option.font)).height();
    const int left =
        option.rect.left() + margin + indicatorWidth(option) + spacing + iconPlace + spacing;
    // The names of all rows end at one place, also beside those without an update button.
    const bool hasUpdates = static_cast<bool>(commands.availableRoutes().updateIndividual);
    const int buttons = hasUpdates ? 2 : has(rowControl::properties, index) ? 1 : 0;
    const int end = option.rect.right() - margin - buttons * buttonSize;
    const int top =
        option.rect.top() + (option.rect.height() - nameHeight - lineGap - secondHeight) / 2;
    return visual(option, QRect(left, top, std::max(0, end - left), nameHeight));
}

void StyleRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                             const QModelIndex& index) const {
    const bool isEnabled = index.data(Qt::CheckStateRole) == Qt::Checked;
    const qreal opacity = isDimmed ? lockedOpacity : 1;
    const rowColors colors = colorsOf(option, isEnabled);
    painter->save();
    styleOf(option)->drawPrimitive(QStyle::PE_PanelItemViewItem, &option, painter, option.widget);

    painter->setOpacity(opacity * (isEnabled ? 1 : disabledIconOpacity));
    paintIcon(*painter, option, index);
    painter->setOpacity(opacity);
    paintCheckBox(*painter, option, index);

    const QRect name = nameRect(option, index);
    const QFont smaller = secondFont(option.font);
    if (!isBeingEdited(option, index))
        paintLine(*painter, name, option.font, colors.name, index.data(Qt::DisplayRole).toString());
    const QRect second(name.left(), name.bottom() + 1 + lineGap, name.width(),
                       QFontMetrics(smaller).height());
    const qint64 id = index.data(StyleListModel::idRole).toLongLong();
    painter->setOpacity(opacity * motion.secondLineOpacity(id));
    paintLine(*painter, second, smaller, colors.second,
              index.data(StyleListModel::secondLineRole).toString());
    painter->setOpacity(opacity);

    paintButton(*painter, option, index, rowControl::update, colors.buttons);
    paintButton(*painter, option, index, rowControl::properties, colors.buttons);

    // A frame of its own: the style's is lost on a selected row.
    if (option.state & QStyle::State_HasFocus) {
        painter->setPen(colors.second);
        painter->drawRect(option.rect.adjusted(2, 2, -3, -3));
    }
    painter->restore();
}

void StyleRowDelegate::paintCheckBox(QPainter& painter, const QStyleOptionViewItem& option,
                                     const QModelIndex& index) const {
    QStyleOptionViewItem box = option;
    box.rect = controlRect(rowControl::checkBox, option);
    const bool isOn = index.data(Qt::CheckStateRole) == Qt::Checked;
    const bool isPointedAt = pointedRow == index && pointed == rowControl::checkBox;
    box.state.setFlag(QStyle::State_HasFocus, false);
    box.state.setFlag(isOn ? QStyle::State_On : QStyle::State_Off);
    box.state.setFlag(QStyle::State_Enabled, !isChecking(index));
    box.state.setFlag(QStyle::State_MouseOver, isPointedAt);
    box.state.setFlag(QStyle::State_Sunken, isPointedAt && isPressed);
    painter.save();
    if (isChecking(index)) painter.setOpacity(painter.opacity() * unavailableOpacity);
    styleOf(option)->drawPrimitive(QStyle::PE_IndicatorItemViewItemCheck, &box, &painter,
                                   option.widget);
    painter.restore();
}

void StyleRowDelegate::paintButton(QPainter& painter, const QStyleOptionViewItem& option,
                                   const QModelIndex& index, rowControl control,
                                   const QColor& color) const {
    if (!has(control, index)) return;
    const QRect place = controlRect(control, option);
    const bool unavailable = isChecking(index);
    if (unavailable && control == rowControl::update)
        return paintSpinner(painter, place, buttonPicture, motion.spinnerTime(), color);

    painter.save();
    if (!unavailable && pointedRow == index && pointed == control) {
        QColor ground = color;
        ground.setAlphaF(isPressed ? 0.32F : 0.16F);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(ground);
        painter.drawRoundedRect(place.adjusted(1, 1, -1, -1), 5, 5);
    }
    if (unavailable) painter.setOpacity(painter.opacity() * unavailableOpacity);
    QRectF picture(0, 0, buttonPicture, buttonPicture);
    picture.moveCenter(QRectF(place).center());
    paintLineIcon(painter, picture,
                  control == rowControl::update ? lineIcon::update : lineIcon::properties, color);
    painter.restore();
}

QSize StyleRowDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const {
    const int text = QFontMetrics(option.font).height() + lineGap +
                     QFontMetrics(secondFont(option.font)).height();
    return {0, std::max(iconPlace, text) + 2 * verticalPadding};
}

QWidget* StyleRowDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem&,
                                        const QModelIndex&) const {
    auto* field = new QLineEdit(parent);
    field->setObjectName("nameEditor");
    field->setAccessibleName("Name");
    field->setMaxLength(std::numeric_limits<int>::max()); // or a long name would be cut
    return field;
}

void StyleRowDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const {
    // Called again whenever the row shows something new, such as its icon: what is being typed
    // stays.
    auto* field = static_cast<QLineEdit*>(editor);
    const QString name = index.data(Qt::EditRole).toString();
    if (!field->isModified() && field->text() != name) field->setText(name);
}

void StyleRowDelegate::setModelData(QWidget* editor, QAbstractItemModel*,
                                    const QModelIndex& index) const {
    const auto* field = static_cast<QLineEdit*>(editor);
    if (field->isModified()) emit nameEdited(index, field->text());
}

void StyleRowDelegate::updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                                            const QModelIndex& index) const {
    // A little above the name, so that the second line stays in sight.
    editor->setGeometry(nameRect(option, index)
                            .adjusted(-editorPadding, -editorPadding - lineGap, editorPadding,
                                      editorPadding - lineGap));
}

bool StyleRowDelegate::helpEvent(QHelpEvent* event, QAbstractItemView* view,
                                 const QStyleOptionViewItem& option, const QModelIndex& index) {
    if (event->type() != QEvent::ToolTip || !index.isValid()) return false;
    const rowControl control = controlAt(event->pos(), option, index);
    const QRect nameLine = nameRect(option, index);
    const QString name = index.data(Qt::DisplayRole).toString();
    const bool isCut = QFontMetrics(option.font).horizontalAdvance(name) > nameLine.width();
    QString text;
    QRect place = controlRect(control, option);
    switch (control) {
    case rowControl::checkBox:
        text = index.data(Qt::CheckStateRole) == Qt::Checked ? "Disable" : "Enable";
        break;
    case rowControl::update:
        text = "Check for Update";
        break;
    case rowControl::properties:
        text = "Properties";
        break;
    case rowControl::none:
        if (isCut) text = toolTipText(name);
        place = option.rect;
        break;
    }
    QToolTip::showText(event->globalPos(), text, view->viewport(), place);
    return true;
}

} // namespace tessaril
