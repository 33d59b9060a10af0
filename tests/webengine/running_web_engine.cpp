#include "support/running_web_engine.h"

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

} // namespace tessaril::testing
