#pragma once

#include "platform/web_view.h"

#include <QWebEngineView>

#include <memory>

class QWebEngineProfile;

namespace tessaril {

class GuardedPage;

/// A web view of Qt WebEngine. Text can be dropped into it, files and links cannot; the page's zoom
/// and its address stay as they are.
class QtWebView : public QWebEngineView, public WebView {
public:
    /// `profile` must live longer.
    QtWebView(QWebEngineProfile& profile, QWidget* parent);
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
    void makeMessageChannel();
    void takePaletteOver();

    GuardedPage* guardedPage;
    WebViewObserver* observer = nullptr;
    bool isLoading = false;
    std::shared_ptr<void> alive; ///< gone before the page is, for completions under way
};

} // namespace tessaril
