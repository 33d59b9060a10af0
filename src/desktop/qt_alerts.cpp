#include "desktop/qt_alerts.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QEventLoop>
#include <QGridLayout>
#include <QLabel>
#include <QMainWindow>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QScopeGuard>
#include <QTextBoundaryFinder>

#include <memory>
#include <utility>

namespace tessaril {

namespace {

constexpr const char* suppressionText = "Do not show this message again";

/// A message box does not break a word, however long: without this a style's endless name would
/// push the buttons off the screen.
QString withShortWords(const QString& text) {
    constexpr qsizetype longest = 100;
    QString shown;
    QTextBoundaryFinder breaks(QTextBoundaryFinder::Line, text);
    for (qsizetype start = 0, end = breaks.toNextBoundary(); end != -1;
         start = end, end = breaks.toNextBoundary()) {
        const QString word = text.mid(start, end - start);
        shown +=
            word.size() <= longest ? word : word.left(longest / 2) + u'…' + word.right(longest / 2);
    }
    return shown;
}

QString shownText(std::string_view text) {
    constexpr qsizetype longest = 2000;
    const QString whole =
        withShortWords(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())));
    return whole.size() <= longest ? whole : whole.left(longest) + u'…';
}

/// The window that an alert is shown over, also while another program has the focus. Not another
/// box, which would take the alert with it when it closes.
QWidget* windowBelow(QWidget* lastWindow) {
    QWidget* active = QApplication::activeWindow();
    if (active && !qobject_cast<QMessageBox*>(active)) return active;
    if (lastWindow && lastWindow->isVisible()) return lastWindow;
    for (QWidget* window : QApplication::topLevelWidgets())
        if (window->isVisible() && qobject_cast<QMainWindow*>(window)) return window;
    return nullptr;
}

/// Left to itself a box is as narrow as its texts can be broken.
void widen(QMessageBox& box) {
    constexpr int width = 400;
    if (auto* layout = qobject_cast<QGridLayout*>(box.layout()))
        layout->addItem(new QSpacerItem(width, 0), layout->rowCount(), 0, 1, layout->columnCount());
}

/// A box with its texts and no buttons yet.
std::unique_ptr<QMessageBox> makeBox(QWidget* below, QMessageBox::Icon icon, std::string_view title,
                                     std::string_view text) {
    auto box = std::make_unique<QMessageBox>(below);
    box->setWindowModality(Qt::ApplicationModal);
    box->setWindowTitle("Tessaril");
    box->setIcon(icon);
    box->setTextFormat(Qt::PlainText);
    box->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    box->setText(shownText(title));
    box->setInformativeText(shownText(text));
    // What the box itself applies to its title only.
    for (QLabel* label : box->findChildren<QLabel*>()) {
        if (label->text().isEmpty()) continue;
        label->setTextFormat(Qt::PlainText);
        label->setTextInteractionFlags(box->textInteractionFlags());
    }
    if (auto* heading = box->findChild<QLabel*>("qt_msgbox_label")) {
        QFont bold = heading->font();
        bold.setBold(true);
        heading->setFont(bold);
    }
    widen(*box);
    return box;
}

QMessageBox::ButtonRole roleOf(int button, const alertQuestion& question) {
    if (question.destructiveButton == button) return QMessageBox::DestructiveRole;
    if (button == 0) return QMessageBox::AcceptRole;
    return QMessageBox::RejectRole;
}

/// The button that closing means, which must never destroy anything.
int closingButton(const alertQuestion& question) {
    const int last = static_cast<int>(question.buttons.size()) - 1;
    return question.closingButton.value_or(question.destructiveButton == last ? 0 : last);
}

alertAnswer answerTo(const alertQuestion& question, QWidget* below) {
    const auto icon =
        question.style == alertStyle::critical ? QMessageBox::Critical : QMessageBox::Warning;
    const QPointer<QMessageBox> box = makeBox(below, icon, question.title, question.text).release();
    const auto deleteBox = qScopeGuard([&] { delete box; });
    std::vector<QPushButton*> buttons;
    for (const std::string& title : question.buttons)
        buttons.push_back(box->addButton(QString::fromStdString(title),
                                         roleOf(static_cast<int>(buttons.size()), question)));
    const int closing = closingButton(question);
    box->setDefaultButton(buttons.front());
    box->setEscapeButton(buttons[closing]);
    if (question.offersSuppression) box->setCheckBox(new QCheckBox(suppressionText));
    box->exec();
    if (!box) return {closing, false}; // the window below was closed meanwhile

    alertAnswer answer{closing, box->checkBox() && box->checkBox()->isChecked()};
    for (std::size_t button = 0; button < buttons.size(); ++button)
        if (box->clickedButton() == buttons[button]) answer.button = static_cast<int>(button);
    return answer;
}

} // namespace

QtAlerts::QtAlerts(Dispatcher& mainQueue) : dispatcher(mainQueue) {
    // When a file dialog has just closed, no window is active yet.
    QObject::connect(qApp, &QApplication::focusChanged, &boxes, [this](QWidget*, QWidget* now) {
        if (now && !qobject_cast<QDialog*>(now->window())) lastWindow = now->window();
    });
}

void QtAlerts::showAlert(std::string_view title, std::string_view text) {
    dispatcher.onMain([this, next = message{std::string(title), std::string(text)}] {
        waiting.push_back(next);
        showNext();
    });
}

void QtAlerts::showNext() {
    if (openQuestions > 0 || shown || waiting.empty()) return;
    const message next = std::move(waiting.front());
    waiting.pop_front();

    shown = makeBox(windowBelow(lastWindow), QMessageBox::Warning, next.title, next.text).release();
    shown->setAttribute(Qt::WA_DeleteOnClose);
    shown->addButton(QMessageBox::Ok);
    // Destroyed rather than finished: the box also goes when the window below it is closed. Queued,
    // or the next one might take the dying box for the window that it belongs over.
    QObject::connect(
        shown, &QObject::destroyed, &boxes, [this] { showNext(); }, Qt::QueuedConnection);
    shown->show();
}

alertAnswer QtAlerts::ask(const alertQuestion& question) {
    if (!mayAsk) return {closingButton(question), false};
    waitForShown();
    // An alert that arrives meanwhile waits for its turn.
    ++openQuestions;
    const alertAnswer answer = answerTo(question, windowBelow(lastWindow));
    --openQuestions;
    showNext();
    return answer;
}

/// What was told before a question may be what it is about. While the application quits nobody
/// waits.
void QtAlerts::waitForShown() {
    while (shown) {
        QEventLoop loop;
        QObject::connect(shown, &QObject::destroyed, &loop, &QEventLoop::quit);
        if (loop.exec() != 0) return;
        showNext();
    }
}

void QtAlerts::beep() {
    QApplication::beep();
}

void QtAlerts::finish() {
    while (shown || !waiting.empty())
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

} // namespace tessaril
