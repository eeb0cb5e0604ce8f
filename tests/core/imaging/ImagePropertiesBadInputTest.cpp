#include "core/imaging/ImagePropertiesItem.h"
#include "core/inspector/InspectorRows.h"
#include "core/model/PXFile.h"

#include "support/TestDir.h"
#include "support/TestImages.h"

#include <QDirIterator>
#include <QFile>
#include <QImage>

#include <exiv2/exiv2.hpp>

#include <gtest/gtest.h>

// Bad files through the whole road of the inspector: read the record, then print every list.
// Each must give a record or a LoadingError; in the sanitizer builds (CMakePresets.json) any stray
// read is a failure too.

namespace {

struct Outcome
{
    ImagePropertiesItemPtr item;
    LoadingError error = LoadingError::noURLForFile;
    QString reason;
};

Outcome readAndShow(const QString &path)
{
    Outcome outcome;
    const PXFilePtr file = PXFile::fileForPath(path);
    outcome.item = ImagePropertiesItem::load(file, &outcome.error, &outcome.reason);
    for (InspectorList list : {InspectorList::nonImage, InspectorList::general, InspectorList::exif,
                               InspectorList::iptc, InspectorList::gps, InspectorList::tiff}) {
        const QList<ImagePropertiesItemPtr> items =
            outcome.item ? QList<ImagePropertiesItemPtr>{outcome.item} : QList<ImagePropertiesItemPtr>{};
        EXPECT_FALSE(inspectorRows(list, items, {file}).isEmpty());
    }
    return outcome;
}

QByteArray readAll(const QString &path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll();
}

// Sets raw values that TestImages' text notation cannot express.
void setExif(const QString &path, const std::function<void(Exiv2::ExifData &)> &edit)
{
    auto image = Exiv2::ImageFactory::open(QFile::encodeName(path).toStdString());
    image->readMetadata();
    edit(image->exifData());
    image->writeMetadata();
}

// A JPEG whose APP1 segment is "Exif\0\0" followed by `tiff`: an EXIF block built by hand.
QByteArray jpegWithExifBlock(const QByteArray &valid, const QByteArray &tiff)
{
    QByteArray segment = QByteArray("Exif\0\0", 6) + tiff;
    const int length = int(segment.size()) + 2;
    QByteArray app1("\xff\xe1", 2);
    app1.append(char(length >> 8)).append(char(length & 0xff)).append(segment);
    return valid.left(2) + app1 + valid.mid(2);
}

} // namespace

TEST(ImagePropertiesBadInput, brokenFilesGiveARecordOrAnError)
{
    TestDir dir;
    TestImages::JpegOptions options;
    options.model = QStringLiteral("Model");
    options.keywords = {QStringLiteral("one")};
    options.latitude = 10;
    options.longitude = 20;
    const QString good = TestImages::writeJpeg(dir.filePath(QStringLiteral("good.jpg")), QSize(64, 64), options);
    const QByteArray bytes = readAll(good);

    // Cut in the middle of the metadata, and in the middle of the scan.
    for (qsizetype length : {qsizetype(3), qsizetype(40), bytes.size() / 3, bytes.size() - 10}) {
        const Outcome cut = readAndShow(dir.write(QStringLiteral("cut%1.jpg").arg(length), bytes.left(length)));
        EXPECT_TRUE(cut.item || cut.error == LoadingError::cannotLoadData) << length;
    }

    EXPECT_FALSE(readAndShow(dir.write(QStringLiteral("zero.jpg"))).item);

    QImage png(8, 8, QImage::Format_ARGB32);
    png.fill(Qt::transparent);
    const QString renamed = dir.filePath(QStringLiteral("png.jpg"));
    ASSERT_TRUE(png.save(renamed, "PNG"));
    const Outcome fromPng = readAndShow(renamed);
    ASSERT_TRUE(fromPng.item) << qPrintable(fromPng.reason);
    EXPECT_EQ(fromPng.item->pixelWidth, 8);
    EXPECT_EQ(fromPng.item->hasAlpha, true);

    // EXIF blocks that lie: an IFD offset past the end, a count of 65535 entries, a string
    // whose count runs past the block, and a byte order mark that is none.
    const QByteArray blocks[] = {
        QByteArray("II*\0\xff\xff\xff\x7f", 8),
        QByteArray("MM\0*\0\0\0\x08\xff\xff", 10),
        QByteArray("II*\0\x08\0\0\0\x01\0\x0f\x01\x02\0\xff\xff\0\0\x1a\0\0\0\0\0\0\0Canon", 31),
        QByteArray("XX*\0\x08\0\0\0", 8),
    };
    int index = 0;
    for (const QByteArray &block : blocks) {
        const Outcome corrupt =
            readAndShow(dir.write(QStringLiteral("exif%1.jpg").arg(index++), jpegWithExifBlock(bytes, block)));
        EXPECT_TRUE(corrupt.item || corrupt.error == LoadingError::cannotLoadData);
    }
}

TEST(ImagePropertiesBadInput, oddValuesStayOutOrReadAsText)
{
    TestDir dir;
    const QString path = TestImages::writeJpeg(dir.filePath(QStringLiteral("odd.jpg")), QSize(16, 16));
    setExif(path, [](Exiv2::ExifData &exif) {
        exif["Exif.Image.Make"] = std::string("Can\xff\xfeon"); // not UTF-8
        exif["Exif.Photo.ExposureTime"] = Exiv2::URational(1, 0);
        exif["Exif.Photo.FNumber"] = Exiv2::URational(0, 0);
        exif["Exif.Photo.FocalLength"] = Exiv2::URational(50, 1);
        Exiv2::URationalValue latitude;
        latitude.read("48/0 0/0 0/0");
        exif.add(Exiv2::ExifKey("Exif.GPSInfo.GPSLatitude"), &latitude);
        exif["Exif.GPSInfo.GPSLatitudeRef"] = std::string("N");
        Exiv2::FloatValue longitude;
        longitude.read("inf");
        exif.add(Exiv2::ExifKey("Exif.GPSInfo.GPSLongitude"), &longitude);
    });

    const Outcome odd = readAndShow(path);
    ASSERT_TRUE(odd.item) << qPrintable(odd.reason);
    EXPECT_EQ(odd.item->tiffHardwareManufacturer, QString::fromLatin1("Can\xff\xfeon"));
    EXPECT_FALSE(odd.item->exposureTime);
    EXPECT_FALSE(odd.item->fNumber);
    EXPECT_FALSE(odd.item->latitude);
    EXPECT_EQ(odd.item->focalLength, 50.0) << "one bad value does not spoil the others";
}

TEST(ImagePropertiesBadInput, damagedAndCorpusFiles)
{
    // The checked-in damaged files always, the camera corpus when it is beside the checkout.
    for (const char *name : {"truncated-in-scan.jpg", "damaged-scan-hole.jpg", "exif-ifd-offset-out-of-range.jpg",
                             "exif-entry-count-too-large.jpg", "small-with-thumbnail.heic"}) {
        const Outcome outcome = readAndShow(TestImages::dataFile(QLatin1String(name)));
        EXPECT_TRUE(outcome.item) << name << ": " << qPrintable(outcome.reason);
    }
    const QString corpus = TestImages::corpusDir();
    if (corpus.isEmpty())
        return;
    QDirIterator it(corpus, QDir::Files, QDirIterator::Subdirectories);
    int read = 0;
    while (it.hasNext()) {
        const Outcome outcome = readAndShow(it.next());
        EXPECT_TRUE(outcome.item || !outcome.reason.isEmpty()) << qPrintable(it.filePath());
        read += outcome.item ? 1 : 0;
    }
    EXPECT_GT(read, 0);
}
