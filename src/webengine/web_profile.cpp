#include "webengine/web_profile.h"

#include "model/log.h"

#include <QFile>
#include <QFontDatabase>
#include <QWebEngineScript>
#include <QWebEngineScriptCollection>
#include <QWebEngineSettings>

namespace tessaril {

namespace {

/// Messages posted before the channel stands wait for it.
constexpr const char* messageHandlersScript = R"(
(() => {
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

QWebEngineScript messageHandlers() {
    QWebEngineScript script;
    script.setName("messageHandlers");
    script.setInjectionPoint(QWebEngineScript::DocumentCreation);
    script.setWorldId(QWebEngineScript::MainWorld);
    script.setSourceCode(channelLibrary() + messageHandlersScript);
    return script;
}

void refuseWhatNoEditorNeeds(QWebEngineSettings& settings) {
    for (const QWebEngineSettings::WebAttribute attribute :
         {QWebEngineSettings::LinksIncludedInFocusChain, QWebEngineSettings::LocalStorageEnabled,
          QWebEngineSettings::LocalContentCanAccessRemoteUrls, QWebEngineSettings::PluginsEnabled,
          QWebEngineSettings::JavascriptCanOpenWindows, QWebEngineSettings::WebGLEnabled,
          QWebEngineSettings::AutoLoadIconsForPage, QWebEngineSettings::ErrorPageEnabled,
          QWebEngineSettings::FullScreenSupportEnabled, QWebEngineSettings::PdfViewerEnabled,
          QWebEngineSettings::NavigateOnDropEnabled})
        settings.setAttribute(attribute, false);
}

} // namespace

void LocalRequestsOnly::interceptRequest(QWebEngineUrlRequestInfo& request) {
    const QUrl url = request.requestUrl();
    if (url.isLocalFile() || url.scheme() == "blob" || url.scheme() == "data") return;
    request.block(true);
    logLine("The code editor refused a request: " + url.toString().left(300).toStdString());
}

WebProfile::WebProfile() {
    setUrlRequestInterceptor(&localRequestsOnly);
    scripts()->insert(messageHandlers());
    refuseWhatNoEditorNeeds(*settings());
    // What is taken for a font that this machine lacks: code is always in a fixed-width one.
    const QString fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont).family();
    settings()->setFontFamily(QWebEngineSettings::StandardFont, fixed);
    settings()->setFontFamily(QWebEngineSettings::FixedFont, fixed);
}

} // namespace tessaril
