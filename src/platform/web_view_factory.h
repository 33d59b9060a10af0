#pragma once

#include <functional>

class QWidget;

namespace tessaril {

class WebView;

/// A web view and the widget that shows it (of the windows' toolkit, opaque here). The two are one
/// object, which the widget's parent owns.
struct shownWebView {
    WebView* view = nullptr;
    QWidget* widget = nullptr;

    explicit operator bool() const { return view; }
};

/// Makes a web view within `parent`. Gives nothing where this machine cannot show one.
using WebViewFactory = std::function<shownWebView(QWidget* parent)>;

} // namespace tessaril
