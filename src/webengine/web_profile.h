#pragma once

#include <QWebEngineProfile>
#include <QWebEngineUrlRequestInterceptor>

namespace tessaril {

/// Lets a page have what lies in its folder. Everything else, the network above all, is refused
/// with a line in the log.
class OwnFilesOnly : public QWebEngineUrlRequestInterceptor {
public:
    void interceptRequest(QWebEngineUrlRequestInfo& request) override;
};

/// What all views share: nothing is kept on disk, and nothing but a page's own files is loaded.
class WebProfile : public QWebEngineProfile {
public:
    WebProfile();

private:
    OwnFilesOnly ownFilesOnly;
};

} // namespace tessaril
