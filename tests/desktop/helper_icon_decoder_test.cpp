#include "desktop/helper_icon_decoder.h"
#include "support/event_loop.h"
#include "support/temporary_folder.h"
#include "support/test.h"

#include <QBuffer>
#include <QDataStream>
#include <QImage>

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

/// An icon file of square PNG pictures.
std::string icoOf(const std::vector<QImage>& images) {
    QByteArray directory;
    QDataStream out(&directory, QIODevice::WriteOnly);
    out.setByteOrder(QDataStream::LittleEndian);
    out << quint16(0) << quint16(1) << quint16(images.size());
    std::string pictures;
    for (const QImage& image : images) {
        const std::string png = encoded(image, "PNG");
        out << quint8(image.width()) << quint8(image.width()) << quint16(0) << quint16(1)
            << quint16(32) << quint32(png.size())
            << quint32(6 + 16 * images.size() + pictures.size());
        pictures += png;
    }
    return directory.toStdString() + pictures;
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
    const std::string jpeg = encoded(filled(64, 64, Qt::red), "JPEG");
    for (const std::string& whole : {png, icoOf({filled(64, 64, Qt::red)}), jpeg})
        for (const std::size_t size : {std::size_t{0}, std::size_t{9}, whole.size() / 2})
            decoded(whole.substr(0, size)); // a part of a picture may do, but harms nobody
    EXPECT_FALSE(decoded(encoded(filled(2048, 2048, Qt::red), "PNG")).isNull()) << "the limit";
    std::string claiming = png; // width and height of its header
    for (const std::size_t place : {16u, 20u})
        claiming.replace(place, 4, std::string("\0\0\xEA\x60", 4));
    for (const std::string& refused :
         {png.substr(0, 30), std::string("<!DOCTYPE html><title>Not found</title>"),
          std::string("P6 1 1 255\nabc"), // a format that no site has
          encoded(filled(2049, 1, Qt::red), "PNG"), claiming,
          png + std::string(1 << 19, 'x')}) // more than 512 KB
        EXPECT_TRUE(decoded(refused).isNull()) << refused.substr(0, 30);
    EXPECT_FALSE(HelperIconDecoder("/missing").decode(png));
}

TEST_F(HelperIconDecoderTest, RefusesDrawingsThatOpenFilesOrNeverEnd) {
    const TemporaryFolder folder;
    const auto file = [&](const char* name, const std::string& content) {
        writeFile(folder / name, content);
        return "'" + (folder / name).string() + "'";
    };
    const std::string red = file("red.png", encoded(filled(20, 10, Qt::red), "PNG"));
    const std::string rules = file("rules.css", "rect { fill: #ff0000 }");
    const std::string own = file("own.dtd", "<!ENTITY a \"<rect width='20' height='10'/>\">");
    const auto bare = [](const std::string& content) { return svg(content).substr(21); };
    const auto repeated = [](const std::string& element, int times = 1000) {
        std::string text;
        while (times-- > 0)
            text += element;
        return text;
    };
    for (const std::string& refused :
         {svg("<image width='20' height='10' xlink:href=" + red + "/>"),
          "<?xml-stylesheet type='text/css' href=" + rules + "?>" +
              bare("<rect width='20' height='10'/>"),
          std::string("<!DOCTYPE svg [<!ENTITY a '<g/>'>]><svg>&a;</svg>"),
          "<!DOCTYPE svg SYSTEM " + own + ">" + bare("&a;"), svg("<rect"),
          std::string("<svg xmlns='http://www.w3.org/2000/svg'/>"),
          // A thousand uses of a thousand uses of a thousand circles.
          svg("<g id='a'>" + repeated("<circle r='9'/>") + "</g><g id='b'>" +
              repeated("<use xlink:href='#a'/>") + "</g>" + repeated("<use xlink:href='#b'/>")),
          svg(repeated("<g>", 100'000))})
        EXPECT_TRUE(decoded(refused).isNull()) << refused.substr(0, 200);
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
