#include "webengine/guarded_page.h"

#include "model/log.h"
#include "webengine/page_messages.h"

#include <QWebChannel>

#include <utility>

namespace tessaril {

GuardedPage::GuardedPage(QWebEngineProfile* profile, const QUrl& home)
    : QWebEnginePage(profile), homeAddress(home) {
    setObjectName("page");
    makeMessageChannel();
    connect(this, &QWebEnginePage::loadFinished, this, &GuardedPage::loadEnded);
    connect(this, &QWebEnginePage::renderProcessTerminated, this, [this] { loaded = false; });
    load(home);
}

void GuardedPage::makeMessageChannel() {
    auto* messages = new PageMessages(this);
    connect(messages, &PageMessages::posted, this, &GuardedPage::messagePosted);
    auto* channel = new QWebChannel(this);
    channel->registerObject("messages", messages);
    setWebChannel(channel);
}

void GuardedPage::loadEnded(bool worked) {
    // A refused navigation ends so too.
    if (!std::exchange(isLoading, false)) return;
    if (!worked) return logLine("The code editor's page could not be loaded.");
    loaded = true;
    emit opened();
}

bool GuardedPage::acceptNavigationRequest(const QUrl& address, NavigationType type,
                                          bool isMainFrame) {
    if (isMainFrame && type == NavigationTypeTyped && address == homeAddress) return true;
    logLine("The code editor stays on its page.");
    return false;
}

QWebEnginePage* GuardedPage::createWindow(WebWindowType) {
    return nullptr;
}

QStringList GuardedPage::chooseFiles(FileSelectionMode, const QStringList&, const QStringList&) {
    return {};
}

void GuardedPage::javaScriptAlert(const QUrl&, const QString&) {}

bool GuardedPage::javaScriptConfirm(const QUrl&, const QString&) {
    return false;
}

bool GuardedPage::javaScriptPrompt(const QUrl&, const QString&, const QString&, QString*) {
    return false;
}

void GuardedPage::javaScriptConsoleMessage(JavaScriptConsoleMessageLevel level,
                                           const QString& message, int line,
                                           const QString& source) {
    if (level == InfoMessageLevel) return;
    const QString place = source.section('/', -1) + ':' + QString::number(line);
    logLine("Code editor page, " + place.toStdString() + ": " + message.toStdString());
}

} // namespace tessaril
