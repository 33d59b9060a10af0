#include "windows/section_menu_box.h"

#include "windows/shown_text.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QKeyEvent>
#include <QStylePainter>
#include <QTimer>
#include <QWheelEvent>

#include <utility>

namespace tessaril {

namespace {

constexpr int boxWidth = 170;   // pixels
constexpr int widestItem = 400; // of the popup

} // namespace

SectionMenuBox::SectionMenuBox(handlers use) : user(std::move(use)) {
    setObjectName("sectionPicker");
    setAccessibleName("Section");
    setFixedWidth(boxWidth);
    connect(this, &QComboBox::activated, this,
            [this](int item) { user.select(static_cast<std::size_t>(item)); });
}

void SectionMenuBox::showSections(const std::vector<std::string>& titles, std::size_t current) {
    if (titles != shownTitles) {
        shownTitles = titles;
        clear();
        for (const std::string& title : titles) {
            const QString line = oneLine(title);
            addItem(fontMetrics().elidedText(line, Qt::ElideMiddle, widestItem));
            setItemData(count() - 1, toolTipText(line), Qt::ToolTipRole);
        }
    }
    setCurrentIndex(static_cast<int>(current));
    setToolTip(currentData(Qt::ToolTipRole).toString());
}

void SectionMenuBox::showPopup() {
    isOpen = true;
    QComboBox::showPopup();
}

void SectionMenuBox::hidePopup() {
    QComboBox::hidePopup();
    if (!std::exchange(isOpen, false)) return;
    // What was picked in it is told after this.
    QTimer::singleShot(0, this, [this] { user.leave(); });
}

void SectionMenuBox::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter ||
        event->key() == Qt::Key_Escape)
        return user.leave();
    if (event->key() == Qt::Key_Space && isSearching()) return searchOn();
    if (!event->text().isEmpty() && event->text().front().isPrint()) sinceTyped.start();
    QComboBox::keyPressEvent(event);
}

bool SectionMenuBox::isSearching() const {
    return sinceTyped.isValid() && !sinceTyped.hasExpired(QApplication::keyboardInputInterval());
}

/// By a blank, by which the box itself would open the menu.
void SectionMenuBox::searchOn() {
    sinceTyped.start();
    view()->setCurrentIndex(model()->index(currentIndex(), modelColumn(), rootModelIndex()));
    view()->keyboardSearch(" ");
    const int found = view()->currentIndex().row();
    if (found < 0 || found == currentIndex()) return;
    setCurrentIndex(found);
    user.select(static_cast<std::size_t>(found));
}

/// A turn that was meant for the code must not lead to another section.
void SectionMenuBox::wheelEvent(QWheelEvent* event) {
    event->ignore();
}

void SectionMenuBox::paintEvent(QPaintEvent*) {
    QStylePainter painter(this);
    QStyleOptionComboBox option;
    initStyleOption(&option);
    painter.drawComplexControl(QStyle::CC_ComboBox, option);
    const QRect place =
        style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this);
    option.currentText =
        fontMetrics().elidedText(option.currentText, Qt::ElideRight, place.width() - 4);
    painter.drawControl(QStyle::CE_ComboBoxLabel, option);
}

} // namespace tessaril
