#include "desktop/helper_icon_decoder.h"

#include "icon_decoder/icon_pixels.h"
#include "model/log.h"
#include "model/text.h"

#include <QBuffer>
#include <QDeadlineTimer>
#include <QFile>
#include <QImage>
#include <QProcess>

#include <algorithm>
#include <utility>

namespace tessaril {

namespace {

// In milliseconds.
constexpr int longestWait = 5000;
constexpr int cancelledWithin = 100;

/// By the first bytes: what sites send for an icon that they lack is mostly a page.
bool looksLikePicture(std::string_view bytes) {
    using namespace std::string_view_literals;
    constexpr std::string_view starts[] = {"\x89PNG\r\n"sv, "\0\0\1\0"sv, "\xFF\xD8\xFF"sv,
                                           "GIF8"sv};
    if (std::ranges::any_of(starts, [&](auto start) { return bytes.starts_with(start); }))
        return true;
    constexpr std::size_t longestPreface = 4096;
    const std::string_view start = bytes.substr(0, longestPreface);
    return contains(start, "<svg") || contains(start, ":svg");
}

/// Whether the process, which may still be starting, ended by itself and in time.
bool hasEnded(QProcess& process, const std::atomic<bool>& cancelled) {
    const QDeadlineTimer end(longestWait);
    while (process.state() != QProcess::NotRunning && !process.waitForFinished(cancelledWithin)) {
        if (!cancelled && !end.hasExpired()) continue;
        process.kill();
        process.waitForFinished(longestWait);
        return false;
    }
    return !cancelled;
}

std::optional<siteIcon> iconOfPixels(const QByteArray& pixels) {
    const auto* bits = reinterpret_cast<const uchar*>(pixels.constData());
    const QImage image(bits, siteIconSize, siteIconSize, QImage::Format_RGBA8888);
    QBuffer png;
    png.open(QIODevice::WriteOnly);
    if (!image.save(&png, "PNG")) return std::nullopt;
    return siteIcon{png.data().toStdString()};
}

} // namespace

HelperIconDecoder::HelperIconDecoder(std::filesystem::path helper) : program(std::move(helper)) {}

std::optional<siteIcon> HelperIconDecoder::decode(std::string_view bytes) {
    if (cancelled || bytes.size() > largestIconBytes || !looksLikePicture(bytes))
        return std::nullopt;
    QProcess process;
    process.setProcessChannelMode(QProcess::SeparateChannels);
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(QFile::decodeName(QByteArray::fromStdString(program.native())), {});
    process.write(bytes.data(), static_cast<qint64>(bytes.size()));
    process.closeWriteChannel();
    if (!hasEnded(process, cancelled)) return std::nullopt;
    if (process.error() == QProcess::FailedToStart) {
        logLine("The icon decoder cannot be started: " + process.errorString().toStdString());
        return std::nullopt;
    }
    const QByteArray pixels = process.readAllStandardOutput();
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != EXIT_SUCCESS ||
        pixels.size() != static_cast<qsizetype>(iconPixelBytes))
        return std::nullopt;
    return iconOfPixels(pixels);
}

} // namespace tessaril
