#pragma once

#include <QWebEngineProfile>
#include <QWebEngineUrlRequestInterceptor>

namespace tessaril {

/// Lets through what lies on this machine; the network is refused, with a line in the log.
class LocalRequestsOnly : public QWebEngineUrlRequestInterceptor {
public:
    void interceptRequest(QWebEngineUrlRequestInfo& request) override;
};

/// What all views share: nothing is kept on disk, nothing reaches the network, and every page finds
/// `messageHandlers`: `messageHandlers.NAME.postMessage(body)` sends a JSON value to the
/// application's handler of that name.
class WebProfile : public QWebEngineProfile {
public:
    WebProfile();

private:
    LocalRequestsOnly localRequestsOnly;
};

} // namespace tessaril
