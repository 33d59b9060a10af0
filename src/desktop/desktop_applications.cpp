#include "desktop/desktop_applications.h"

#include <QDesktopServices>
#include <QProcess>
#include <QString>
#include <QUrl>

namespace tessaril {

namespace {

QString qtText(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

/// As RFC 6068 wants it: a blank is "%20", never "+".
QUrl mailAddress(std::string_view recipient, std::string_view subject) {
    const QByteArray to = QUrl::toPercentEncoding(qtText(recipient), "@");
    const QByteArray about = QUrl::toPercentEncoding(qtText(subject));
    return QUrl::fromEncoded("mailto:" + to + "?subject=" + about, QUrl::StrictMode);
}

/// Whether the desktop has chosen an e-mail program. Opening an address cannot tell: it has worked
/// as soon as the opener runs. Where the desktop cannot be asked, it may have one.
bool hasEmailProgram() {
    constexpr int patience = 5000; // milliseconds
    QProcess query;
    query.start("xdg-mime", {"query", "default", "x-scheme-handler/mailto"});
    if (!query.waitForFinished(patience)) return true;
    return !query.readAllStandardOutput().trimmed().isEmpty();
}

} // namespace

bool DesktopApplications::composeEmail(std::string_view recipient, std::string_view subject) {
    return hasEmailProgram() && QDesktopServices::openUrl(mailAddress(recipient, subject));
}

bool DesktopApplications::openAddress(std::string_view address) {
    const QUrl url(qtText(address), QUrl::StrictMode);
    return url.isValid() && QDesktopServices::openUrl(url);
}

} // namespace tessaril
