#include "core/activities/ActivitiesSupport.h"
#include "core/activities/ImageRotationActivity.h"
#include "core/imaging/OrientationTag.h"
#include "core/thumbnails/ThumbnailCache.h"
#include "support/TestImages.h"

#include <QBuffer>
#include <QImage>
#include <QImageReader>
#include <QImageWriter>
#include <QSignalSpy>
#include <QTransform>

#include <gtest/gtest.h>

namespace {

using Turn = JpegRotation::Turn;

// A picture whose every pixel differs, so that a turn the wrong way or a lossy write shows.
QImage pattern(int width, int height)
{
    QImage image(width, height, QImage::Format_ARGB32);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, qRgba(x * 37 % 256, y * 59 % 256, (x * y * 11) % 256, 255));
    }
    return image;
}

QImage readImage(const QString &path, bool autoTransform = false)
{
    QImageReader reader(path);
    reader.setAutoTransform(autoTransform);
    return reader.read().convertToFormat(QImage::Format_ARGB32);
}

QString writeImage(const QString &path, const QImage &image, const char *format)
{
    QImageWriter writer(path, format);
    writer.setQuality(100);
    EXPECT_TRUE(writer.write(image)) << writer.errorString().toStdString();
    return path;
}

} // namespace

TEST(ImageRotation, TurnsEachFormatWithoutLossAndKeepsItsLabels)
{
    TestDir dir;
    const QImage picture = pattern(24, 16);
    const QImage clockwise = picture.transformed(QTransform().rotate(90));
    const QImage counterclockwise = picture.transformed(QTransform().rotate(-90));

    const QString png = writeImage(dir.filePath("picture.png"), picture, "png");
    setTags(png, "Red");
    ImageRotationActivity::Result result = ImageRotationActivity::rotateFile(png, Turn::clockwise);
    ASSERT_TRUE(result.ok) << result.error.toStdString();
    EXPECT_TRUE(result.pixelsTurned);
    EXPECT_EQ(readImage(png), clockwise);
    EXPECT_EQ(tagsOf(png), "Red");

    const QString webp = writeImage(dir.filePath("picture.webp"), picture, "webp");
    ASSERT_EQ(readImage(webp), picture); // written losslessly
    result = ImageRotationActivity::rotateFile(webp, Turn::counterclockwise);
    ASSERT_TRUE(result.ok) << result.error.toStdString();
    EXPECT_EQ(readImage(webp), counterclockwise);

    // JPEG: the blocks move, the orientation is folded in.
    TestImages::JpegOptions options;
    options.orientation = 6;
    const QString jpeg = TestImages::writeJpeg(dir.filePath("photo.jpg"), QSize(32, 16), options);
    setTags(jpeg, "Blue");
    EXPECT_EQ(readImage(jpeg, true).size(), QSize(16, 32));
    result = ImageRotationActivity::rotateFile(jpeg, Turn::clockwise);
    ASSERT_TRUE(result.ok) << result.error.toStdString();
    EXPECT_TRUE(result.pixelsTurned);
    EXPECT_EQ(readImage(jpeg, false).size(), QSize(32, 16)); // stored upright, orientation 1
    EXPECT_EQ(readImage(jpeg, true).size(), QSize(32, 16));
    EXPECT_EQ(tagsOf(jpeg), "Blue");

    // TIFF keeps its pixels and turns by its orientation tag.
    const QString tiff = writeImage(dir.filePath("scan.tif"), picture, "tiff");
    result = ImageRotationActivity::rotateFile(tiff, Turn::clockwise);
    ASSERT_TRUE(result.ok) << result.error.toStdString();
    EXPECT_FALSE(result.pixelsTurned);
    EXPECT_EQ(readImage(tiff, false), picture);
    EXPECT_EQ(readImage(tiff, true), clockwise);
    EXPECT_EQ(entriesOf(dir.path()), (QStringList{"photo.jpg", "picture.png", "picture.webp", "scan.tif"}));
}

TEST(ImageRotation, OrientationTagsTurnRoundTheEight)
{
    EXPECT_EQ(OrientationTag::turned(1, true), 6);
    EXPECT_EQ(OrientationTag::turned(6, true), 3);
    EXPECT_EQ(OrientationTag::turned(1, false), 8);
    EXPECT_EQ(OrientationTag::turned(2, true), 7); // mirrored, then turned right
    EXPECT_EQ(OrientationTag::turned(0, true), 6); // no tag reads as upright
    for (int orientation = 1; orientation <= 8; ++orientation) {
        EXPECT_EQ(OrientationTag::turned(OrientationTag::turned(orientation, true), false), orientation);
        int turned = orientation;
        for (int i = 0; i < 4; ++i)
            turned = OrientationTag::turned(turned, true);
        EXPECT_EQ(turned, orientation);
    }
}

TEST(ImageRotation, AFileThatCannotBeTurnedIsLeftAsItWas)
{
    TestDir dir;
    const QByteArray broken = QByteArray("\x89PNG\r\n\x1a\n", 8) + "not really";
    const QString png = dir.write(QStringLiteral("broken.png"), broken);
    const QString gif = dir.write(QStringLiteral("clip.gif"), "GIF89a");
    for (const QString &path : {png, gif}) {
        const ImageRotationActivity::Result result = ImageRotationActivity::rotateFile(path, Turn::clockwise);
        EXPECT_FALSE(result.ok);
        EXPECT_FALSE(result.error.isEmpty());
    }
    EXPECT_EQ(readAll(png), broken);
    EXPECT_EQ(readAll(gif), "GIF89a");

    // Another user may read the picture but not change its folder: nothing changes.
    ::chmod(QFile::encodeName(dir.path()).constData(), 0755);
    const QString good = writeImage(dir.filePath("good.png"), pattern(8, 4), "png");
    const QByteArray before = readAll(good);
    const QByteArray answer = inChildProcess(
        [&] {
            const ImageRotationActivity::Result result = ImageRotationActivity::rotateFile(good, Turn::clockwise);
            return result.ok ? QByteArray("turned") : QByteArray("refused");
        },
        65534);
    EXPECT_EQ(answer, "refused");
    EXPECT_EQ(readAll(good), before);
    EXPECT_EQ(entriesOf(dir.path()), (QStringList{"broken.png", "clip.gif", "good.png"}));
}

TEST(ImageRotation, ACancelledRotationFinishesAtOnceAndLeavesEveryFileWhole)
{
    ActivitiesFixture f;
    QList<PXFilePtr> files;
    for (int i = 0; i < 6; ++i)
        files << PXFile::fileForPath(
            writeImage(f.dir.filePath(QStringLiteral("p%1.png").arg(i)), pattern(300, 200), "png"));
    QSignalSpy rotated(f.manager.get(), &ActivitiesManager::imagesRotated);
    bool done = false;
    FileOperationOutcome outcome;
    ActivityItem *item = f.manager->rotateImages(files, Turn::clockwise, [&](const FileOperationOutcome &result) {
        outcome = result;
        done = true;
    });
    ASSERT_TRUE(item);
    item->cancel();
    EXPECT_EQ(item->state(), ActivityItem::State::finished);
    ASSERT_TRUE(waitUntil([&] { return done; }));
    EXPECT_TRUE(outcome.cancelled);
    for (const PXFilePtr &file : files) {
        const QSize size = readImage(file->path()).size();
        EXPECT_TRUE(size == QSize(300, 200) || size == QSize(200, 300)) << file->path().toStdString();
    }
    EXPECT_EQ(entriesOf(f.dir.path()).filter(QStringLiteral(".pixcove")).size(), 0);
    EXPECT_LE(rotated.count(), 1);

    // Run to the end, the file turns, its cached thumbnail with it, and the panes hear of it.
    const ThumbnailCache cache(f.dir.filePath(QStringLiteral("cache")));
    f.manager->setThumbnailCacheRoot(cache.root());
    const QString uri = ThumbnailCache::uriForNativePath(files.first()->nativePath());
    const QImage thumbnail = pattern(120, 80);
    const qint64 modified = QFileInfo(files.first()->path()).lastModified().toSecsSinceEpoch();
    ASSERT_TRUE(cache.store(uri, modified, ThumbnailCache::Flavor::normal, thumbnail));
    done = false;
    const QSize before = readImage(files.first()->path()).size();
    f.manager->rotateImages({files.first()}, Turn::counterclockwise,
                            [&](const FileOperationOutcome &) { done = true; });
    ASSERT_TRUE(waitUntil([&] { return done; }));
    EXPECT_EQ(readImage(files.first()->path()).size(), before.transposed());
    const qint64 now = QFileInfo(files.first()->path()).lastModified().toSecsSinceEpoch();
    EXPECT_EQ(cache.lookup(uri, now, ThumbnailCache::Flavor::normal).convertToFormat(QImage::Format_ARGB32),
              thumbnail.transformed(QTransform().rotate(-90)));
    ASSERT_FALSE(rotated.isEmpty());
    EXPECT_EQ(rotated.last().at(0).value<QList<PXFilePtr>>(), QList<PXFilePtr>{files.first()});
}
