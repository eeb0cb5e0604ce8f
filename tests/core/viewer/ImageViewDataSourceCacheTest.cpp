#include "core/viewer/ImageViewDataSourceCache.h"
#include "core/model/PXFile.h"
#include "core/viewer/DecodedImageCache.h"
#include "support/TestDir.h"

#include <QFile>

#include <QImage>

#include <gtest/gtest.h>

// The per-file view state a viewer keeps: seeding, carrying the scaling over, and the gradual
// trimming of pictures and entries. Files here are never read: pictures are handed in.

namespace {

PXFilePtr fileNamed(int number)
{
    return PXFile::fileForPath(QStringLiteral("/nonexistent/viewer-cache/IMG_%1.JPG").arg(number, 4, 10, QChar('0')));
}

QImage picture()
{
    QImage image(8, 6, QImage::Format_RGB32);
    image.fill(Qt::gray);
    return image;
}

class ImageViewDataSourceCacheTest : public ::testing::Test
{
protected:
    void SetUp() override { cache.setImageCache(nullptr); }

    ImageViewDataSourcePtr show(int number, ImageViewDefaults defaults = {})
    {
        const ImageViewDataSourcePtr dataSource = cache.dataSourceForShowing(fileNamed(number), defaults);
        dataSource->setThumbnail(picture());
        return dataSource;
    }

    ImageViewDataSourceCache cache;
};

} // namespace

TEST_F(ImageViewDataSourceCacheTest, NewFilesAreSeededFromTheDefault)
{
    ImageViewDefaults defaults;
    defaults.scalingMode = ImageViewScalingMode::percentage;
    defaults.percentage = 50;
    const ImageViewDataSourcePtr half = show(1, defaults);
    EXPECT_EQ(half->stickiness(), Stickiness::none);
    EXPECT_EQ(half->zoomLevel(), 0.5);

    defaults.scalingMode = ImageViewScalingMode::alwaysFit;
    EXPECT_EQ(show(2, defaults)->stickiness(), Stickiness::always);
    // A remembered file keeps its own state whatever the default says now.
    defaults.scalingMode = ImageViewScalingMode::shrinkToFit;
    EXPECT_EQ(show(1, defaults), half);
    EXPECT_EQ(half->stickiness(), Stickiness::none);
    EXPECT_EQ(half->zoomLevel(), 0.5);
}

TEST_F(ImageViewDataSourceCacheTest, RetainingScalingCarriesThePreviousFilesZoomIntoARememberedOne)
{
    ImageViewDefaults defaults;
    defaults.scalingMode = ImageViewScalingMode::alwaysFit;
    const ImageViewDataSourcePtr fitted = show(1, defaults);
    const ImageViewDataSourcePtr zoomed = show(2, defaults);
    zoomed->setStickiness(Stickiness::none);
    zoomed->setZoomLevel(3.0);
    zoomed->setVisibleRect(QRectF(100, 200, 300, 400));

    defaults.retainScalingFromPreviousFile = true;
    EXPECT_EQ(show(1, defaults), fitted);
    EXPECT_EQ(fitted->stickiness(), Stickiness::none);
    EXPECT_EQ(fitted->zoomLevel(), 3.0);
    EXPECT_EQ(fitted->visibleRect(), QRectF(100, 200, 300, 400));
    EXPECT_EQ(cache.previousDataSource(), fitted);

    // Without the choice, the file's own state stays.
    fitted->setStickiness(Stickiness::always);
    defaults.retainScalingFromPreviousFile = false;
    show(2, defaults);
    EXPECT_EQ(zoomed->zoomLevel(), 3.0);
    EXPECT_EQ(fitted->stickiness(), Stickiness::always);
}

TEST_F(ImageViewDataSourceCacheTest, TheSixteenthMostRecentFileDropsItsPictureOneStepAtATime)
{
    QList<ImageViewDataSourcePtr> shown;
    for (int number = 1; number <= 15; ++number) {
        shown.append(show(number));
        shown.last()->setZoomLevel(number / 10.0);
    }
    for (const ImageViewDataSourcePtr &dataSource : std::as_const(shown))
        EXPECT_FALSE(dataSource->image().isNull());

    // The 16th file makes the least recent one (index 15) drop its picture, never its zoom.
    shown.append(show(16));
    EXPECT_TRUE(shown[0]->image().isNull());
    EXPECT_EQ(shown[0]->imageQuality(), ImageViewDataSource::Quality::none);
    EXPECT_TRUE(shown[0]->imageSize().isEmpty());
    EXPECT_FALSE(shown[0]->imageLoaded());
    EXPECT_FALSE(shown[0]->thumbnailRequestCompleted());
    EXPECT_EQ(shown[0]->zoomLevel(), 0.1);
    EXPECT_FALSE(shown[1]->image().isNull());

    // After 17 files the two least recent have none; one more each show, not all at once.
    shown.append(show(17));
    EXPECT_TRUE(shown[1]->image().isNull());
    EXPECT_EQ(shown[1]->zoomLevel(), 0.2);
    EXPECT_FALSE(shown[2]->image().isNull());

    // Showing a file again makes it the most recent: the 16th is another one now.
    show(3);
    show(18);
    EXPECT_FALSE(shown[2]->image().isNull());
    EXPECT_TRUE(shown[3]->image().isNull());
    EXPECT_EQ(cache.count(), 18);
}

// A long walk through a folder keeps the decoded pictures of the recent files only, not as many
// as the shared cache's capacity would hold.
TEST_F(ImageViewDataSourceCacheTest, FilesSteppedPastLeaveTheDecodedPictureCacheToo)
{
    DecodedImageCache decoded;
    cache.setImageCache(&decoded);
    QImage large(400, 300, QImage::Format_RGB32);
    large.fill(Qt::darkGray);
    QList<ImageViewDataSourcePtr> shown;
    for (int number = 1; number <= 40; ++number) {
        shown.append(cache.dataSourceForShowing(fileNamed(number), {}));
        shown.last()->setThumbnail(picture());
        // As a finished decode does: the picture goes into the shared cache.
        decoded.insert(shown.last()->nativePath(),
                       {large, ImageViewDataSource::Quality::scaled, QSize(4000, 3000), {}, {}});
    }
    EXPECT_EQ(decoded.find(shown.first()->nativePath()).quality, ImageViewDataSource::Quality::none);
    EXPECT_EQ(decoded.find(shown.last()->nativePath()).quality, ImageViewDataSource::Quality::scaled);
    EXPECT_LE(decoded.totalCost(),
              (ImageViewDataSourceCache::decodedImagesKept + 1) * DecodedImageCache::costOf(large));
}

TEST_F(ImageViewDataSourceCacheTest, PastAThousandFilesTheLeastRecentIsForgotten)
{
    for (int number = 1; number <= 1000; ++number)
        show(number);
    EXPECT_EQ(cache.count(), 1000);
    ASSERT_TRUE(cache.find(fileNamed(1)));
    show(1001);
    EXPECT_EQ(cache.count(), 1000);
    EXPECT_FALSE(cache.find(fileNamed(1)));
    EXPECT_TRUE(cache.find(fileNamed(2)));
    EXPECT_TRUE(cache.find(fileNamed(1001)));
}

TEST(DecodedImageCache, KeepsTheBetterPictureAndStaysWithinItsBytes)
{
    using Quality = ImageViewDataSource::Quality;
    DecodedImageCache cache(qint64(1024) * 1024);
    QImage large(400, 256, QImage::Format_RGB32); // 400 KiB
    large.fill(Qt::red);
    QImage small(100, 64, QImage::Format_RGB32);
    small.fill(Qt::blue);

    cache.insert("/a", {large, Quality::scaled, QSize(4000, 2560), {}, {}});
    cache.insert("/a", {small, Quality::preview, QSize(4000, 2560), {}, {}});
    EXPECT_EQ(cache.find("/a").quality, Quality::scaled);
    EXPECT_EQ(cache.find("/a").image.size(), large.size());
    cache.insert("/a", {small, Quality::scaled, QSize(4000, 2560), {}, {}});
    EXPECT_EQ(cache.find("/a").image.size(), large.size());

    cache.insert("/b", {large, Quality::full, QSize(400, 256), {}, {}});
    EXPECT_EQ(cache.find("/a").quality, Quality::scaled); // used last: /b would go first
    cache.insert("/c", {large, Quality::full, QSize(400, 256), {}, {}});
    EXPECT_LE(cache.totalCost(), cache.capacity());
    EXPECT_EQ(cache.find("/b").quality, Quality::none);
    EXPECT_EQ(cache.find("/c").quality, Quality::full);

    // A picture larger than the whole cache is not kept (and evicts nothing).
    QImage huge(1024, 512, QImage::Format_RGB32);
    cache.insert("/d", {huge, Quality::full, QSize(1024, 512), {}, {}});
    EXPECT_EQ(cache.find("/d").quality, Quality::none);
    EXPECT_EQ(cache.find("/c").quality, Quality::full);
}

// A file written anew while the viewer held pictures of it (turned in place, say: a new file
// renamed over the old one): when it is shown again, neither its data source nor the shared
// picture cache answers with the old picture, and its zoom stays.
TEST_F(ImageViewDataSourceCacheTest, AFileWrittenAnewIsNotShownWithItsOldPicture)
{
    DecodedImageCache decoded;
    cache.setImageCache(&decoded);
    TestDir dir;
    const QString path = dir.write(QStringLiteral("IMG_0001.JPG"), "old");
    const PXFilePtr file = PXFile::fileForPath(path);
    ImageViewDefaults half;
    half.scalingMode = ImageViewScalingMode::percentage;
    half.percentage = 50;
    const ImageViewDataSourcePtr old = cache.dataSourceForShowing(file, half);
    QImage landscape(400, 300, QImage::Format_RGB32);
    landscape.fill(Qt::darkGray);
    decoded.insert(old->nativePath(),
                   {landscape, ImageViewDataSource::Quality::full, QSize(400, 300), {}, old->version()});
    cache.dataSourceForShowing(fileNamed(2), {}); // the user moves on
    EXPECT_EQ(cache.dataSourceForShowing(file, {}), old); // unchanged: the same state comes back
    EXPECT_FALSE(old->isOutdated());

    const QString turned = dir.write(QStringLiteral(".IMG_0001.JPG.turned"), "new");
    ASSERT_EQ(::rename(QFile::encodeName(turned).constData(), QFile::encodeName(path).constData()), 0);
    file->updateForEvent({ZQFileEventType::replaced, file->nativePath()});
    EXPECT_TRUE(old->isOutdated());
    const ImageViewDataSourcePtr fresh = cache.dataSourceForShowing(file, {});
    EXPECT_NE(fresh, old);
    EXPECT_EQ(fresh->zoomLevel(), 0.5);
    fresh->requestImage(QSize(400, 300));
    EXPECT_NE(fresh->imageQuality(), ImageViewDataSource::Quality::full); // the old picture is not adopted

    // The new version's first picture takes the old version's place, though of lower quality.
    QImage portrait(30, 40, QImage::Format_RGB32);
    portrait.fill(Qt::white);
    decoded.insert(fresh->nativePath(),
                   {portrait, ImageViewDataSource::Quality::preview, QSize(300, 400), {}, fresh->version()});
    EXPECT_EQ(decoded.find(fresh->nativePath()).imageSize, QSize(300, 400));
}
