#include "webengine/guarded_page.h"

#include "model/log.h"

namespace tessaril {

void GuardedPage::open(const QUrl& address) {
    home = address;
    load(address);
}

bool GuardedPage::acceptNavigationRequest(const QUrl& address, NavigationType type,
                                          bool isMainFrame) {
    if (isMainFrame && type == NavigationTypeTyped && address == home) return true;
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
