#pragma once

#include "desktop/web_engine.h"
#include "platform/web_view.h"

#include <sys/types.h>

namespace tessaril::testing {

/// The browser engine of the whole test run, which ends before the application object does.
LazyWebEngine& runningWebEngine();

/// What the statement gives; waits for it.
std::optional<scriptValue> evaluated(const shownWebView& web, std::string_view statement);

/// Whether the condition holds in an editor's page, which is ready to report.
bool holds(const shownWebView& web, const std::string& condition);

/// Shows the window and makes it the active one; no window manager does it.
void bringForward(QWidget& window);

/// The process behind the page.
pid_t pageProcess(const shownWebView& web);

} // namespace tessaril::testing
