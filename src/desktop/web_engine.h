#pragma once

#include "platform/web_view_factory.h"

#include <QtPlugin>

#include <filesystem>
#include <memory>

class QOpenGLContext;
class QPluginLoader;

namespace tessaril {

/// The browser engine, running. Its views must be gone before it goes.
class WebEngine {
public:
    virtual ~WebEngine() = default;

    virtual shownWebView makeView(QWidget* parent) = 0;
};

/// What the engine's module gives to the application.
class WebEngineModule {
public:
    virtual ~WebEngineModule() = default;

    virtual std::unique_ptr<WebEngine> start() = 0;
};

/// The browser engine, loaded and started when the first view is asked for: it is larger than
/// everything else together, and the application's start is not to wait for it.
class LazyWebEngine {
public:
    /// - module: the engine's module, a shared library
    explicit LazyWebEngine(std::filesystem::path module);
    ~LazyWebEngine();

    /// Gives nothing, and says why in the log, where the engine cannot be loaded or this machine
    /// has not even software to draw with.
    shownWebView makeView(QWidget* parent);

private:
    bool start();

    std::filesystem::path module;
    bool hasTried = false;
    std::unique_ptr<QOpenGLContext> sharedContext;
    std::unique_ptr<WebEngine> engine;
};

} // namespace tessaril

Q_DECLARE_INTERFACE(tessaril::WebEngineModule, "com.tessaril.WebEngineModule")
