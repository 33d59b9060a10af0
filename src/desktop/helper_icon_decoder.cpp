#include "desktop/helper_icon_decoder.h"

#include "icon_decoder/icon_pixels.h"
#include "model/log.h"
#include "model/text.h"

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QProcess>

#include <algorithm>
#include <utility>

namespace tessaril {

namespace {

constexpr int longestWait = 5000; // milliseconds

/// By the first bytes: what sites send for an icon that they lack is mostly a page.
bool looksLikePicture(std::string_view bytes) {
    using namespace std::string_view_literals;
    constexpr std::string_view starts[] = {"\x89PNG\r\n"sv, "\0\0\1\0"sv, "\xFF\xD8\xFF"sv,
                                           "GIF8"sv, "RIFF"sv};
    if (std::ranges::any_of(starts, [&](auto start) { return bytes.starts_with(start); }))
        return true;
    constexpr std::size_t longestPreface = 4096;
    const std::string_view start = bytes.substr(0, longestPreface);
    return contains(start, "<svg") || contains(start, ":svg");
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
    if (bytes.size() > largestIconBytes || !looksLikePicture(bytes)) return std::nullopt;
    QProcess process;
    process.setProcessChannelMode(QProcess::SeparateChannels);
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(QFile::decodeName(QByteArray::fromStdString(program.native())), {});
    if (!process.waitForStarted()) {
        logLine("The icon decoder cannot be started: " + process.errorString().toStdString());
        return std::nullopt;
    }
    process.write(bytes.data(), static_cast<qint64>(bytes.size()));
    process.closeWriteChannel();
    if (!process.waitForFinished(longestWait)) {
        process.kill();
        process.waitForFinished();
        return std::nullopt;
    }
    const QByteArray pixels = process.readAllStandardOutput();
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != EXIT_SUCCESS ||
        pixels.size() != static_cast<qsizetype>(iconPixelBytes))
        return std::nullopt;
    return iconOfPixels(pixels);
}

} // namespace tessaril
