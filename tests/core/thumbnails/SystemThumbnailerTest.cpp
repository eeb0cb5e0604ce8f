#include "support/CameraJpegs.h"
#include "support/TestDir.h"

#include "core/thumbnails/SystemThumbnailer.h"
#include "core/thumbnails/ThumbnailCache.h"
#include "core/thumbnails/VideoThumbnailGenerator.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QProcess>
#include <QStandardPaths>

#include <sys/stat.h>
#include <utime.h>

#include <gtest/gtest.h>

namespace {

void setModified(const QString &path, qint64 seconds)
{
    struct utimbuf times = {seconds, seconds};
    ::utime(QFile::encodeName(path).constData(), &times);
}

class SystemThumbnailerTest : public ::testing::Test
{
protected:
    SystemThumbnailResult thumbnail(const QString &path, double points = 400, double scale = 2)
    {
        return thumbnailer.thumbnail(SystemThumbnailRequest(QFile::encodeName(path), QSizeF(points, points), scale));
    }

    TestDir dir;
    ThumbnailCache cache{dir.filePath("cache")};
    SystemThumbnailer thumbnailer{cache};
};

TEST_F(SystemThumbnailerTest, RendersOnceThenAnswersFromTheCacheUntilTheFileChanges)
{
    dir.mkdir("photos");
    const QString photo = CameraJpegs::write(dir.filePath("photos/photo one.jpg"), QSize(3000, 2000), {}, {});
    setModified(photo, 1700000000);

    const SystemThumbnailResult first = thumbnail(photo);
    EXPECT_EQ(first.source, ThumbnailSource::rendered);
    EXPECT_EQ(first.image.size(), QSize(800, 532));

    // Written at the freedesktop size that covers 800 pixels, named by the URI's MD5, tagged.
    const QString uri = ThumbnailCache::uriForNativePath(QFile::encodeName(photo));
    EXPECT_TRUE(uri.endsWith("/photos/photo%20one.jpg"));
    const QString entry = cache.entryPath(uri, ThumbnailCache::Flavor::xxLarge);
    const QImage stored(entry);
    EXPECT_EQ(stored.text("Thumb::URI"), uri);
    EXPECT_EQ(stored.text("Thumb::MTime"), "1700000000");
    EXPECT_EQ(stored.size(), QSize(1024, 682));
    EXPECT_EQ(QFileInfo(entry).permissions() & (QFile::ReadOther | QFile::ReadGroup), 0);

    const SystemThumbnailResult second = thumbnail(photo);
    EXPECT_EQ(second.source, ThumbnailSource::cached);
    EXPECT_EQ(second.image.size(), QSize(800, 532));
    EXPECT_EQ(second.image.convertToFormat(QImage::Format_RGB32), first.image.convertToFormat(QImage::Format_RGB32));
    // A smaller request is served from the larger entry.
    EXPECT_EQ(thumbnail(photo, 64, 1).source, ThumbnailSource::cached);

    // An entry written by another program (Qt's writer: every row filter, the URI as zTXt) reads
    // back pixel for pixel.
    QImage foreign(300, 200, QImage::Format_ARGB32);
    for (int y = 0; y < foreign.height(); ++y)
        for (int x = 0; x < foreign.width(); ++x)
            foreign.setPixel(x, y, qRgba(x % 256, (x * y) % 256, (y * 7) % 256, 128 + (x + y) % 128));
    foreign.setText("Thumb::URI", uri);
    foreign.setText("Thumb::MTime", "1700000000");
    QDir().mkpath(cache.root() + "/large");
    ASSERT_TRUE(foreign.save(cache.entryPath(uri, ThumbnailCache::Flavor::large), "PNG"));
    const QImage read = cache.lookup(uri, 1700000000, ThumbnailCache::Flavor::large);
    EXPECT_EQ(read.convertToFormat(QImage::Format_ARGB32), foreign);

    setModified(photo, 1700000100);
    EXPECT_EQ(thumbnail(photo).source, ThumbnailSource::rendered);
    EXPECT_EQ(QImage(entry).text("Thumb::MTime"), "1700000100");
}

TEST_F(SystemThumbnailerTest, FailuresAreRememberedAndCacheCanBeBypassed)
{
    const QString junk = dir.write("junk.jpg", QByteArray("\xFF\xD8\xFF\xE0 not really", 16));
    const SystemThumbnailResult failed = thumbnail(junk);
    EXPECT_EQ(failed.source, ThumbnailSource::failed);
    ASSERT_TRUE(failed.error);
    const QString uri = ThumbnailCache::uriForNativePath(QFile::encodeName(junk));
    EXPECT_TRUE(QFile::exists(cache.failurePath(uri)));
    EXPECT_TRUE(cache.failurePath(uri).contains("/fail/pixcove/"));
    EXPECT_TRUE(thumbnail(junk).error);

    // Without the cache nothing is read or written.
    const QString photo = CameraJpegs::write(dir.filePath("photo.jpg"), QSize(300, 200), {}, {});
    thumbnailer.setCacheEnabled(false);
    EXPECT_EQ(thumbnail(photo).source, ThumbnailSource::rendered);
    EXPECT_EQ(thumbnail(photo).source, ThumbnailSource::rendered);
    EXPECT_FALSE(QFile::exists(
        cache.entryPath(ThumbnailCache::uriForNativePath(QFile::encodeName(photo)), ThumbnailCache::Flavor::xxLarge)));
}

TEST_F(SystemThumbnailerTest, VideoThumbnailIsAFrameFromPastTheBlackStart)
{
    if (QStandardPaths::findExecutable("ffmpeg").isEmpty())
        GTEST_SKIP() << "ffmpeg is not installed";
    // Two seconds of black, then eight of white: 10% in is still black, the next try is not.
    const QString video = dir.filePath("clip.mp4");
    QProcess ffmpeg;
    ffmpeg.start("ffmpeg",
                 {"-v", "error", "-f", "lavfi", "-i", "color=c=black:s=320x240:d=2:r=10", "-f", "lavfi", "-i",
                  "color=c=white:s=320x240:d=8:r=10", "-filter_complex", "[0][1]concat=n=2:v=1", "-pix_fmt", "yuv420p",
                  "-g", "5", video});
    ASSERT_TRUE(ffmpeg.waitForFinished(60000));
    ASSERT_TRUE(QFile::exists(video));

    const SystemThumbnailResult result = thumbnail(video, 100, 1);
    ASSERT_FALSE(result.image.isNull()) << result.error->description.toStdString();
    EXPECT_EQ(result.image.size(), QSize(100, 75));
    EXPECT_GT(qGray(result.image.pixel(50, 37)), 200);

    // Frames at chosen times for the viewer, handed back on the GUI thread; a cancelled
    // request hands back nothing.
    VideoThumbnailGenerator frames;
    QList<QImage> got;
    bool delivered = false;
    frames.generate(QFile::encodeName(video), {0.5, 6.0}, QSize(64, 64),
                    [&](const QList<QImage> &images, std::optional<ThumbnailError> error) {
                        EXPECT_FALSE(error);
                        got = images;
                        delivered = true;
                    });
    bool cancelledDelivered = false;
    frames
        .generate(QFile::encodeName(video), {1.0}, QSize(64, 64),
                  [&](const QList<QImage> &, auto) { cancelledDelivered = true; })
        ->cancel();
    ASSERT_TRUE(waitUntil([&] { return delivered; }, 20000));
    ASSERT_EQ(got.size(), 2);
    EXPECT_EQ(got.at(0).size(), QSize(64, 48));
    EXPECT_LT(qGray(got.at(0).pixel(32, 24)), 30);
    EXPECT_GT(qGray(got.at(1).pixel(32, 24)), 200);
    QCoreApplication::processEvents();
    EXPECT_FALSE(cancelledDelivered);
}

} // namespace
