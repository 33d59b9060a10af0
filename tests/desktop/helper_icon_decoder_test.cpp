#include "desktop/helper_icon_decoder.h"
#include "support/event_loop.h"
#include "support/temporary_folder.h"
#include "support/test.h"

#include <QBuffer>
#include <QImage>
#include <QtEndian>

#include <future>

namespace tessaril {
namespace {

std::string encoded(const QImage& image, const char* format) {
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(image.save(&buffer, format)) << format;
    return buffer.data().toStdString();
}

QImage filled(int width, int height, QColor color) {
    QImage image(width, height, QImage::Format_ARGB32);
    image.fill(color);
    return image;
}

std::string bytesOf(quint32 number, std::size_t count) {
    const quint32 bytes = qToLittleEndian(number);
    return {reinterpret_cast<const char*>(&bytes), count};
}

/// An icon file of square PNG pictures.
std::string icoOf(const std::vector<QImage>& images) {
    std::string directory = bytesOf(0, 2) + bytesOf(1, 2) + bytesOf(quint32(images.size()), 2);
    std::string pictures;
    for (const QImage& image : images) {
        const std::string png = encoded(image, "PNG");
        const auto edge = quint32(image.width());
        directory += bytesOf(edge, 1) + bytesOf(edge, 1) + bytesOf(0, 2) + bytesOf(1, 2) +
                     bytesOf(32, 2) + bytesOf(quint32(png.size()), 4) +
                     bytesOf(quint32(6 + 16 * images.size() + pictures.size()), 4);
        pictures += png;
    }
    return directory + pictures;
}

std::string svg(const std::string& content) {
    return "<?xml version='1.0'?><svg xmlns='http://www.w3.org/2000/svg' "
           "xmlns:xlink='http://www.w3.org/1999/xlink' viewBox='0 0 20 10'>" +
           content + "</svg>";
}

struct HelperIconDecoderTest : ::testing::Test {
    /// A null image where it is refused.
    QImage decoded(const std::string& bytes) {
        const auto icon = decoder.decode(bytes);
        if (!icon) return {};
        const QImage image = QImage::fromData(QByteArray::fromStdString(icon->png), "PNG");
        EXPECT_EQ(image.size(), QSize(48, 48));
        return image;
    }
    QColor middle(const std::string& bytes) { return decoded(bytes).pixelColor(24, 24); }

    HelperIconDecoder decoder{TESSARIL_ICON_DECODER};
};

TEST_F(HelperIconDecoderTest, FitsPicturesOfEveryFormatIntoTheMiddle) {
    const QImage wide = decoded(encoded(filled(200, 100, Qt::red), "PNG"));
    EXPECT_EQ(wide.pixelColor(24, 24), QColor(Qt::red));
    EXPECT_EQ(wide.pixelColor(24, 11).alpha(), 0);
    EXPECT_EQ(wide.pixelColor(0, 12), QColor(Qt::red));
    const QImage small = decoded(encoded(filled(16, 16, QColor(0, 0, 255, 128)), "PNG"));
    EXPECT_EQ(small.pixelColor(16, 16), QColor(0, 0, 255, 128)) << "not blown up";
    EXPECT_EQ(small.pixelColor(15, 16).alpha(), 0);
    EXPECT_GT(middle(encoded(filled(64, 64, Qt::green), "JPEG")).green(), 240);
    EXPECT_EQ(middle(icoOf({filled(16, 16, Qt::red), filled(128, 128, Qt::blue),
                            filled(64, 64, Qt::green), filled(32, 32, Qt::red)})),
              QColor(Qt::green));
    using namespace std::string_literals;
    const std::string frame = ",\0\0\0\0\1\0\1\0\0\2\2"s;
    EXPECT_EQ(decoded("GIF89a\1\0\1\0\x80\0\0\xFF\0\0\0\0\xFF"s + frame + "\x44\1\0"s + frame +
                      "\x4C\1\0;"s)
                  .pixelColor(23, 23),
              QColor(Qt::red))
        << "an animation's first picture";
    EXPECT_EQ(middle("<!DOCTYPE svg PUBLIC '-//W3C//DTD SVG 1.1//EN' "
                     "'http://www.w3.org/Graphics/SVG/1.1/DTD/svg11.dtd'>" +
                     svg("<rect width='20' height='10' fill='#0000ff'/><text>i</text>").substr(21)),
              QColor(Qt::blue));
}

TEST_F(HelperIconDecoderTest, RefusesWhatIsBrokenHugeOrNoPicture) {
    const std::string png = encoded(filled(64, 64, Qt::red), "PNG");
    const std::string ico = icoOf({filled(64, 64, Qt::red)});
    for (const std::string& whole : {png, ico, encoded(filled(64, 64, Qt::red), "JPEG")})
        for (const std::size_t size : {std::size_t{0}, std::size_t{9}, whole.size() / 2})
            decoded(whole.substr(0, size)); // a part of a picture may do, but harms nobody
    EXPECT_TRUE(decoded(png.substr(0, 30)).isNull());
    EXPECT_FALSE(decoded(encoded(filled(2048, 2048, Qt::red), "PNG")).isNull()) << "the limit";
    EXPECT_TRUE(decoded("<!DOCTYPE html><title>Not found</title>").isNull());
    EXPECT_TRUE(decoded("P6 1 1 255\nabc").isNull()) << "a format that no site has";

    EXPECT_TRUE(decoded(encoded(filled(2049, 1, Qt::red), "PNG")).isNull());
    std::string claiming = png; // width and height of its header
    const quint32 huge = qToBigEndian(quint32(60'000));
    for (const std::size_t place : {16u, 20u})
        claiming.replace(place, 4, reinterpret_cast<const char*>(&huge), 4);
    EXPECT_TRUE(decoded(claiming).isNull());
    EXPECT_TRUE(decoded(png + std::string(1 << 19, 'x')).isNull()) << "more than 512 KB";
    EXPECT_TRUE(HelperIconDecoder("/missing").decode(png) == std::nullopt);
}

TEST_F(HelperIconDecoderTest, RefusesDrawingsThatOpenFilesOrNeverEnd) {
    const TemporaryFolder folder;
    const std::string file = folder / "secret.png";
    writeFile(file, encoded(filled(20, 10, Qt::red), "PNG"));
    EXPECT_TRUE(decoded(svg("<image width='20' height='10' xlink:href='" + file + "'/>")).isNull());
    writeFile(folder / "secret.css", "rect { fill: #ff0000 }");
    EXPECT_TRUE(decoded("<?xml-stylesheet type='text/css' href='" +
                        (folder / "secret.css").string() + "'?>" +
                        svg("<rect width='20' height='10'/>").substr(21))
                    .isNull());
    EXPECT_TRUE(decoded("<!DOCTYPE svg [<!ENTITY a '<g/>'>]><svg>&a;</svg>").isNull());
    writeFile(folder / "own.dtd", "<!ENTITY a \"<rect width='20' height='10'/>\">");
    EXPECT_TRUE(decoded("<!DOCTYPE svg SYSTEM '" + (folder / "own.dtd").string() + "'>" +
                        svg("&a;").substr(21))
                    .isNull());
    EXPECT_TRUE(decoded(svg("<rect")).isNull());
    EXPECT_TRUE(decoded("<svg xmlns='http://www.w3.org/2000/svg'/>").isNull());

    // A thousand uses of a thousand uses of a thousand circles.
    const auto repeated = [](const std::string& element) {
        std::string text;
        for (int i = 0; i < 1000; ++i)
            text += element;
        return text;
    };
    const std::string endless = "<g id='a'>" + repeated("<circle r='9'/>") + "</g><g id='b'>" +
                                repeated("<use xlink:href='#a'/>") + "</g>" +
                                repeated("<use xlink:href='#b'/>");
    EXPECT_TRUE(decoded(svg(endless)).isNull());
    std::string deep;
    for (int i = 0; i < 100; ++i)
        deep += repeated("<g>");
    EXPECT_TRUE(decoded(svg(deep)).isNull());
    decoded(svg("<g id='a'><use xlink:href='#a'/></g>")); // comes back
}

TEST_F(HelperIconDecoderTest, EndsAtOnceWhenCancelled) {
    const TemporaryFolder folder;
    // Ends by itself, with an icon, as soon as it may.
    writeFile(folder / "helper", "#!/bin/sh\ncd '" + folder.path.string() +
                                     "'\ntouch started\n"
                                     "until test -e go; do sleep 0.01; done\n"
                                     "head -c 9216 /dev/zero\n");
    std::filesystem::permissions(folder / "helper", std::filesystem::perms::owner_all);
    const std::string png = encoded(filled(1, 1, Qt::red), "PNG");
    const auto run = [&](HelperIconDecoder& slow) {
        return std::async(std::launch::async, [&] { return slow.decode(png).has_value(); });
    };
    const auto hasStarted = [&] { return std::filesystem::exists(folder / "started"); };

    HelperIconDecoder slow(folder / "helper");
    auto running = run(slow);
    ASSERT_TRUE(eventually(hasStarted));
    slow.cancelAll();
    EXPECT_FALSE(running.get());
    std::filesystem::remove(folder / "started");
    writeFile(folder / "go", "");
    EXPECT_FALSE(slow.decode(png));
    EXPECT_FALSE(hasStarted());
    HelperIconDecoder fresh(folder / "helper");
    EXPECT_TRUE(run(fresh).get());
}

} // namespace
} // namespace tessaril
