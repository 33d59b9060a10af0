#include "windows/sync_overlay.h"

#include "windows/spinner.h"
#include "windows/stray_repeat_filter.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>
#include <QWindow>

#include <algorithm>
#include <chrono>

namespace tessaril {

namespace {

using namespace std::chrono_literals;

constexpr const char* syncingText = "Syncing with iCloud…";
constexpr const char* failureTitle = "Your styles could not be fetched from iCloud";
constexpr const char* failureText =
    "Nothing was changed on this machine.\n\n“Try Again” fetches them once more. “Work Offline” "
    "lets you use the list as it is; Tessaril tries again by itself when you, or another of your "
    "machines, next save a change.";

constexpr auto patience = 150ms; // a sync that ends sooner is not worth a flicker
constexpr int boxWidth = 440;
constexpr int air = 20; // around the contents, and at least around the box
constexpr qreal corner = 8;

QLabel* labelOf(const char* text) {
    auto* label = new QLabel(text);
    label->setTextFormat(Qt::PlainText);
    return label;
}

} // namespace

SyncOverlay::SyncOverlay(QWidget* over)
    : QWidget(over)
    , spinner(new Spinner)
    , retryButton(new QPushButton("&Try Again"))
    , offlineButton(new QPushButton("&Work Offline"))
    , syncingPart(makeSyncingPart())
    , failurePart(makeFailurePart()) {
    setObjectName("syncOverlay");
    auto* parts = new QVBoxLayout(this);
    parts->setContentsMargins(air, air, air, air);
    parts->addWidget(syncingPart);
    parts->addWidget(failurePart);
    setFocusProxy(retryButton);
    late.setSingleShot(true);
    late.setInterval(patience);
    connect(&late, &QTimer::timeout, this, [this] { turnTo(stage::syncing); });
    over->installEventFilter(this);
    hide();
}

QWidget* SyncOverlay::makeSyncingPart() {
    auto* part = new QWidget;
    auto* row = new QHBoxLayout(part);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(10);
    row->addWidget(spinner);
    row->addWidget(labelOf(syncingText));
    return part;
}

QWidget* SyncOverlay::makeFailurePart() {
    QLabel* title = labelOf(failureTitle);
    QFont bold = title->font();
    bold.setBold(true);
    title->setFont(bold);
    title->setWordWrap(true);
    QLabel* text = labelOf(failureText);
    text->setWordWrap(true);

    retryButton->setObjectName("retryButton");
    offlineButton->setObjectName("offlineButton");
    retryButton->setDefault(true);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    for (QPushButton* button : {retryButton, offlineButton}) {
        button->setAutoDefault(true);
        // Of a key that is held down since another window had the focus.
        new StrayRepeatFilter(button);
        buttons->addWidget(button);
    }
    connect(retryButton, &QPushButton::clicked, this, [this] {
        turnTo(stage::syncing); // before the answer can come
        emit retryWanted();
    });
    connect(offlineButton, &QPushButton::clicked, this, &SyncOverlay::offlineWanted);

    auto* part = new QWidget;
    auto* rows = new QVBoxLayout(part);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(10);
    rows->addWidget(title);
    rows->addWidget(text);
    rows->addSpacing(4);
    rows->addLayout(buttons);
    return part;
}

void SyncOverlay::setLocked(bool isLocked) {
    locked = isLocked;
    if (!locked) return turnTo(stage::none);
    if (isUp()) return;
    const QWindow* shown = window()->windowHandle();
    if (shown && shown->isExposed())
        late.start();
    else
        turnTo(stage::syncing);
}

void SyncOverlay::showFailure() {
    if (locked) turnTo(stage::failed);
}

void SyncOverlay::turnTo(stage wanted) {
    late.stop();
    if (wanted == current) return;
    const QWidget* focus = window()->focusWidget();
    const bool hadFocus = focus && isAncestorOf(focus);
    current = wanted;
    spinner->setSpinning(current == stage::syncing);
    syncingPart->setVisible(current == stage::syncing);
    failurePart->setVisible(asks());
    // Clicks beside the buttons of the box are nothing to the rows below it.
    setAttribute(Qt::WA_TransparentForMouseEvents, !asks());
    setAccessibleName(asks() ? failureTitle : syncingText);
    setAccessibleDescription(asks() ? failureText : "");
    setVisible(isUp());
    if (isUp()) {
        place();
        QAccessibleEvent told(this, QAccessible::Alert);
        QAccessible::updateAccessibility(&told);
    }
    emit turned(hadFocus);
    raise();
}

/// In the middle, as wide as there is room for.
void SyncOverlay::place() {
    layout()->invalidate();
    const QRect room = parentWidget()->rect().adjusted(air, air, -air, -air);
    const int width = std::min(asks() ? boxWidth : sizeHint().width(), room.width());
    const int height = asks() ? layout()->totalHeightForWidth(width) : sizeHint().height();
    QRect place(0, 0, width, height);
    place.moveCenter(room.center());
    setGeometry(place);
}

bool SyncOverlay::eventFilter(QObject* object, QEvent* event) {
    if (isUp() && (event->type() == QEvent::Resize || event->type() == QEvent::FontChange)) place();
    return QWidget::eventFilter(object, event);
}

void SyncOverlay::keyPressEvent(QKeyEvent* event) {
    if (!asks() || event->key() != Qt::Key_Escape) return QWidget::keyPressEvent(event);
    // A held one has closed something else.
    if (!event->isAutoRepeat()) emit offlineWanted();
}

void SyncOverlay::paintEvent(QPaintEvent*) {
    QColor edge = palette().color(QPalette::WindowText);
    edge.setAlphaF(0.25F);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(edge);
    painter.setBrush(palette().window());
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), corner, corner);
}

} // namespace tessaril
