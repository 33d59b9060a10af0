#include "webengine/web_profile.h"

#include "model/log.h"

#include <QDir>
#include <QFileInfo>
#include <QFontDatabase>
#include <QWebEngineSettings>

namespace tessaril {

namespace {

/// Whether `address` is a file in the folder of the page, or below it.
bool liesBeside(const QUrl& page, const QUrl& address) {
    if (!page.isLocalFile() || !address.isLocalFile()) return false;
    const QString folder = QFileInfo(QDir::cleanPath(page.toLocalFile())).path() + '/';
    return QDir::cleanPath(address.toLocalFile()).startsWith(folder);
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

void OwnFilesOnly::interceptRequest(QWebEngineUrlRequestInfo& request) {
    const QUrl url = request.requestUrl();
    // A page's own loading has its GuardedPage to pass.
    if (request.resourceType() == QWebEngineUrlRequestInfo::ResourceTypeMainFrame &&
        url.isLocalFile())
        return;
    if (url.scheme() == "blob" || url.scheme() == "data") return;
    if (liesBeside(request.firstPartyUrl(), url)) return;
    request.block(true);
    logLine("The code editor refused a request: " + url.toString().left(300).toStdString());
}

WebProfile::WebProfile() {
    setUrlRequestInterceptor(&ownFilesOnly);
    refuseWhatNoEditorNeeds(*settings());
    // What is taken for a font that this machine lacks: code is always in a fixed-width one.
    const QString fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont).family();
    settings()->setFontFamily(QWebEngineSettings::StandardFont, fixed);
    settings()->setFontFamily(QWebEngineSettings::FixedFont, fixed);
}

} // namespace tessaril
