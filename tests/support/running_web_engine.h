#pragma once

#include "desktop/web_engine.h"
#include "platform/web_view.h"
#include "support/user.h"

#include <gtest/gtest.h>
#include <sys/types.h>

#include <memory>
#include <string>

namespace tessaril::testing {

inline constexpr const char* editorPage = TESSARIL_RESOURCES "/Ace/index.html";

/// The browser engine of the whole test run, which ends before the application object does.
struct RunningWebEngine : ::testing::Environment {
    void TearDown() override { engine.reset(); }

    static inline std::unique_ptr<LazyWebEngine> engine;
};
inline const auto* const webEngineEnd = ::testing::AddGlobalTestEnvironment(new RunningWebEngine);

inline shownWebView makeRealPage(QWidget* parent) {
    auto& engine = RunningWebEngine::engine;
    if (!engine) engine = std::make_unique<LazyWebEngine>(TESSARIL_WEBENGINE);
    return engine->makeView(parent);
}

/// What the statement gives; waits for it.
inline std::optional<scriptValue> evaluated(const shownWebView& web, std::string_view statement) {
    std::optional<std::optional<scriptValue>> result;
    web.view->evaluate(statement, [&](const auto& given) { result = given; });
    EXPECT_TRUE(eventually([&] { return result.has_value(); })) << statement;
    return result.value_or(std::nullopt);
}

/// Shows the window and makes it the active one; no window manager does it.
inline void bringForward(QWidget& window) {
    window.show();
    window.activateWindow();
    EXPECT_TRUE(eventually([&] { return window.isActiveWindow(); }));
}

/// The process behind the page.
inline pid_t pageProcess(const shownWebView& web) {
    return web.widget->findChild<QObject*>("page")->property("renderProcessPid").value<pid_t>();
}

/// For what shows an editor's page.
struct RealPages {
    scriptValue inPage(std::string_view statement) const {
        return evaluated(web, statement).value_or(scriptValue());
    }
    /// Whether the condition holds in the page, which is ready to report.
    bool holds(const std::string& condition) const {
        return inPage("typeof reportChanges !== 'undefined' && (" + condition + ")") ==
               scriptValue(true);
    }
    [[nodiscard]] bool comesToHold(const std::string& condition) const {
        return eventually([&] { return holds(condition); });
    }
    std::string textInPage() const { return std::get<std::string>(inPage("editor.getValue()")); }

    shownWebView web; ///< the page that was made last
    WebViewFactory makePage = [this](QWidget* parent) { return web = makeRealPage(parent); };
};

} // namespace tessaril::testing
