#pragma once

#include <QJsonValue>
#include <QWebEnginePage>

#include <memory>

namespace tessaril {

/// A page that stays where it is: no navigation but its own loading, no windows, no dialogs. What
/// its scripts complain about is logged. Its scripts find `messageHandlers`:
/// `messageHandlers.NAME.postMessage(body)` sends a JSON value to the application.
class GuardedPage : public QWebEnginePage {
    Q_OBJECT

public:
    /// Begins to load `home`, a local file, the one address that this page may show.
    GuardedPage(QWebEngineProfile* profile, const QUrl& home);

    const QUrl& home() const { return homeAddress; }
    bool hasLoaded() const { return state == loadState::loaded; }

signals:
    void opened();
    void notOpened();
    /// Its process has ended, or it shows something else.
    void lost();
    void messagePosted(const QString& handler, const QJsonValue& body);

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
    enum class loadState { loading, checking, loaded, gone };

    void makeMessageChannel();
    void loadEnded(bool worked);
    void checked(bool isWhole);
    void lose();

    QUrl homeAddress;
    loadState state = loadState::loading;
    std::shared_ptr<void> alive; ///< gone before the engine's page is, for a check under way
};

} // namespace tessaril
