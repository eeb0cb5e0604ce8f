#include "core/viewer/ImageViewDataSource.h"
#include "core/app/Dispatch.h"
#include "core/imaging/NclxProfile.h"
#include "core/model/PXFile.h"
#include "core/viewer/ColorTransform.h"
#include "core/viewer/DecodedImageCache.h"
#include "core/viewer/ImageLoading.h"

#include "core/fs/FileOperationsSupport.h"
#include "support/CameraJpegs.h"
#include "support/TestDir.h"
#include "support/TestImages.h"

#include <QBuffer>
#include <QColorSpace>
#include <QColorTransform>
#include <QFile>
#include <QSemaphore>
#include <QSignalSpy>
#include <QThread>

#include <gtest/gtest.h>

#include <png.h>

#include <cstdio>
#include <vector>

// Loading a file's picture in steps, off the GUI thread, from camera-like JPEGs and from files
// that are damaged, unreadable or very large.

namespace {

// A grey PNG, black above and white below, written a row at a time (too large to hold whole).
QString writeGrayPng(const QString &path, int width, int height)
{
    FILE *file = std::fopen(QFile::encodeName(path).constData(), "wb");
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, file);
    png_set_compression_level(png, 1);
    png_set_IHDR(png, info, png_uint_32(width), png_uint_32(height), 8, PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    std::vector<png_byte> row(static_cast<size_t>(width));
    for (int y = 0; y < height; ++y) {
        std::fill(row.begin(), row.end(), y < height / 2 ? 0 : 255);
        png_write_row(png, row.data());
    }
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    std::fclose(file);
    return path;
}

using Quality = ImageViewDataSource::Quality;

class ImageViewDataSourceTest : public ::testing::Test
{
protected:
    ImageViewDataSourcePtr sourceFor(const QString &path)
    {
        const ImageViewDataSourcePtr dataSource = ImageViewDataSource::create(PXFile::fileForPath(path));
        dataSource->setImageCache(&imageCache);
        return dataSource;
    }

    static bool waitForQuality(const ImageViewDataSourcePtr &dataSource, Quality quality)
    {
        return waitUntil([&] { return dataSource->imageQuality() >= quality && !dataSource->imageLoading(); }, 20000);
    }

    TestDir dir;
    DecodedImageCache imageCache;
};

} // namespace

TEST_F(ImageViewDataSourceTest, ACameraJpegArrivesAsPreviewThenAtTheViewsSizeThenWhole)
{
    const QString path = CameraJpegs::write(dir.filePath(QStringLiteral("IMG_0001.JPG")), QSize(3000, 2000),
                                            QSize(160, 120), QSize(1200, 800));
    const ImageViewDataSourcePtr dataSource = sourceFor(path);
    QList<Quality> seen;
    QObject::connect(dataSource.get(), &ImageViewDataSource::changed, [&] {
        if (seen.isEmpty() || seen.last() != dataSource->imageQuality())
            seen.append(dataSource->imageQuality());
    });

    // Only the first steps: the preview, with the image's full size.
    dataSource->requestImage({});
    ASSERT_TRUE(waitUntil([&] { return dataSource->thumbnailRequestCompleted(); }));
    EXPECT_EQ(dataSource->imageQuality(), Quality::preview);
    EXPECT_EQ(dataSource->imageSize(), QSize(3000, 2000));
    EXPECT_EQ(dataSource->image().size(), QSize(1080, 720)); // capped preview
    EXPECT_TRUE(dataSource->imageLoaded());
    // The MPF preview was painted dark blue, the main image not.
    EXPECT_LT(qGreen(dataSource->image().pixel(800, 600)), 40);

    // At the size of an 800 x 600 view: a reduced decode, not the whole image.
    dataSource->requestImage(QSize(800, 600));
    ASSERT_TRUE(waitForQuality(dataSource, Quality::scaled));
    EXPECT_EQ(dataSource->imageQuality(), Quality::scaled);
    EXPECT_EQ(dataSource->image().size(), QSize(800, 533));
    EXPECT_TRUE(dataSource->imageLoadRequestCompleted());
    EXPECT_TRUE(dataSource->covers(QSize(800, 600)));
    EXPECT_FALSE(dataSource->covers(QSize(1600, 1200)));

    // Zoomed past the fit: the whole image.
    dataSource->requestImage(QSize(3000, 2000));
    ASSERT_TRUE(waitForQuality(dataSource, Quality::full));
    EXPECT_EQ(dataSource->image().size(), QSize(3000, 2000));
    EXPECT_EQ(seen, (QList<Quality>{Quality::none, Quality::preview, Quality::scaled, Quality::full}));
    EXPECT_TRUE(dataSource->notice().isEmpty());

    // Another viewer's data source for the file starts from the cache, whole at once.
    const ImageViewDataSourcePtr again = sourceFor(path);
    again->requestImage(QSize(800, 600));
    EXPECT_EQ(again->imageQuality(), Quality::full);
    EXPECT_TRUE(again->imageLoaded());
    EXPECT_FALSE(again->imageLoading());
}

TEST_F(ImageViewDataSourceTest, APictureDroppedIgnoresTheStepsWaitingAndRunning)
{
    const QString path =
        CameraJpegs::write(dir.filePath(QStringLiteral("DSC_0002.JPG")), QSize(4000, 3000), QSize(), QSize(1200, 800));
    const ImageViewDataSourcePtr dataSource = sourceFor(path);
    QThreadPool *pool = namedThreadPool(QStringLiteral("Image Viewer"));
    auto settle = [&] {
        pool->waitForDone();
        QCoreApplication::processEvents();
    };
    auto nothingTaken = [&] {
        EXPECT_EQ(dataSource->imageQuality(), Quality::none);
        EXPECT_TRUE(dataSource->image().isNull());
        EXPECT_FALSE(dataSource->imageLoaded());
        // Neither in the shared cache (where the preview of the second part may be).
        EXPECT_LT(imageCache.find(dataSource->nativePath()).quality, Quality::scaled);
    };

    // Steps still waiting on the pool (its threads held here) never run.
    QSemaphore release;
    for (int i = 0; i < pool->maxThreadCount(); ++i)
        pool->start([&release] { release.acquire(); });
    dataSource->requestImage(QSize(4000, 3000));
    EXPECT_TRUE(dataSource->imageLoading());
    dataSource->dropImage();
    EXPECT_FALSE(dataSource->imageLoading());
    release.release(pool->maxThreadCount());
    settle();
    nothingTaken();

    // A decode already running finishes, and its picture is not taken.
    dataSource->requestImage({});
    ASSERT_TRUE(waitUntil([&] { return dataSource->thumbnailRequestCompleted(); }));
    dataSource->dropImage();
    dataSource->requestImage(QSize(4000, 3000));
    ASSERT_TRUE(waitUntil([&] { return pool->activeThreadCount() > 0; }));
    QThread::msleep(5); // inside the decode of 12 MP, which takes far longer
    dataSource->dropImage();
    settle();
    nothingTaken();

    // Asked again, it loads afresh.
    dataSource->requestImage(QSize(600, 400));
    ASSERT_TRUE(waitForQuality(dataSource, Quality::scaled));
}

TEST_F(ImageViewDataSourceTest, BadFilesSayWhyInPlaceAndPartialOnesShowWhatDecoded)
{
    // Truncated in its scan: the top decodes, and a notice says the rest is missing.
    const ImageViewDataSourcePtr truncated = sourceFor(TestImages::dataFile(QStringLiteral("truncated-in-scan.jpg")));
    truncated->requestImage(QSize(320, 240));
    ASSERT_TRUE(waitForQuality(truncated, Quality::full));
    EXPECT_EQ(truncated->image().size(), QSize(320, 240));
    EXPECT_FALSE(truncated->notice().isEmpty());
    EXPECT_TRUE(truncated->errorMessage().isEmpty());

    // Not an image, and no file at all: loaded, with a message instead of a picture.
    const QString garbage = dir.write(QStringLiteral("notes.jpg"), QByteArray("this is not a picture at all"));
    for (const QString &path : {garbage, dir.filePath(QStringLiteral("gone.jpg"))}) {
        const ImageViewDataSourcePtr bad = sourceFor(path);
        bad->requestImage(QSize(800, 600));
        ASSERT_TRUE(waitUntil([&] { return bad->imageLoaded() && !bad->imageLoading(); })) << qPrintable(path);
        EXPECT_TRUE(bad->image().isNull());
        EXPECT_FALSE(bad->errorMessage().isEmpty()) << qPrintable(path);
    }
}

// A picture the user may not read (tests run as root: the reading runs as another user).
TEST_F(ImageViewDataSourceTest, AnUnreadableFileSaysSoInsteadOfAPicture)
{
    ::chmod(QFile::encodeName(dir.path()).constData(), 0755);
    const QString path = TestImages::writeJpeg(dir.filePath(QStringLiteral("private.jpg")), QSize(320, 240));
    QFile(path).setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    const QByteArray answer = inChildProcess(
        [&] {
            const ImageLoading::Result preview = ImageLoading::preview(QFile::encodeName(path), 800);
            const ImageLoading::Result decoded = ImageLoading::decode(QFile::encodeName(path), QSize(800, 600), 0);
            return (preview.error + QLatin1Char('|') + decoded.error + QLatin1Char('|')
                    + (decoded.image.isNull() ? QLatin1String("no picture") : QLatin1String("a picture")))
                .toUtf8();
        },
        65534);
    const QStringList parts = QString::fromUtf8(answer).split(QLatin1Char('|'));
    ASSERT_EQ(parts.size(), 3) << answer.constData();
    EXPECT_TRUE(parts[1].contains(QStringLiteral("ermission"))) << answer.constData();
    EXPECT_EQ(parts[2], QStringLiteral("no picture"));
}

TEST_F(ImageViewDataSourceTest, AHugeJpegIsDecodedReducedWithinTheMemoryLimit)
{
    TestImages::JpegOptions options;
    options.sizeInHeaderOnly = true;
    const QString path = TestImages::writeJpeg(dir.filePath(QStringLiteral("pano.jpg")), QSize(30000, 30000), options);
    const ImageViewDataSourcePtr dataSource = sourceFor(path);
    // 64 MB: the whole image would need 3.6 GB.
    const qint64 limit = qint64(64) * 1024 * 1024;
    dataSource->setMemoryLimit(limit);
    dataSource->requestImage(QSize(30000, 30000));
    ASSERT_TRUE(waitUntil([&] { return dataSource->imageLoaded() && !dataSource->imageLoading(); }, 60000));
    EXPECT_TRUE(dataSource->errorMessage().isEmpty()) << qPrintable(dataSource->errorMessage());
    EXPECT_EQ(dataSource->imageSize(), QSize(30000, 30000));
    EXPECT_EQ(dataSource->imageQuality(), Quality::full);
    EXPECT_FALSE(dataSource->image().isNull());
    EXPECT_LE(dataSource->image().sizeInBytes(), limit);
    EXPECT_EQ(dataSource->image().size(), QSize(3750, 3750));

    // A scan as a PNG, 12 000 x 12 000 (576 MB decoded whole): read reduced a row at a time.
    const QString scan = writeGrayPng(dir.filePath(QStringLiteral("scan.png")), 12000, 12000);
    const ImageLoading::Result reduced = ImageLoading::decode(QFile::encodeName(scan), {}, limit);
    EXPECT_TRUE(reduced.error.isEmpty()) << qPrintable(reduced.error);
    EXPECT_EQ(reduced.imageSize, QSize(12000, 12000));
    EXPECT_LE(reduced.image.sizeInBytes(), limit);
    EXPECT_GT(reduced.image.width(), 3000);
    // The top half is black and the bottom half white, averaged as such.
    EXPECT_EQ(qGray(reduced.image.pixel(10, 10)), 0);
    EXPECT_EQ(qGray(reduced.image.pixel(10, reduced.image.height() - 10)), 255);

    const QSize within = ImageLoading::sizeWithinMemory(QSize(30000, 20000), limit);
    EXPECT_LE(qint64(within.width()) * within.height() * 4, limit);
    EXPECT_GT(qint64(within.width()) * within.height() * 4, limit * 0.99);
    EXPECT_NEAR(double(within.width()) / within.height(), 1.5, 0.001);
    EXPECT_EQ(ImageLoading::sizeWithinMemory(QSize(300, 200), limit), QSize(300, 200));
}

TEST_F(ImageViewDataSourceTest, AnEmbeddedProfileIsConvertedToSrgb)
{
    // A flat Adobe RGB picture with its profile in APP2, as cameras set to Adobe RGB write it.
    const QColor stored(60, 170, 90);
    QImage image(64, 48, QImage::Format_RGB32);
    image.fill(stored);
    QByteArray jpeg;
    QBuffer buffer(&jpeg);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "JPEG", 100);
    const QByteArray profile = QColorSpace(QColorSpace::AdobeRgb).iccProfile();
    ASSERT_FALSE(profile.isEmpty());
    // Split in two chunks, as long profiles are.
    const qsizetype half = profile.size() / 2;
    QByteArray segments;
    for (int chunk = 1; chunk <= 2; ++chunk) {
        const QByteArray part = chunk == 1 ? profile.left(half) : profile.mid(half);
        const int length = 2 + 14 + int(part.size());
        segments += QByteArray("\xFF\xE2", 2) + char(length >> 8) + char(length & 0xFF)
            + QByteArray("ICC_PROFILE\0", 12) + char(chunk) + char(2) + part;
    }
    jpeg.insert(2, segments);
    const QString path = dir.write(QStringLiteral("adobe.jpg"), jpeg);
    EXPECT_EQ(ColorTransform::jpegIccProfile(jpeg.left(2 + segments.size())), profile);
    // A missing chunk is no profile.
    const qsizetype secondChunk = 2 + 2 + 2 + 14 + half;
    EXPECT_TRUE(ColorTransform::jpegIccProfile(jpeg.left(2) + jpeg.mid(secondChunk)).isEmpty());

    const ImageLoading::Result result = ImageLoading::decode(QFile::encodeName(path), {}, 1 << 26);
    ASSERT_FALSE(result.image.isNull()) << qPrintable(result.error);
    const QColor shown = result.image.pixelColor(32, 24);
    const QColor expected =
        QColorSpace(QColorSpace::AdobeRgb).transformationToColorSpace(QColorSpace::SRgb).map(stored);
    EXPECT_NEAR(shown.red(), expected.red(), 6);
    EXPECT_NEAR(shown.green(), expected.green(), 6);
    EXPECT_NEAR(shown.blue(), expected.blue(), 6);
    // The conversion is visible: Adobe RGB's green is far wider than sRGB's.
    EXPECT_GT(std::abs(shown.red() - stored.red()) + std::abs(shown.blue() - stored.blue()), 10);

    // An sRGB profile, and bytes that are no profile, leave the picture as it is.
    QImage untouched = image;
    ColorTransform::toDisplay(untouched, QColorSpace(QColorSpace::SRgb).iccProfile());
    EXPECT_EQ(untouched, image);
    ColorTransform::toDisplay(untouched, QByteArray(600, 'p'));
    EXPECT_EQ(untouched, image);
}

TEST(NclxColour, CodePointsBecomeAProfileAndAPhonesDisplayP3PictureIsConverted)
{
    // What the made profiles say, read back as Qt reads profiles.
    const auto described = [](int primaries, int transfer) {
        return QColorSpace::fromIccProfile(NclxProfile::iccProfile(primaries, transfer));
    };
    EXPECT_EQ(described(12, 13).primaries(), QColorSpace::Primaries::DciP3D65);
    EXPECT_EQ(described(12, 13).transferFunction(), QColorSpace::TransferFunction::SRgb);
    EXPECT_EQ(described(1, 8).primaries(), QColorSpace::Primaries::SRgb);
    EXPECT_EQ(described(1, 8).transferFunction(), QColorSpace::TransferFunction::Linear);
    // An HDR curve keeps the gamut, with sRGB's curve.
    EXPECT_EQ(described(12, 16).primaries(), QColorSpace::Primaries::DciP3D65);
    EXPECT_EQ(described(12, 16).transferFunction(), QColorSpace::TransferFunction::SRgb);
    EXPECT_TRUE(described(9, 1).isValid()); // BT.2020
    // sRGB, unspecified and unknown primaries: nothing to convert.
    EXPECT_TRUE(NclxProfile::iccProfile(1, 13).isEmpty());
    EXPECT_TRUE(NclxProfile::iccProfile(1, 1).isEmpty());
    EXPECT_TRUE(NclxProfile::iccProfile(2, 13).isEmpty());
    EXPECT_TRUE(NclxProfile::iccProfile(200, 13).isEmpty());

    // A flat rgb(60, 160, 90) with an nclx box of Display P3 and no ICC profile: about
    // rgb(0, 163, 82) in sRGB; shown as sRGB it would stay rgb(60, 160, 90).
    const QByteArray path = QFile::encodeName(QStringLiteral(PIXCOVE_TEST_DATA_DIR "/nclx-display-p3.heic"));
    const ImageLoading::Result result = ImageLoading::decode(path, {}, 1 << 26);
    ASSERT_FALSE(result.image.isNull()) << qPrintable(result.error);
    const QColor shown = result.image.pixelColor(32, 32);
    EXPECT_LE(shown.red(), 12);
    EXPECT_NEAR(shown.green(), 163, 5);
    EXPECT_NEAR(shown.blue(), 82, 5);
}
