#include "desktop/web_engine.h"
#include "webengine/page_stock.h"
#include "webengine/qt_web_view.h"
#include "webengine/web_profile.h"

#include <QObject>
#include <QQuickWindow>

namespace tessaril {

namespace {

constexpr const char* flagsVariable = "QTWEBENGINE_CHROMIUM_FLAGS";

class RunningEngine : public WebEngine {
public:
    shownWebView makeView(QWidget* parent) override {
        auto* view = new QtWebView(stock, parent);
        return {view, view};
    }

private:
    WebProfile profile;
    PageStock stock{profile};
};

/// Starts the engine with a profile. It reads its flags once, from the environment.
std::unique_ptr<WebEngine> startEngine() {
    // Text needs no graphics card, and drawing without one works everywhere.
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    const QByteArray flags = qgetenv(flagsVariable);
    // All editors in one process: the second finds the page's scripts compiled. No zoom by touch.
    // No name or address is found, and no connection goes past the profile.
    qputenv(flagsVariable, flags + " --process-per-site --disable-pinch"
                                   " --host-resolver-rules=\"MAP * ~NOTFOUND\""
                                   " --force-webrtc-ip-handling-policy=disable_non_proxied_udp");
    auto engine = std::make_unique<RunningEngine>();
    qputenv(flagsVariable, flags);
    return engine;
}

} // namespace

class QtWebEngineModule : public QObject, public WebEngineModule {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "com.tessaril.WebEngineModule")
    Q_INTERFACES(tessaril::WebEngineModule)

public:
    std::unique_ptr<WebEngine> start() override { return startEngine(); }
};

} // namespace tessaril

#include "web_engine_module.moc"
