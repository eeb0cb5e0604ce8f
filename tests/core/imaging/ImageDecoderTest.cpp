#include "support/CameraJpegs.h"
#include "support/TestDir.h"
#include "support/TestImages.h"

#include "core/imaging/EmbeddedPreview.h"
#include "core/imaging/ImageDecoder.h"

#include <QColorSpace>
#include <QDir>
#include <QFile>
#include <QPainter>

#include <gtest/gtest.h>

namespace {

QByteArray native(const QString &path)
{
    return QFile::encodeName(path);
}

// Mean absolute difference of two same-sized pictures, per channel, 0..255.
double difference(const QImage &a, const QImage &b)
{
    const QImage x = a.convertToFormat(QImage::Format_RGB32);
    const QImage y = b.convertToFormat(QImage::Format_RGB32).scaled(x.size());
    qint64 sum = 0;
    for (int row = 0; row < x.height(); ++row)
        for (int col = 0; col < x.width(); ++col) {
            const QRgb p = x.pixel(col, row), q = y.pixel(col, row);
            sum += qAbs(qRed(p) - qRed(q)) + qAbs(qGreen(p) - qGreen(q)) + qAbs(qBlue(p) - qBlue(q));
        }
    return double(sum) / (3.0 * x.width() * x.height());
}

TEST(ImageDecoderTest, JpegIsDecodedScaledAndUprightForEveryOrientation)
{
    const auto file = [](int orientation) {
        return native(TestImages::dataFile(QStringLiteral("orientation-%1.jpg").arg(orientation)));
    };
    ImageDecoder::Options options;
    options.fitSize = QSize(60, 60);
    QString error;
    const QImage reference = ImageDecoder::decode(file(1), options, &error);
    ASSERT_FALSE(reference.isNull()) << error.toStdString();
    EXPECT_EQ(reference.size(), QSize(60, 45));
    // The eight files were saved separately: upright they differ by a few levels (of 255); a
    // picture turned or mirrored the wrong way differs by 45 or more.
    constexpr double sameWayUp = 25;
    for (int orientation = 2; orientation <= 8; ++orientation) {
        const QImage image = ImageDecoder::decode(file(orientation), options, &error);
        ASSERT_EQ(image.size(), reference.size()) << orientation;
        EXPECT_LT(difference(image, reference), sameWayUp) << orientation;
    }
    // Full size is upright too.
    options.fitSize = {};
    const QImage full = ImageDecoder::decode(file(6), options, &error);
    EXPECT_EQ(full.size(), QSize(120, 90));
    EXPECT_LT(difference(full.scaled(reference.size()), reference), sameWayUp);

    // The camera corpus, when it is beside the checkout, adds photos saved by real software.
    const QString folder = TestImages::corpusDir() + "/jpg/orientation";
    if (QDir(folder).exists()) {
        options.fitSize = QSize(200, 200);
        const QImage camera = ImageDecoder::decode(native(folder + "/landscape_1.jpg"), options, &error);
        for (int orientation = 2; orientation <= 8; ++orientation) {
            const QString path = folder + QStringLiteral("/landscape_%1.jpg").arg(orientation);
            EXPECT_LT(difference(ImageDecoder::decode(native(path), options, &error), camera), sameWayUp)
                << orientation;
        }
    }
}

TEST(ImageDecoderTest, FormatComesFromTheBytesNotTheName)
{
    TestDir dir;
    QImage picture(300, 100, QImage::Format_ARGB32);
    picture.fill(Qt::blue);
    picture.save(dir.filePath("actually-png.jpg"), "PNG");
    picture.save(dir.filePath("picture.webp"), "WEBP");
    dir.write("drawing.svg", R"(<svg xmlns="http://www.w3.org/2000/svg" width="40" height="20">
        <rect width="40" height="20" fill="red"/></svg>)");

    ImageDecoder::Options options;
    options.fitSize = QSize(150, 150);
    QString error;
    for (const char *name : {"actually-png.jpg", "picture.webp"}) {
        const QImage image = ImageDecoder::decode(native(dir.filePath(name)), options, &error);
        EXPECT_EQ(image.size(), QSize(150, 50)) << name << " " << error.toStdString();
    }
    const QImage svg = ImageDecoder::decode(native(dir.filePath("drawing.svg")), options, &error);
    EXPECT_EQ(svg.size(), QSize(150, 75));
    EXPECT_EQ(qRed(svg.pixel(75, 37)), 255);
}

TEST(ImageDecoderTest, HeifDecodesAndHasAThumbnail)
{
    QStringList paths = {TestImages::dataFile(QStringLiteral("small-with-thumbnail.heic"))};
    if (const QString iphone = TestImages::corpusDir() + "/heic/IMG_5195.HEIC"; QFile::exists(iphone))
        paths.append(iphone);
    for (const QString &path : std::as_const(paths)) {
        ImageDecoder::Options options;
        options.fitSize = QSize(64, 64);
        QString error;
        const QImage image = ImageDecoder::decode(native(path), options, &error);
        ASSERT_FALSE(image.isNull()) << error.toStdString();
        EXPECT_EQ(qMax(image.width(), image.height()), 64);
        const QImage preview = EmbeddedPreview::read(native(path), 16, &error);
        if (path.endsWith(QLatin1String(".heic"))) {
            EXPECT_EQ(preview.size(), QSize(16, 12)) << "the small file's 32 x 24 thumbnail, scaled to what was asked";
        }
        if (!preview.isNull()) {
            EXPECT_LE(qMax(preview.width(), preview.height()), EmbeddedPreview::maxPixelSize);
            // Same picture, same way up.
            EXPECT_EQ(preview.width() > preview.height(), image.width() > image.height());
        }
        // The phone's Display P3 profile comes with its picture; the small file has none.
        if (path.endsWith(QLatin1String(".HEIC")))
            EXPECT_EQ(image.colorSpace().primaries(), QColorSpace::Primaries::DciP3D65);
        else
            EXPECT_FALSE(image.colorSpace().isValid());
    }
}

TEST(EmbeddedPreviewTest, TakesTheSmallestPreviewThatCoversAndNeverTheMainImage)
{
    TestDir dir;
    const QString both =
        CameraJpegs::write(dir.filePath("both.jpg"), QSize(2000, 1500), QSize(160, 120), QSize(1600, 1200), 8);
    QString error;
    // Small cells are served by the EXIF thumbnail, scaled to the cell; orientation 8 turns it
    // upright.
    EXPECT_EQ(EmbeddedPreview::read(native(both), 100, &error).size(), QSize(75, 100));
    EXPECT_EQ(EmbeddedPreview::read(native(both), 160, &error).size(), QSize(120, 160));
    // Larger ones by the MPF preview, at the size asked for: a grid keeps what it is given.
    EXPECT_EQ(EmbeddedPreview::read(native(both), 800, &error).size(), QSize(600, 800));
    // Nothing covers 2000: the largest there is.
    EXPECT_EQ(EmbeddedPreview::read(native(both), 2000, &error).size(), QSize(810, 1080));

    const QString none = CameraJpegs::write(dir.filePath("none.jpg"), QSize(2000, 1500), {}, {});
    EXPECT_TRUE(EmbeddedPreview::read(native(none), 100, &error).isNull());
    EXPECT_FALSE(error.isEmpty());

    // TIFF-based files go through the metadata library's preview list.
    const QString tiffFolder = TestImages::corpusDir() + "/tiff";
    for (const QString &name : QDir(tiffFolder).entryList({"*.tiff"})) {
        const QImage preview = EmbeddedPreview::read(native(tiffFolder + "/" + name), 100, &error);
        if (!preview.isNull()) {
            EXPECT_LE(qMax(preview.width(), preview.height()), EmbeddedPreview::maxPixelSize);
        }
    }
}

} // namespace
