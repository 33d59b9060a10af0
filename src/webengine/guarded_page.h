#pragma once

#include <QWebEnginePage>

namespace tessaril {

/// A page that stays where it is: no navigation but its own loading, no windows, no dialogs. What
/// its scripts complain about is logged.
class GuardedPage : public QWebEnginePage {
    Q_OBJECT

public:
    using QWebEnginePage::QWebEnginePage;

    /// The one address that this page may show. Must be a local file.
    void open(const QUrl& address);

protected:
    bool acceptNavigationRequest(const QUrl& address, NavigationType type,
                                 bool isMainFrame) override;
    QWebEnginePage* createWindow(WebWindowType type) override;
    QStringList chooseFiles(FileSelectionMode mode, const QStringList& old,
                            const QStringList& types) override;
    void javaScriptAlert(const QUrl& origin, const QString& text) override;
    bool javaScriptConfirm(const QUrl& origin, const QString& text) override;
    bool javaScriptPrompt(const QUrl& origin, const QString& text, const QString& preset,
                          QString* answer) override;
    void javaScriptConsoleMessage(JavaScriptConsoleMessageLevel level, const QString& message,
                                  int line, const QString& source) override;

private:
    QUrl home;
};

} // namespace tessaril
