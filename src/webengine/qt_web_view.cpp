#include "webengine/qt_web_view.h"

#include "webengine/guarded_page.h"
#include "webengine/page_stock.h"

#include <QChildEvent>
#include <QContextMenuEvent>
#include <QDragEnterEvent>
#include <QFile>
#include <QMenu>
#include <QMimeData>
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

QtWebView::QtWebView(PageStock& pageStock, QWidget* parent)
    : QWebEngineView(parent), stock(pageStock), alive(std::make_shared<int>()) {
    stock.viewMade();
}

QtWebView::~QtWebView() {
    observer = nullptr;
    alive.reset();
    delete shownPage; // while the stock still counts this view
    stock.viewGone();
}

void QtWebView::loadPage(const std::filesystem::path& path) {
    const QString file = QFile::decodeName(QByteArray::fromStdString(path.native()));
    // The view lets go of its old page before that goes.
    const std::unique_ptr<GuardedPage> old(
        std::exchange(shownPage, stock.take(QUrl::fromLocalFile(file)).release()));
    shownPage->setParent(this);
    setPage(shownPage);
    takePaletteOver();
    followPage();
}

void QtWebView::followPage() {
    connect(shownPage, &GuardedPage::messagePosted, this,
            [this](const QString& handler, const QJsonValue& body) {
                if (!observer) return;
                observer->messageReceived(handler.toStdString(), scriptValueFrom(body.toVariant()));
            });
    // Queued: the page may be loaded again, which it must not be from within this signal.
    connect(
        shownPage, &GuardedPage::lost, this,
        [this] {
            if (observer) observer->pageLost();
        },
        Qt::QueuedConnection);
    connect(
        shownPage, &GuardedPage::notOpened, this,
        [this] {
            if (observer) observer->pageNotLoaded();
        },
        Qt::QueuedConnection);
    if (!shownPage->hasLoaded()) {
        connect(shownPage, &GuardedPage::opened, this, [this] { pageOpened(); });
        return;
    }
    // Later, as if it had been loaded now.
    QMetaObject::invokeMethod(
        shownPage, [this] { pageOpened(); }, Qt::QueuedConnection);
}

void QtWebView::pageOpened() {
    stock.prepareNext(shownPage->home());
    if (observer) observer->navigationFinished();
}

void QtWebView::evaluate(std::string_view statement, Completion completion) {
    if (!shownPage || !shownPage->hasLoaded()) {
        if (completion) completion(std::nullopt);
        return;
    }
    const QString script =
        QString::fromUtf8(statement.data(), static_cast<qsizetype>(statement.size()));
    if (!completion) return shownPage->runJavaScript(script);
    shownPage->runJavaScript(script, [stillAlive = std::weak_ptr(alive),
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
    if (event->type() == QEvent::NativeGesture) return true;
    if (event->type() == QEvent::Wheel &&
        static_cast<QWheelEvent*>(event)->modifiers() & Qt::ControlModifier)
        return true;
    // Escape closes what the page shows over its text before it may close the window.
    if (event->type() == QEvent::ShortcutOverride &&
        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
        event->accept();
        return true;
    }
    return QWebEngineView::eventFilter(object, event);
}

void QtWebView::contextMenuEvent(QContextMenuEvent* event) {
    // The view may go while the menu is open.
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    for (const auto& [action, text] :
         {std::pair(QWebEnginePage::Cut, "Cu&t"), std::pair(QWebEnginePage::Copy, "&Copy"),
          std::pair(QWebEnginePage::Paste, "&Paste"),
          std::pair(QWebEnginePage::SelectAll, "Select &All")}) {
        QAction* shown = menu->addAction(text);
        const QAction* own = page()->action(action);
        shown->setEnabled(own->isEnabled());
        connect(shown, &QAction::triggered, own, &QAction::trigger);
    }
    menu->popup(event->globalPos());
}

void QtWebView::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasUrls()) return event->ignore();
    QWebEngineView::dragEnterEvent(event);
}

void QtWebView::changeEvent(QEvent* event) {
    QWebEngineView::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && shownPage) takePaletteOver();
}

void QtWebView::takePaletteOver() {
    // Shown until the page has drawn itself.
    shownPage->setBackgroundColor(palette().color(QPalette::Base));
}

} // namespace tessaril
