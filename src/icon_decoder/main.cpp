// Reads a picture from standard input and writes it to standard output as the bare pixels of an
// icon, row by row, four bytes each: red, green, blue, alpha. A program of its own, as what it
// reads comes from strangers: it limits itself before it reads, and whatever a picture does to it
// ends with it.

#include "icon_decoder/icon_pixels.h"
#include "icon_decoder/picture.h"
#include "platform/icon_decoder.h"

#include <QByteArray>
#include <QGuiApplication>
#include <QPainter>

#include <sys/prctl.h>
#include <sys/resource.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace {

using namespace tessaril;

bool limit(__rlimit_resource resource, rlim_t value) {
    const rlimit both{value, value};
    return ::setrlimit(resource, &both) == 0;
}

bool limitThisProcess() {
    constexpr rlim_t megabyte = 1 << 20;
    return limit(RLIMIT_CPU, 1) && limit(RLIMIT_AS, 1024 * megabyte) && limit(RLIMIT_FSIZE, 0) &&
           limit(RLIMIT_NOFILE, 32) && limit(RLIMIT_CORE, 0) &&
           ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0;
}

/// The picture in the middle of an icon that is transparent elsewhere.
QImage centred(const QImage& picture) {
    QImage icon(siteIconSize, siteIconSize, QImage::Format_RGBA8888);
    icon.fill(Qt::transparent);
    QPainter painter(&icon);
    painter.drawImage((siteIconSize - picture.width()) / 2, (siteIconSize - picture.height()) / 2,
                      picture);
    return icon;
}

} // namespace

int main(int argc, char* argv[]) {
    if (!limitThisProcess()) return EXIT_FAILURE;
    std::signal(SIGXFSZ, SIG_IGN); // a library that wants to keep something of its own goes without
    qputenv("QT_QPA_PLATFORM", "offscreen"); // a drawing may have text
    const QGuiApplication application(argc, argv);

    QByteArray bytes(largestIconBytes, Qt::Uninitialized);
    bytes.resize(static_cast<qsizetype>(std::fread(bytes.data(), 1, largestIconBytes, stdin)));
    const QImage picture = pictureIn(bytes, siteIconSize);
    if (picture.isNull()) return EXIT_FAILURE;
    const QImage icon = centred(picture);
    static_assert(iconPixelBytes == siteIconSize * siteIconSize * 4);
    return std::fwrite(icon.constBits(), 1, iconPixelBytes, stdout) == iconPixelBytes &&
                   std::fflush(stdout) == 0
               ? EXIT_SUCCESS
               : EXIT_FAILURE;
}
