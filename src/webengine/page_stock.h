#pragma once

#include <QTimer>
#include <QUrl>

#include <memory>

class QWebEngineProfile;

namespace tessaril {

class GuardedPage;

/// Gives pages to views, and keeps one loaded ahead for the next view while there are views: what
/// takes long when a code editor opens is the page's scripts.
class PageStock {
public:
    /// `profile` must live longer.
    explicit PageStock(QWebEngineProfile& profile);
    ~PageStock();

    /// A page that shows `address`, or is about to.
    std::unique_ptr<GuardedPage> take(const QUrl& address);

    /// Loads a page ahead soon; what the user waits for comes first.
    void prepareNext(const QUrl& address);

    void viewMade();
    /// After the last one is gone the page loaded ahead, and with it the page's process, goes soon.
    void viewGone();

private:
    QWebEngineProfile& profile;
    QUrl nextAddress;
    std::unique_ptr<GuardedPage> next;
    QTimer preparing;
    QTimer letting;
    int views = 0;
};

} // namespace tessaril
