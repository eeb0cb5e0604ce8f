#include "support/CameraJpegs.h"
#include "support/TestDir.h"
#include "support/TestImages.h"

#include "core/imaging/EmbeddedPreview.h"
#include "core/imaging/ImageDecoder.h"
#include "core/thumbnails/SystemThumbnailer.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QtEndian>

#include <gtest/gtest.h>

namespace {

QByteArray native(const QString &path)
{
    return QFile::encodeName(path);
}

quint32 crc32(const QByteArray &bytes)
{
    quint32 crc = 0xFFFFFFFFu;
    for (const char byte : bytes) {
        crc ^= quint8(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1u)));
    }
    return ~crc;
}

QByteArray pngChunk(const char *type, const QByteArray &data)
{
    QByteArray chunk(4, '\0');
    qToBigEndian<quint32>(quint32(data.size()), chunk.data());
    const QByteArray body = QByteArray(type, 4) + data;
    QByteArray crc(4, '\0');
    qToBigEndian<quint32>(crc32(body), crc.data());
    return chunk + body + crc;
}

// A PNG that states 30 000 x 30 000 grey pixels but carries only its first rows: the header is
// all a decoder needs to decide whether it may allocate the image.
QByteArray hugePng()
{
    QByteArray header(13, '\0');
    qToBigEndian<quint32>(30000, header.data());
    qToBigEndian<quint32>(30000, header.data() + 4);
    header[8] = 8; // bit depth
    header[9] = 0; // grey
    QByteArray rows(10 * 30001, '\0');
    const QByteArray compressed = qCompress(rows).mid(4); // zlib stream without Qt's length prefix
    return QByteArray("\x89PNG\r\n\x1A\n", 8) + pngChunk("IHDR", header) + pngChunk("IDAT", compressed)
        + pngChunk("IEND", {});
}

QString writeNoisyJpeg(const QString &path, QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    QRandomGenerator random(7);
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, random.generate() | 0xFF000000u);
    image.save(path, "JPEG", 90);
    return path;
}

class ThumbnailBadInputTest : public ::testing::Test
{
protected:
    SystemThumbnailResult thumbnail(const QString &path)
    {
        return thumbnailer.thumbnail(SystemThumbnailRequest(native(path), QSizeF(200, 200), 1));
    }

    TestDir dir;
    ThumbnailCache cache{dir.filePath("cache")};
    SystemThumbnailer thumbnailer{cache};
};

TEST_F(ThumbnailBadInputTest, DamagedFilesGiveWhatDecodesOrACleanFailure)
{
    // A truncated JPEG shows the part that decoded.
    const QString whole = writeNoisyJpeg(dir.filePath("whole.jpg"), QSize(600, 400));
    QFile file(whole);
    file.open(QIODevice::ReadOnly);
    const QByteArray bytes = file.readAll();
    dir.write("truncated.jpg", bytes.left(bytes.size() * 6 / 10));
    const SystemThumbnailResult truncated = thumbnail(dir.filePath("truncated.jpg"));
    EXPECT_EQ(truncated.source, ThumbnailSource::rendered);
    EXPECT_EQ(truncated.image.size(), QSize(200, 132));

    // Empty and nonsense files fail cleanly, whatever their names say.
    dir.write("empty.jpg", {});
    dir.write("text.png", "just some text, not a picture at all");
    dir.write("header-only.jpg", bytes.left(300));
    for (const char *name : {"empty.jpg", "text.png", "header-only.jpg"}) {
        const SystemThumbnailResult result = thumbnail(dir.filePath(name));
        EXPECT_TRUE(result.image.isNull()) << name;
        EXPECT_TRUE(result.error) << name;
        QString error;
        EXPECT_TRUE(EmbeddedPreview::read(native(dir.filePath(name)), 200, &error).isNull()) << name;
    }

    // A PNG named .jpg is a PNG.
    QImage png(400, 100, QImage::Format_ARGB32);
    png.fill(Qt::green);
    png.save(dir.filePath("png-named.jpg"), "PNG");
    EXPECT_EQ(thumbnail(dir.filePath("png-named.jpg")).image.size(), QSize(200, 50));

    // Damaged files kept in tests/data, and those that the corpus keeps broken on purpose.
    QStringList broken;
    for (const char *name : {"truncated-in-scan.jpg", "damaged-scan-hole.jpg", "exif-ifd-offset-out-of-range.jpg",
                             "exif-entry-count-too-large.jpg"})
        broken.append(TestImages::dataFile(QLatin1String(name)));
    const QString corpus = TestImages::corpusDir() + "/jpg";
    broken.append(corpus + "/corrupted.jpg");
    for (const QString &name : QDir(corpus + "/invalid").entryList(QDir::Files))
        broken.append(corpus + "/invalid/" + name);
    for (const QString &path : std::as_const(broken)) {
        if (!QFile::exists(path))
            continue;
        QString error;
        EmbeddedPreview::read(native(path), 800, &error);
        thumbnail(path);
    }
}

TEST_F(ThumbnailBadInputTest, HugeImageIsRefusedBeforeAllocating)
{
    const QString path = dir.write("huge.png", hugePng());
    QString error;
    ImageDecoder::Options options;
    options.fitSize = QSize(256, 256);
    EXPECT_TRUE(ImageDecoder::decode(native(path), options, &error).isNull());
    EXPECT_TRUE(error.contains("memory")) << error.toStdString();
    EXPECT_TRUE(EmbeddedPreview::read(native(path), 256, &error).isNull());
    const SystemThumbnailResult result = thumbnail(path);
    EXPECT_EQ(result.source, ThumbnailSource::failed);

    // The same size stated by a JPEG frame header.
    TestImages::JpegOptions jpeg;
    jpeg.sizeInHeaderOnly = true;
    TestImages::writeJpeg(dir.filePath("huge.jpg"), QSize(30000, 30000), jpeg);
    options.fitSize = {};
    EXPECT_TRUE(ImageDecoder::decode(native(dir.filePath("huge.jpg")), options, &error).isNull());
}

TEST_F(ThumbnailBadInputTest, BrokenCacheEntriesAndUnwritableCacheStillGiveThumbnails)
{
    const QString photo = CameraJpegs::write(dir.filePath("photo.jpg"), QSize(600, 400), {}, {});
    const QString uri = ThumbnailCache::uriForNativePath(native(photo));
    const QString entry = cache.entryPath(uri, ThumbnailCache::Flavor::large);
    ASSERT_EQ(thumbnail(photo).source, ThumbnailSource::rendered);

    // A cut-off entry (its text chunks intact) and plain garbage are read as missing.
    QFile file(entry);
    file.open(QIODevice::ReadOnly);
    const QByteArray good = file.readAll();
    file.close();
    for (const QByteArray &damaged : {good.left(good.size() / 2), QByteArray("garbage")}) {
        file.open(QIODevice::WriteOnly | QIODevice::Truncate);
        file.write(damaged);
        file.close();
        const SystemThumbnailResult result = thumbnail(photo);
        EXPECT_EQ(result.source, ThumbnailSource::rendered);
        EXPECT_EQ(result.image.size(), QSize(200, 132));
    }
    EXPECT_EQ(thumbnail(photo).source, ThumbnailSource::cached);

    // Checked without decoding (as the command line does), a cut-off entry is not taken either.
    file.open(QIODevice::WriteOnly | QIODevice::Truncate);
    file.write(good.left(good.size() - 20));
    file.close();
    SystemThumbnailRequest checkOnly(native(photo), QSizeF(200, 200), 1);
    checkOnly.setWantsImage(false);
    EXPECT_EQ(thumbnailer.thumbnail(checkOnly).source, ThumbnailSource::rendered);
    const SystemThumbnailResult verified = thumbnailer.thumbnail(checkOnly);
    EXPECT_EQ(verified.source, ThumbnailSource::cached);
    EXPECT_TRUE(verified.image.isNull());

    // A cache root that cannot be made (a file stands in its way) only costs the caching.
    dir.write("blocked", "a file, not a folder");
    SystemThumbnailer blocked{ThumbnailCache(dir.filePath("blocked/thumbnails"))};
    const SystemThumbnailResult result = blocked.thumbnail(SystemThumbnailRequest(native(photo), QSizeF(200, 200), 1));
    EXPECT_EQ(result.source, ThumbnailSource::rendered);
    EXPECT_FALSE(result.image.isNull());
}

} // namespace
