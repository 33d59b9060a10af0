#pragma once

#include "desktop/web_engine.h"
#include "platform/web_view.h"

namespace tessaril::testing {

/// The browser engine of the whole test run, which ends before the application object does.
LazyWebEngine& runningWebEngine();

} // namespace tessaril::testing
