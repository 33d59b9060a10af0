#pragma once

#include "platform/web_view.h"

#include <QWebEngineView>

#include <memory>

namespace tessaril {

class GuardedPage;
class PageStock;

/// A web view of Qt WebEngine. Text can be dropped into it, files and links cannot; the page's zoom
/// and its address stay as they are.
class QtWebView : public QWebEngineView, public WebView {
public:
    /// `stock` must live longer.
    QtWebView(PageStock& stock, QWidget* parent);
    ~QtWebView() override;

    void setObserver(WebViewObserver* newObserver) override { observer = newObserver; }
    void loadPage(const std::filesystem::path& path) override;
    void evaluate(std::string_view statement, Completion completion) override;

protected:
    bool eventFilter(QObject* object, QEvent* event) override;
    bool event(QEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void followPage();
    void pageOpened();
    void takePaletteOver();

    PageStock& stock;
    WebViewObserver* observer = nullptr;
    GuardedPage* shownPage = nullptr; ///< a child; none until one is to be loaded
    std::shared_ptr<void> alive;      ///< gone before the page is, for completions under way
};

} // namespace tessaril
