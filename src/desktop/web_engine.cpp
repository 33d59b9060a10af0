#include "desktop/web_engine.h"

#include "model/log.h"

#include <QFile>
#include <QOpenGLContext>
#include <QPluginLoader>

// Qt's own, exported for its modules. The documented way to make the context that the engine
// insists on, an attribute before the application object, costs each start of the application as
// much again as its window.
Q_GUI_EXPORT void qt_gl_set_global_share_context(QOpenGLContext* context);

namespace tessaril {

LazyWebEngine::LazyWebEngine(std::filesystem::path engineModule)
    : module(std::move(engineModule)) {}

LazyWebEngine::~LazyWebEngine() {
    engine.reset();
    if (sharedContext) qt_gl_set_global_share_context(nullptr);
}

shownWebView LazyWebEngine::makeView(QWidget* parent) {
    if (!std::exchange(hasTried, true) && !start()) engine.reset();
    return engine ? engine->makeView(parent) : shownWebView{};
}

bool LazyWebEngine::start() {
    // Without a context the engine would end the process.
    sharedContext = std::make_unique<QOpenGLContext>();
    if (!sharedContext->create()) {
        logLine("The code editor needs OpenGL, which this display lacks.");
        sharedContext.reset();
        return false;
    }
    qt_gl_set_global_share_context(sharedContext.get());

    QPluginLoader loader(QFile::decodeName(QByteArray::fromStdString(module.native())));
    auto* plugin = qobject_cast<WebEngineModule*>(loader.instance());
    if (!plugin) {
        logLine("The code editor cannot be loaded: " + loader.errorString().toStdString());
        return false;
    }
    engine = plugin->start();
    return true;
}

} // namespace tessaril
