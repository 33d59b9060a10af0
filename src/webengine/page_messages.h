#pragma once

#include <QJsonValue>
#include <QObject>
#include <QString>

namespace tessaril {

/// The application's end of the page's `messageHandlers`.
class PageMessages : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

public slots:
    /// Called by the page.
    void post(const QString& handler, const QJsonValue& body) { emit posted(handler, body); }

signals:
    void posted(const QString& handler, const QJsonValue& body);
};

} // namespace tessaril
