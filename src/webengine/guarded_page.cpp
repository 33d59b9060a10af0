#include "webengine/guarded_page.h"

#include "model/log.h"
#include "webengine/page_messages.h"

#include <QFile>
#include <QWebChannel>
#include <QWebEngineScript>
#include <QWebEngineScriptCollection>

#include <utility>

namespace tessaril {

namespace {

/// Takes what could reach the network past the profile, and makes `messageHandlers`: messages
/// posted before the channel stands wait for it.
constexpr const char* preludeScript = R"(
(() => {
    if (window.messageHandlers) return; // the engine may run this more than once
    for (const name of ["RTCPeerConnection", "webkitRTCPeerConnection"]) delete window[name];
    const waiting = [];
    let post = (...message) => waiting.push(message);
    window.messageHandlers = new Proxy({}, {
        get: (_, name) => ({ postMessage: (body) => post(name, body) }),
    });
    new QWebChannel(qt.webChannelTransport, (channel) => {
        post = (name, body) => channel.objects.messages.post(name, body);
        for (const message of waiting) post(...message);
    });
})();
)";

QString channelLibrary() {
    QFile library(":/qtwebchannel/qwebchannel.js");
    if (!library.open(QFile::ReadOnly)) logLine("The code editor's message channel is missing.");
    return QString::fromUtf8(library.readAll());
}

QWebEngineScript pagePrelude() {
    static const QString source = channelLibrary() + preludeScript;
    QWebEngineScript script;
    script.setName("prelude");
    script.setInjectionPoint(QWebEngineScript::DocumentCreation);
    script.setWorldId(QWebEngineScript::MainWorld);
    script.setSourceCode(source);
    return script;
}

} // namespace

GuardedPage::GuardedPage(QWebEngineProfile* profile, const QUrl& home)
    : QWebEnginePage(profile), homeAddress(home), alive(std::make_shared<int>()) {
    setObjectName("page");
    makeMessageChannel();
    connect(this, &QWebEnginePage::loadFinished, this, &GuardedPage::loadEnded);
    connect(this, &QWebEnginePage::renderProcessTerminated, this, &GuardedPage::lose);
    // An empty page needs nobody's leave.
    connect(this, &QWebEnginePage::urlChanged, this, [this](const QUrl& address) {
        if (address != homeAddress) lose();
    });
    load(home);
}

void GuardedPage::makeMessageChannel() {
    auto* messages = new PageMessages(this);
    connect(messages, &PageMessages::posted, this, &GuardedPage::messagePosted);
    auto* channel = new QWebChannel(this);
    channel->registerObject("messages", messages);
    setWebChannel(channel);
    // Here and not in the profile, whose scripts a process that replaces a dead one does not get.
    scripts().insert(pagePrelude());
}

void GuardedPage::loadEnded(bool worked) {
    // A refused navigation ends so too.
    if (state != loadState::loading) return;
    state = worked ? loadState::checking : loadState::gone;
    if (!worked) return emit notOpened();
    // A page that was begun while the process of another one ended may come without its script.
    runJavaScript("!!window.messageHandlers",
                  [this, stillAlive = std::weak_ptr(alive)](const QVariant& isWhole) {
                      if (!stillAlive.expired()) checked(isWhole.toBool());
                  });
}

void GuardedPage::checked(bool isWhole) {
    if (state != loadState::checking) return;
    if (!isWhole) {
        logLine("The code editor's page came without its message script.");
        return lose();
    }
    state = loadState::loaded;
    emit opened();
}

void GuardedPage::lose() {
    if (std::exchange(state, loadState::gone) != loadState::gone) emit lost();
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
