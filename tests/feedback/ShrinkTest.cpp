// Pictures are drawn again from their pixels: a camera photo comes out small enough and with
// nothing of its file left but the picture.
#include "feedback/Feedback.h"
#include "feedback/FeedbackShrink.h"
#include "fakes/TempFolder.h"
#include "platform/linux/LoadedImages.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QEventLoop>
#include <QImage>
#include <QRandomGenerator>
#include <fstream>
#include <gtest/gtest.h>

namespace orvan {
namespace {

std::string encode(const QImage& image, const char* format, int quality = -1) {
    QByteArray out;
    QBuffer buffer(&out);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format, quality);
    return out.toStdString();
}

// A busy picture, as a camera's is: smooth colour with grain, so JPEG can't make it tiny.
QImage photo(int width, int height) {
    QImage image(width, height, QImage::Format_RGB32);
    QRandomGenerator noise(7);
    for (int y = 0; y < height; ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < width; ++x) {
            const int grain = static_cast<int>(noise.bounded(64));
            line[x] = qRgb((x * 255 / width + grain) % 256, (y * 255 / height + grain) % 256, (x + y + grain) % 256);
        }
    }
    return image;
}

void put16(std::string& out, int value) {
    out += static_cast<char>(value & 0xFF);
    out += static_cast<char>((value >> 8) & 0xFF);
}
void put32(std::string& out, std::uint32_t value) {
    for (int i = 0; i < 4; ++i) out += static_cast<char>((value >> (8 * i)) & 0xFF);
}

// An APP1 Exif segment with a description and a GPS block holding a latitude reference, put right
// after the start-of-image marker, where cameras put it.
std::string withExif(const std::string& jpeg) {
    std::string tiff = "II*";
    tiff += '\0';
    put32(tiff, 8);
    // IFD0: ImageDescription (ASCII, at 38) and the GPS IFD pointer (at 50).
    put16(tiff, 2);
    put16(tiff, 0x010E), put16(tiff, 2), put32(tiff, 12), put32(tiff, 38);
    put16(tiff, 0x8825), put16(tiff, 4), put32(tiff, 1), put32(tiff, 50);
    put32(tiff, 0);
    tiff += std::string("WHERE-I-LIV") + '\0';
    // GPS IFD: GPSLatitudeRef "N".
    put16(tiff, 1);
    put16(tiff, 0x0001), put16(tiff, 2), put32(tiff, 2);
    tiff += 'N';
    tiff += std::string(3, '\0');
    put32(tiff, 0);
    std::string segment = std::string("Exif\0\0", 6) + tiff;
    std::string app1 = "\xFF\xE1";
    const std::size_t length = segment.size() + 2;
    app1 += static_cast<char>(length >> 8);
    app1 += static_cast<char>(length & 0xFF);
    return jpeg.substr(0, 2) + app1 + segment + jpeg.substr(2);
}

// The markers of the segments before the image data.
std::vector<int> headerMarkers(const std::string& jpeg) {
    std::vector<int> markers;
    std::size_t at = 2;
    while (at + 4 <= jpeg.size() && static_cast<unsigned char>(jpeg[at]) == 0xFF) {
        const int marker = static_cast<unsigned char>(jpeg[at + 1]);
        markers.push_back(marker);
        if (marker == 0xDA) break;
        at += 2 + (static_cast<unsigned char>(jpeg[at + 2]) << 8 | static_cast<unsigned char>(jpeg[at + 3]));
    }
    return markers;
}

TEST(FeedbackShrinkTest, ACameraPhotoComesOutSmallAndWithoutItsMetadata) {
    LoadedImages images(ORVAN_IMAGES_MODULE);
    const std::string original = withExif(encode(photo(4000, 3000), "jpeg", 95));
    ASSERT_NE(original.find("WHERE-I-LIV"), std::string::npos);
    ASSERT_EQ(images.size(original), (Images::Size{4000, 3000}));

    const auto shrunk = FeedbackShrink::jpeg(images, original);
    ASSERT_TRUE(shrunk);
    EXPECT_LE(shrunk->size(), Feedback::imageBudget);
    const auto size = images.size(*shrunk);
    ASSERT_TRUE(size);
    EXPECT_LE(std::max(size->width, size->height), 1600);
    EXPECT_EQ(size->width * 3, size->height * 4);
    const auto markers = headerMarkers(*shrunk);
    ASSERT_FALSE(markers.empty());
    EXPECT_EQ(markers.back(), 0xDA);
    EXPECT_EQ(std::count(markers.begin(), markers.end(), 0xE1), 0);
    EXPECT_EQ(shrunk->find("Exif"), std::string::npos);
    EXPECT_EQ(shrunk->find("WHERE-I-LIV"), std::string::npos);
}

TEST(FeedbackShrinkTest, SmallPicturesKeepTheirSizeAndWhatIsNoPictureIsRefused) {
    LoadedImages images(ORVAN_IMAGES_MODULE);
    QImage dot(1, 1, QImage::Format_ARGB32);
    dot.fill(Qt::transparent);
    const auto kept = FeedbackShrink::jpeg(images, encode(dot, "png"));
    ASSERT_TRUE(kept);
    EXPECT_EQ(images.size(*kept), (Images::Size{1, 1}));
    // Transparency is drawn on white.
    QImage back;
    back.loadFromData(QByteArray::fromStdString(*kept));
    EXPECT_GT(qGray(back.pixel(0, 0)), 240);
    for (const std::string& bad : {std::string(), std::string("not a picture"), std::string("\xFF\xD8\xFF\xE0garbage", 11)})
        EXPECT_FALSE(FeedbackShrink::jpeg(images, bad));
}

TEST(FeedbackShrinkTest, TheRedrawRunsOnAnotherThreadAndComesBackThroughTheEventLoop) {
    int argc = 0;
    QCoreApplication app(argc, nullptr);
    LoadedImages images(ORVAN_IMAGES_MODULE);
    std::optional<std::vector<std::optional<std::string>>> results;
    QEventLoop loop;
    std::vector<std::string> pictures{encode(photo(40, 30), "png"), "junk"};
    spawn([](const Images& i, std::vector<std::string> p, auto* out, QEventLoop* l) -> Task<void> {
        *out = co_await FeedbackShrink::offMainThread(i, std::move(p));
        l->quit();
    }(images, std::move(pictures), &results, &loop));
    // Nothing came back before the loop ran: the work was not done on this thread in the call.
    EXPECT_FALSE(results);
    loop.exec();
    ASSERT_TRUE(results);
    ASSERT_EQ(results->size(), 2u);
    EXPECT_TRUE((*results)[0]);
    EXPECT_FALSE((*results)[1]);
}

// The programs reach pictures through the module they load; one they can't load reads nothing,
// and only a module named by its full path is ever opened.
TEST(LoadedImagesTest, TheModuleReadsAndRedrawsAndAMissingOneReadsNothing) {
    const std::string png = encode(photo(40, 30), "png");
    LoadedImages module(ORVAN_IMAGES_MODULE);
    EXPECT_EQ(module.size(png), (Images::Size{40, 30}));
    EXPECT_EQ(QImage::fromData(QByteArray::fromStdString(module.redrawJpeg(png, 20, 0.8)), "JPEG").size(), QSize(20, 15));
    test::TempFolder temp;
    for (const std::filesystem::path& path : {temp.path() / "orvan-images.so", std::filesystem::path("orvan-images.so")}) {
        SCOPED_TRACE(path.string());
        LoadedImages missing(path);
        EXPECT_EQ(missing.size(png), std::nullopt);
        EXPECT_EQ(missing.redrawJpeg(png, 20, 0.8), "");
    }
}

TEST(FeedbackShrinkTest, ModelIsReadTrimmedFromTheFirmwareFile) {
    test::TempFolder temp;
    const auto file = temp.path() / "product_name";
    std::ofstream(file) << "Mac14,2  \nsecond line\n";
    EXPECT_EQ(FeedbackShrink::model(file), "Mac14,2");
    EXPECT_EQ(FeedbackShrink::model(temp.path() / "missing"), "");
}

} // namespace
} // namespace orvan
