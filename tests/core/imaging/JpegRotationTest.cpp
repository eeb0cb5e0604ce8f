#include "core/imaging/JpegRotation.h"

#include "core/imaging/JpegStructure.h"
#include "support/CameraJpegs.h"
#include "support/TestDir.h"
#include "support/TestImages.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QImageReader>
#include <QPainter>

#include <exiv2/exiv2.hpp>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>

namespace {

using JpegRotation::Fallback;
using JpegRotation::Turn;
using Kind = JpegRotation::Result::Kind;

// Quadrants: red top left, green top right, blue bottom left, white bottom right.
QImage quadrants(QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    QPainter painter(&image);
    const int w = size.width() / 2, h = size.height() / 2;
    painter.fillRect(0, 0, w, h, Qt::red);
    painter.fillRect(w, 0, size.width() - w, h, Qt::green);
    painter.fillRect(0, h, w, size.height() - h, Qt::blue);
    painter.fillRect(w, h, size.width() - w, size.height() - h, Qt::white);
    return image;
}

QByteArray jpegOf(const QImage &image)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "JPEG", 95);
    return bytes;
}

// A camera-like file: quadrants, an orientation, a quadrant thumbnail, its pixel dimensions in
// the EXIF and a colour label.
QString writePhoto(const QString &path, QSize size, int orientation)
{
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    file.write(jpegOf(quadrants(size)));
    file.close();
    auto image = Exiv2::ImageFactory::open(QFile::encodeName(path).toStdString());
    image->readMetadata();
    Exiv2::ExifData &exif = image->exifData();
    exif["Exif.Image.Orientation"] = uint16_t(orientation);
    exif["Exif.Photo.PixelXDimension"] = uint32_t(size.width());
    exif["Exif.Photo.PixelYDimension"] = uint32_t(size.height());
    const QByteArray thumbnail = jpegOf(quadrants(size / 4));
    Exiv2::ExifThumb(exif).setJpegThumbnail(reinterpret_cast<const Exiv2::byte *>(thumbnail.constData()),
                                            long(thumbnail.size()));
    image->writeMetadata();
    ::setxattr(QFile::encodeName(path).constData(), "user.xdg.tags", "Red", 3, 0);
    ::chmod(QFile::encodeName(path).constData(), 0640);
    return path;
}

struct Facts
{
    QSize size;
    QString corners; // the stored pixels' corners, clockwise from the top left: "RGWB"
    int orientation = 0;
    QSize exifSize;
    QString thumbnailCorners;
};

QChar colourAt(const QImage &image, int x, int y)
{
    const QColor c = image.pixelColor(x, y);
    if (c.red() > 200 && c.green() > 200 && c.blue() > 200)
        return QLatin1Char('W');
    if (c.red() > 200)
        return QLatin1Char('R');
    if (c.green() > 200)
        return QLatin1Char('G');
    return c.blue() > 200 ? QLatin1Char('B') : QLatin1Char('?');
}

QString cornersOf(const QImage &image)
{
    const int r = image.width() - 2, b = image.height() - 2;
    return QString() + colourAt(image, 1, 1) + colourAt(image, r, 1) + colourAt(image, r, b) + colourAt(image, 1, b);
}

Facts factsOf(const QString &path)
{
    Facts facts;
    QImageReader reader(path);
    reader.setAutoTransform(false);
    const QImage image = reader.read();
    facts.size = image.size();
    facts.corners = cornersOf(image);
    auto exivImage = Exiv2::ImageFactory::open(QFile::encodeName(path).toStdString());
    exivImage->readMetadata();
    Exiv2::ExifData &exif = exivImage->exifData();
    facts.orientation = int(exif["Exif.Image.Orientation"].toLong());
    facts.exifSize =
        QSize(int(exif["Exif.Photo.PixelXDimension"].toLong()), int(exif["Exif.Photo.PixelYDimension"].toLong()));
    const Exiv2::DataBuf thumbnail = Exiv2::ExifThumbC(exif).copy();
    facts.thumbnailCorners =
        cornersOf(QImage::fromData(QByteArray(reinterpret_cast<const char *>(thumbnail.pData_), thumbnail.size_)));
    return facts;
}

QByteArray tagsOf(const QString &path)
{
    char value[64];
    const ssize_t size = ::getxattr(QFile::encodeName(path).constData(), "user.xdg.tags", value, sizeof value);
    return size < 0 ? QByteArray() : QByteArray(value, size);
}

QByteArray bytesOf(const QString &path)
{
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    return file.readAll();
}

// Every EXIF value but those a turn changes, as Exiv2 reads them: what must come through a turn.
// The turn leaves the EXIF block where it lies, so even its offsets stay.
QMap<QString, QString> keptExif(const QByteArray &jpeg)
{
    static const QStringList changed{"Exif.Image.Orientation",
                                     "Exif.Photo.PixelXDimension",
                                     "Exif.Photo.PixelYDimension",
                                     "Exif.Thumbnail.JPEGInterchangeFormat",
                                     "Exif.Thumbnail.JPEGInterchangeFormatLength",
                                     "Exif.Thumbnail.ImageWidth",
                                     "Exif.Thumbnail.ImageLength"};
    QMap<QString, QString> values;
    auto image = Exiv2::ImageFactory::open(reinterpret_cast<const Exiv2::byte *>(jpeg.constData()), long(jpeg.size()));
    image->readMetadata();
    for (const Exiv2::Exifdatum &datum : image->exifData()) {
        const QString key = QString::fromStdString(datum.key());
        if (!changed.contains(key))
            values.insert(key, QString::fromStdString(datum.toString()));
    }
    return values;
}

// The values that differ between two readings, "key: before → after", for a readable failure.
std::string exifChanges(const QByteArray &before, const QByteArray &after)
{
    const QMap<QString, QString> a = keptExif(before);
    const QMap<QString, QString> b = keptExif(after);
    QStringList changes;
    QStringList keys = a.keys() + b.keys();
    keys.removeDuplicates();
    for (const QString &key : keys) {
        if (a.value(key, QStringLiteral("(none)")) != b.value(key, QStringLiteral("(none)")))
            changes.append(key + QStringLiteral(": ") + a.value(key, QStringLiteral("(none)")).left(60)
                           + QStringLiteral(" → ") + b.value(key, QStringLiteral("(none)")).left(60));
    }
    return changes.join(QLatin1Char('\n')).toStdString();
}

} // namespace

// Whole blocks: the blocks move, the orientation is folded in, the thumbnail and the EXIF follow.
TEST(JpegRotation, ATurnMovesTheBlocksAndFoldsTheOrientationIn)
{
    TestDir dir;
    // Shown turned clockwise (orientation 6); turned clockwise once more: a half turn of the pixels.
    const QString shown = writePhoto(dir.filePath(QStringLiteral("IMG_0001.JPG")), QSize(64, 48), 6);
    ASSERT_EQ(factsOf(shown).corners, QStringLiteral("RGWB"));
    JpegRotation::Workspace batch; // the two files are turned as one selection
    const JpegRotation::Result result = JpegRotation::rotateFile(shown, Turn::clockwise, Fallback::refuse, &batch);
    ASSERT_EQ(result.kind, Kind::lossless) << qPrintable(result.error);
    Facts facts = factsOf(shown);
    EXPECT_EQ(facts.size, QSize(64, 48));
    EXPECT_EQ(facts.corners, QStringLiteral("WBRG"));
    EXPECT_EQ(facts.thumbnailCorners, QStringLiteral("WBRG"));
    EXPECT_EQ(facts.orientation, 1);
    EXPECT_EQ(facts.exifSize, QSize(64, 48));
    EXPECT_EQ(tagsOf(shown), "Red");
    struct stat info
    { };
    ::stat(QFile::encodeName(shown).constData(), &info);
    EXPECT_EQ(info.st_mode & 0777, 0640u);

    const QString upright = writePhoto(dir.filePath(QStringLiteral("IMG_0002.JPG")), QSize(64, 48), 1);
    ASSERT_EQ(JpegRotation::rotateFile(upright, Turn::counterclockwise, Fallback::refuse, &batch).kind, Kind::lossless);
    facts = factsOf(upright);
    EXPECT_EQ(facts.size, QSize(48, 64));
    EXPECT_EQ(facts.corners, QStringLiteral("GWBR"));
    EXPECT_EQ(facts.thumbnailCorners, QStringLiteral("GWBR"));
    EXPECT_EQ(facts.exifSize, QSize(48, 64));
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Hidden | QDir::Files).size(), 2); // no temporary left
}

// Partial blocks at the edge: never cropped; the caller's choice applies and the message says why.
TEST(JpegRotation, APictureThatIsNotWholeBlocksIsNeverCroppedSilently)
{
    TestDir dir;
    const QString path = writePhoto(dir.filePath(QStringLiteral("DSC_0001.JPG")), QSize(100, 75), 1);
    const QByteArray before = bytesOf(path);
    JpegRotation::Result result = JpegRotation::rotateFile(path, Turn::clockwise, Fallback::refuse);
    EXPECT_EQ(result.kind, Kind::failed);
    EXPECT_EQ(result.error,
              QStringLiteral("“DSC_0001.JPG” couldn’t be turned. Its width or height is not a whole number "
                             "of blocks, so it can’t be turned without losing quality or cropping its "
                             "edge."));
    EXPECT_EQ(bytesOf(path), before);

    result = JpegRotation::rotateFile(path, Turn::clockwise, Fallback::orientationTag);
    EXPECT_EQ(result.kind, Kind::orientationTagOnly);
    Facts facts = factsOf(path);
    EXPECT_EQ(facts.orientation, 6);
    EXPECT_EQ(facts.size, QSize(100, 75));
    EXPECT_EQ(facts.corners, QStringLiteral("RGWB"));

    // Re-encoded on request: shown turned once, turned once more, a half turn of the pixels.
    result = JpegRotation::rotateFile(path, Turn::clockwise, Fallback::reencode);
    EXPECT_EQ(result.kind, Kind::reencoded);
    facts = factsOf(path);
    EXPECT_EQ(facts.orientation, 1);
    EXPECT_EQ(facts.size, QSize(100, 75));
    EXPECT_EQ(facts.corners, QStringLiteral("WBRG"));
    EXPECT_EQ(facts.thumbnailCorners, QStringLiteral("WBRG"));
    EXPECT_EQ(tagsOf(path), "Red");
    // A turn that undoes the orientation moves no block: lossless whatever the size.
    JpegRotation::rotateFile(path, Turn::clockwise, Fallback::orientationTag);
    result = JpegRotation::rotateFile(path, Turn::counterclockwise, Fallback::refuse);
    EXPECT_EQ(result.kind, Kind::lossless);
    EXPECT_EQ(factsOf(path).orientation, 1);

    const QString notJpeg = dir.filePath(QStringLiteral("notes.JPG"));
    QFile file(notJpeg);
    file.open(QIODevice::WriteOnly);
    file.write("Shopping list");
    file.close();
    result = JpegRotation::rotateFile(notJpeg, Turn::clockwise, Fallback::reencode);
    EXPECT_EQ(result.kind, Kind::failed);
    EXPECT_TRUE(result.error.startsWith(QStringLiteral("“notes.JPG” couldn’t be turned. It is not a JPEG picture")));
    EXPECT_EQ(bytesOf(notJpeg), "Shopping list");

    // Cut short in its picture data: its blocks are not moved into a new file, but its tag may turn it.
    const QByteArray whole = bytesOf(writePhoto(dir.filePath(QStringLiteral("whole.JPG")), QSize(512, 384), 1));
    const QString cut = dir.write(QStringLiteral("IMG_0003.JPG"), whole.left(whole.size() - 200));
    result = JpegRotation::rotateFile(cut, Turn::clockwise, Fallback::refuse);
    EXPECT_EQ(result.kind, Kind::failed);
    EXPECT_EQ(result.error,
              QStringLiteral("“IMG_0003.JPG” couldn’t be turned. Its picture data is damaged (Premature "
                             "end of JPEG file), so it is left as it is."));
    EXPECT_EQ(bytesOf(cut), whole.left(whole.size() - 200));
    result = JpegRotation::rotateFile(cut, Turn::clockwise, Fallback::orientationTag);
    EXPECT_EQ(result.kind, Kind::orientationTagOnly);
    EXPECT_EQ(factsOf(cut).orientation, 6);
    EXPECT_TRUE(bytesOf(cut).endsWith(whole.mid(whole.size() - 1000, 800))); // the picture data as it was
}

// A file as a camera writes it (maker's tags, a thumbnail, a multi-picture preview after the
// image): its metadata comes through a turn unchanged but for what the turn changes, and the
// preview index, which would point past the end of the new file, is gone.
TEST(JpegRotation, ACameraFileKeepsItsMetadataAndDropsOnlyItsPreviewIndex)
{
    TestDir dir;
    const QString path = writePhoto(dir.filePath(QStringLiteral("IMG_0001.JPG")), QSize(256, 192), 1);
    {
        auto image = Exiv2::ImageFactory::open(QFile::encodeName(path).toStdString());
        image->readMetadata();
        image->exifData()["Exif.Image.Make"] = "Canon";
        image->exifData()["Exif.Image.Model"] = "Canon EOS 5D Mark IV";
        image->exifData()["Exif.Photo.DateTimeOriginal"] = "2024:07:14 18:03:22";
        image->exifData()["Exif.Photo.ExposureTime"] = Exiv2::URational(1, 250);
        image->writeMetadata();
    }
    QByteArray original = bytesOf(path);
    const QByteArray preview = CameraJpegs::encodeJpeg(QSize(64, 48), Qt::darkBlue);
    const QByteArray mpf = CameraJpegs::mpfSegment(0, 0, 0);
    original = original.left(2)
        + CameraJpegs::mpfSegment(quint32(original.size() + mpf.size()), quint32(preview.size()),
                                  quint32(original.size() + mpf.size() - 10))
        + original.mid(2) + preview;
    ASSERT_EQ(JpegStructure::parse(original).extraImages.size(), 1);
    QFile file(path);
    file.open(QIODevice::WriteOnly | QIODevice::Truncate);
    file.write(original);
    file.close();

    const JpegRotation::Result result = JpegRotation::rotateFile(path, Turn::clockwise, Fallback::refuse);
    ASSERT_EQ(result.kind, Kind::lossless) << qPrintable(result.error);
    const Facts facts = factsOf(path);
    EXPECT_EQ(facts.size, QSize(192, 256));
    EXPECT_EQ(facts.corners, QStringLiteral("BRGW"));
    EXPECT_EQ(facts.thumbnailCorners, QStringLiteral("BRGW"));
    EXPECT_EQ(facts.exifSize, QSize(192, 256));
    EXPECT_EQ(facts.orientation, 1);
    const QByteArray turned = bytesOf(path);
    EXPECT_EQ(exifChanges(original, turned), "");
    EXPECT_TRUE(JpegStructure::parse(turned).extraImages.isEmpty());
    EXPECT_FALSE(turned.contains(QByteArray("MPF\0", 4)));

    // Real cameras' files, in both byte orders and with their maker notes: what turns losslessly
    // keeps every value.
    const QString corpus = TestImages::corpusDir();
    if (corpus.isEmpty())
        return;
    int turnedFiles = 0;
    for (const QString &name : QDir(corpus + QStringLiteral("/jpg")).entryList({QStringLiteral("*.jpg")})) {
        const QByteArray camera = bytesOf(corpus + QStringLiteral("/jpg/") + name);
        JpegRotation::Result cameraResult;
        const QByteArray bytes = JpegRotation::rotated(camera, Turn::counterclockwise, Fallback::refuse, cameraResult);
        if (cameraResult.kind != Kind::lossless)
            continue;
        ++turnedFiles;
        EXPECT_EQ(exifChanges(camera, bytes), "") << qPrintable(name);
        EXPECT_EQ(JpegStructure::parse(bytes).orientation, JpegStructure::parse(camera).orientation ? 1 : 0)
            << qPrintable(name);
    }
    EXPECT_GT(turnedFiles, 0);
}
