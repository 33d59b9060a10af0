#include "support/running_web_engine.h"

#include "support/event_loop.h"

#include <QWidget>

#include <gtest/gtest.h>

#include <memory>

namespace tessaril::testing {

namespace {

std::unique_ptr<LazyWebEngine> engine;

struct EngineEnd : ::testing::Environment {
    void TearDown() override { engine.reset(); }
};

[[maybe_unused]] const auto* const end = ::testing::AddGlobalTestEnvironment(new EngineEnd);

} // namespace

LazyWebEngine& runningWebEngine() {
    if (!engine) engine = std::make_unique<LazyWebEngine>(TESSARIL_WEBENGINE);
    return *engine;
}

std::optional<scriptValue> evaluated(const shownWebView& web, std::string_view statement) {
    std::optional<std::optional<scriptValue>> result;
    web.view->evaluate(statement, [&](const auto& given) { result = given; });
    EXPECT_TRUE(eventually([&] { return result.has_value(); })) << statement;
    return result.value_or(std::nullopt);
}

bool holds(const shownWebView& web, const std::string& condition) {
    return evaluated(web, "typeof reportChanges !== 'undefined' && (" + condition + ")") ==
           scriptValue(true);
}

void bringForward(QWidget& window) {
    window.show();
    window.activateWindow();
    EXPECT_TRUE(eventually([&] { return window.isActiveWindow(); }));
}

pid_t pageProcess(const shownWebView& web) {
    return web.widget->findChild<QObject*>("page")->property("renderProcessPid").value<pid_t>();
}

} // namespace tessaril::testing
