#include "webengine/qt_web_view.h"

#include "model/log.h"
#include "webengine/guarded_page.h"
#include "webengine/page_messages.h"

#include <QChildEvent>
#include <QContextMenuEvent>
#include <QDragEnterEvent>
#include <QFile>
#include <QMenu>
#include <QMimeData>
#include <QWebChannel>
#include <QWheelEvent>

#include <utility>

namespace tessaril {

namespace {

scriptValue scriptValueFrom(const QVariant& value) {
    switch (value.typeId()) {
    case QMetaType::Bool:
        return value.toBool();
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::Double:
        return value.toDouble();
    case QMetaType::QString:
        return value.toString().toStdString();
    default:
        return std::monostate();
    }
}

} // namespace

QtWebView::QtWebView(QWebEngineProfile& profile, QWidget* parent)
    : QWebEngineView(parent)
    , guardedPage(new GuardedPage(&profile, this))
    , alive(std::make_shared<int>()) {
    guardedPage->setObjectName("page");
    setPage(guardedPage);
    makeMessageChannel();
    takePaletteOver();
    connect(guardedPage, &QWebEnginePage::loadFinished, this, [this](bool loaded) {
        // A refused navigation ends so too.
        if (!std::exchange(isLoading, false)) return;
        if (!loaded) return logLine("The code editor's page could not be loaded.");
        if (observer) observer->navigationFinished();
    });
    // Queued: the page may be loaded again, which it must not be from within this signal.
    connect(
        guardedPage, &QWebEnginePage::renderProcessTerminated, this,
        [this] {
            if (observer) observer->pageLost();
        },
        Qt::QueuedConnection);
}

QtWebView::~QtWebView() {
    observer = nullptr;
    alive.reset();
}

void QtWebView::makeMessageChannel() {
    auto* messages = new PageMessages(this);
    connect(messages, &PageMessages::posted, this,
            [this](const QString& handler, const QJsonValue& body) {
                if (!observer) return;
                observer->messageReceived(handler.toStdString(), scriptValueFrom(body.toVariant()));
            });
    auto* channel = new QWebChannel(this);
    channel->registerObject("messages", messages);
    guardedPage->setWebChannel(channel);
}

void QtWebView::loadPage(const std::filesystem::path& path) {
    const QString file = QFile::decodeName(QByteArray::fromStdString(path.native()));
    isLoading = true;
    guardedPage->open(QUrl::fromLocalFile(file));
}

void QtWebView::evaluate(std::string_view statement, Completion completion) {
    const QString script =
        QString::fromUtf8(statement.data(), static_cast<qsizetype>(statement.size()));
    if (!completion) return guardedPage->runJavaScript(script);
    guardedPage->runJavaScript(script, [stillAlive = std::weak_ptr(alive),
                                        complete = std::move(completion)](const QVariant& value) {
        if (stillAlive.expired()) return;
        complete(value.isValid() ? std::optional(scriptValueFrom(value)) : std::nullopt);
    });
}

bool QtWebView::event(QEvent* event) {
    // The widget that takes the page's input comes as a child.
    if (event->type() == QEvent::ChildAdded)
        static_cast<QChildEvent*>(event)->child()->installEventFilter(this);
    return QWebEngineView::event(event);
}

bool QtWebView::eventFilter(QObject* object, QEvent* event) {
    // The engine would zoom the page.
    if (event->type() == QEvent::Wheel &&
        static_cast<QWheelEvent*>(event)->modifiers() & Qt::ControlModifier)
        return true;
    return QWebEngineView::eventFilter(object, event);
}

void QtWebView::contextMenuEvent(QContextMenuEvent* event) {
    QMenu menu(this);
    for (const auto& [action, text] :
         {std::pair(QWebEnginePage::Cut, "Cu&t"), std::pair(QWebEnginePage::Copy, "&Copy"),
          std::pair(QWebEnginePage::Paste, "&Paste"),
          std::pair(QWebEnginePage::SelectAll, "Select &All")}) {
        QAction* shown = menu.addAction(text);
        const QAction* own = guardedPage->action(action);
        shown->setEnabled(own->isEnabled());
        connect(shown, &QAction::triggered, own, &QAction::trigger);
    }
    menu.exec(event->globalPos());
}

void QtWebView::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasUrls()) return event->ignore();
    QWebEngineView::dragEnterEvent(event);
}

void QtWebView::changeEvent(QEvent* event) {
    QWebEngineView::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) takePaletteOver();
}

void QtWebView::takePaletteOver() {
    // Shown until the page has drawn itself.
    guardedPage->setBackgroundColor(palette().color(QPalette::Base));
}

} // namespace tessaril
