#include "windows/find_bar.h"

#include "windows/shown_text.h"

#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

namespace tessaril {

namespace {

constexpr int margin = 4;
constexpr int narrowestField = 60;
constexpr int buttonInset = 12;

bool isReturn(int key) {
    return key == Qt::Key_Return || key == Qt::Key_Enter;
}

QString textOf(const findReport& report, bool searches) {
    if (report.replaced) return QString("%1 replaced").arg(*report.replaced);
    if (!searches) return {};
    if (report.matches == 0) return "Not found";
    if (report.notFound) return "No more";
    if (report.current)
        return QString(report.wrapped ? "%1 of %2, wrapped" : "%1 of %2")
            .arg(*report.current + 1)
            .arg(report.matches);
    return report.matches == 1 ? QString("1 match") : QString("%1 matches").arg(report.matches);
}

QHBoxLayout* layOutRow(QWidget* row) {
    auto* columns = new QHBoxLayout(row);
    columns->setContentsMargins(0, 0, 0, 0);
    columns->setSpacing(margin);
    return columns;
}

} // namespace

FindBar::FindBar(TextFinder& ownFinder, QWidget* parent)
    : QFrame(parent)
    , finder(ownFinder)
    , findRow(new QWidget)
    , replaceRow(new QWidget)
    , findField(new QLineEdit)
    , replaceField(new QLineEdit)
    , matchCount(new QLabel)
    , matchCase(new QCheckBox("Match &Case")) {
    setObjectName("findBar");
    setAccessibleName("Find");
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::Window); // whatever the host's is
    makeFindRow();
    makeReplaceRow();
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(margin, margin, margin, margin);
    rows->setSpacing(margin);
    rows->addWidget(findRow);
    rows->addWidget(replaceRow);
    for (QLineEdit* field : {findField, replaceField})
        field->installEventFilter(this);
    replaceRow->hide();
    hide();
    finder.setBar(this);
}

FindBar::~FindBar() {
    finder.setBar(nullptr);
}

void FindBar::makeFindRow() {
    findField->setObjectName("findField");
    findField->setAccessibleName("Find");
    findField->setMinimumWidth(narrowestField);
    QObject::connect(findField, &QLineEdit::textEdited, this,
                     [this](const QString& text) { finder.setSearchText(text.toStdString()); });
    matchCount->setObjectName("matchCount");
    matchCount->setTextFormat(Qt::PlainText);
    matchCase->setObjectName("matchCase");
    QObject::connect(matchCase, &QCheckBox::toggled, this,
                     [this](bool matters) { finder.setMatchCase(matters); });

    auto* label = new QLabel("Fi&nd:");
    label->setBuddy(findField);
    QHBoxLayout* columns = layOutRow(findRow);
    columns->addWidget(label);
    columns->addWidget(findField, 1);
    columns->addWidget(matchCount);
    columns->addWidget(
        makeStepButton(Qt::UpArrow, "Previous Match", textFinderAction::previousMatch));
    columns->addWidget(makeStepButton(Qt::DownArrow, "Next Match", textFinderAction::nextMatch));
    columns->addWidget(matchCase);
    columns->addWidget(makeButton("&Done", textFinderAction::hideFindInterface));
}

void FindBar::makeReplaceRow() {
    replaceField->setObjectName("replaceField");
    replaceField->setAccessibleName("Replace with");
    replaceField->setMinimumWidth(narrowestField);
    QObject::connect(replaceField, &QLineEdit::textEdited, this,
                     [this](const QString& text) { finder.setReplacement(text.toStdString()); });

    auto* label = new QLabel("Replace wi&th:");
    label->setBuddy(replaceField);
    QHBoxLayout* columns = layOutRow(replaceRow);
    columns->addWidget(label);
    columns->addWidget(replaceField, 1);
    columns->addWidget(makeButton("&Replace", textFinderAction::replaceAndFind));
    columns->addWidget(makeButton("Replace &All", textFinderAction::replaceAll));
}

QPushButton* FindBar::makeButton(const QString& text, textFinderAction action) {
    auto* button = new QPushButton(text);
    button->setAutoDefault(false); // in a dialog, Return stays the bar's
    QObject::connect(button, &QPushButton::clicked, this,
                     [this, action] { finder.perform(action); });
    return button;
}

QToolButton* FindBar::makeStepButton(Qt::ArrowType arrow, const QString& name,
                                     textFinderAction action) {
    auto* button = new QToolButton;
    button->setArrowType(arrow);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::StrongFocus);
    button->setToolTip(name);
    button->setAccessibleName(name);
    QObject::connect(button, &QToolButton::clicked, this,
                     [this, action] { finder.perform(action); });
    return button;
}

void FindBar::finderChanged() {
    // Setting an equal text would move the cursor that the user types at.
    const QString searched = qtText(finder.searchText());
    if (findField->text() != searched) findField->setText(searched);
    matchCase->setChecked(finder.matchCase());
    showReport();
    if (finder.visibility() == shown) return;

    shown = finder.visibility();
    if (shown == findBarVisibility::hidden) {
        const QWidget* focused = QApplication::focusWidget();
        const bool hadFocus = focused && isAncestorOf(focused);
        hide();
        emit closed(hadFocus);
        return;
    }
    replaceRow->setVisible(shown == findBarVisibility::findAndReplace);
    show();
    emit shapeChanged();
}

void FindBar::finderShown() {
    findField->setFocus(Qt::ShortcutFocusReason);
    findField->selectAll();
}

void FindBar::showReport() {
    const QString text = textOf(finder.report(), !finder.searchText().empty());
    matchCount->setText(text);
    if (text == announced || shown == findBarVisibility::hidden) return;
    announced = text;
    matchCount->setAccessibleName(text);
    QAccessibleEvent spoken(matchCount, QAccessible::Alert);
    QAccessible::updateAccessibility(&spoken);
}

/// The style's least width is a dialog button's, and a bar may be narrow.
void FindBar::fitButtons() {
    for (auto* button : findChildren<QPushButton*>())
        button->setMaximumWidth(button->fontMetrics().horizontalAdvance(button->text()) +
                                2 * buttonInset);
}

/// What the key's mnemonic means in this bar.
QWidget* FindBar::partFor(const QKeyEvent& key) const {
    if (!key.modifiers().testFlag(Qt::AltModifier)) return nullptr;
    const auto isMeant = [&](const QWidget& part, const QString& text) {
        return part.isVisible() && QKeySequence::mnemonic(text) == key.keyCombination();
    };
    for (auto* label : findChildren<QLabel*>())
        if (isMeant(*label, label->text())) return label->buddy();
    for (auto* button : findChildren<QAbstractButton*>())
        if (isMeant(*button, button->text())) return button;
    return nullptr;
}

bool FindBar::reachPart(const QKeyEvent& key) {
    QWidget* part = partFor(key);
    if (!part) return false;
    part->setFocus(Qt::ShortcutFocusReason);
    if (auto* button = qobject_cast<QAbstractButton*>(part)) button->click();
    return true;
}

bool FindBar::eventFilter(QObject* object, QEvent* event) {
    // A field would take the letter.
    if (event->type() == QEvent::KeyPress && reachPart(*static_cast<QKeyEvent*>(event)))
        return true;
    return QFrame::eventFilter(object, event);
}

bool FindBar::event(QEvent* event) {
    // These keys are the bar's before they are the window's, where they may mean something else.
    if (event->type() == QEvent::ShortcutOverride) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Escape || isReturn(key->key()) || partFor(*key)) {
            event->accept();
            return true;
        }
    }
    if (event->type() == QEvent::Polish) fitButtons();
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
        fitButtons();
        emit shapeChanged();
    }
    return QFrame::event(event);
}

void FindBar::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) return finder.perform(textFinderAction::hideFindInterface);
    if (reachPart(*event)) return;
    if (!isReturn(event->key())) return QFrame::keyPressEvent(event);
    // On a button the key means the button.
    if (auto* button = qobject_cast<QAbstractButton*>(QApplication::focusWidget()))
        return button->click();
    finder.perform(event->modifiers().testFlag(Qt::ShiftModifier) ? textFinderAction::previousMatch
                                                                  : textFinderAction::nextMatch);
}

} // namespace tessaril
