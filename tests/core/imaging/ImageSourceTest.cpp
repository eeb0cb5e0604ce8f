#include "core/imaging/ImageSource.h"

#include "support/TestDir.h"
#include "support/TestImages.h"

#include <QFile>
#include <QImage>
#include <QtEndian>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <thread>
#include <vector>

namespace Key = ImagePropertyKey;

namespace {

QVariantMap group(const QVariantMap &properties, const char *name)
{
    return properties.value(QLatin1String(name)).toMap();
}

QVariant value(const QVariantMap &properties, const char *name)
{
    return properties.value(QLatin1String(name));
}

// The properties of image 0, failing the test when the file does not open.
QVariantMap propertiesOf(const QString &path)
{
    QString error;
    const auto source = ImageSource::create(path, {}, &error);
    EXPECT_TRUE(source) << qPrintable(path) << ": " << qPrintable(error);
    return source ? source->propertiesAtIndex(0) : QVariantMap();
}

QString corpusFile(const QString &relative)
{
    const QString dir = TestImages::corpusDir();
    return dir.isEmpty() ? QString() : dir + QLatin1Char('/') + relative;
}

// Puts an XMP packet into the JPEG at `path`, in an APP1 segment right after its start marker.
void insertXmpPacket(const QString &path, const QByteArray &packet)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QByteArray bytes = file.readAll();
    file.close();
    const QByteArray payload = QByteArray("http://ns.adobe.com/xap/1.0/", 29) + packet;
    const int length = int(payload.size()) + 2;
    const QByteArray segment = QByteArray("\xFF\xE1", 2) + char(length >> 8) + char(length & 0xFF) + payload;
    bytes.insert(2, segment);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    ASSERT_EQ(file.write(bytes), bytes.size());
}

#define SKIP_WITHOUT_CORPUS()                                                                                          \
    do {                                                                                                               \
        if (TestImages::corpusDir().isEmpty())                                                                         \
            GTEST_SKIP() << "camera corpus not found";                                                                 \
    } while (false)

} // namespace

TEST(ImageSource, cameraJpegGivesTypedExifAndTiffFacts)
{
    SKIP_WITHOUT_CORPUS();
    const QVariantMap p = propertiesOf(corpusFile(QStringLiteral("jpg/Canon_40D.jpg")));

    EXPECT_EQ(value(p, Key::PixelWidth).typeId(), QMetaType::Int);
    EXPECT_EQ(value(p, Key::PixelWidth).toInt(), 100);
    EXPECT_EQ(value(p, Key::PixelHeight).toInt(), 68);
    EXPECT_EQ(value(p, Key::Depth).toInt(), 8);
    EXPECT_EQ(value(p, Key::ColorModel).toString(), QStringLiteral("RGB"));
    EXPECT_EQ(value(p, Key::ProfileName).toString(), QStringLiteral("sRGB IEC61966-2.1"));
    EXPECT_DOUBLE_EQ(value(p, Key::DPIWidth).toDouble(), 72.0);

    const QVariantMap tiff = group(p, Key::TIFFDictionary);
    EXPECT_EQ(tiff.value(QStringLiteral("Make")).toString(), QStringLiteral("Canon"));
    EXPECT_EQ(tiff.value(QStringLiteral("Model")).toString(), QStringLiteral("Canon EOS 40D"));

    const QVariantMap exif = group(p, Key::ExifDictionary);
    EXPECT_EQ(exif.value(QStringLiteral("FNumber")).typeId(), QMetaType::Double);
    EXPECT_DOUBLE_EQ(exif.value(QStringLiteral("FNumber")).toDouble(), 7.1);
    EXPECT_DOUBLE_EQ(exif.value(QStringLiteral("ExposureTime")).toDouble(), 1.0 / 160);
    EXPECT_EQ(exif.value(QStringLiteral("ISOSpeedRatings")), QVariant(QVariantList{100}));
    EXPECT_EQ(exif.value(QStringLiteral("DateTimeOriginal")).toString(), QStringLiteral("2008:05:30 15:56:01"));
    EXPECT_EQ(exif.value(QStringLiteral("MeteringMode")).typeId(), QMetaType::Int);
    // An all-blank user comment is not a value.
    EXPECT_FALSE(exif.contains(QStringLiteral("UserComment")));
    EXPECT_FALSE(p.contains(QLatin1String(Key::GPSDictionary)));
    EXPECT_FALSE(p.contains(QLatin1String(Key::IPTCDictionary)));
}

TEST(ImageSource, makerNotesFillTheAuxiliaryGroup)
{
    SKIP_WITHOUT_CORPUS();
    const QVariantMap aux =
        group(propertiesOf(corpusFile(QStringLiteral("jpg/Canon_PowerShot_S40.jpg"))), Key::ExifAuxDictionary);
    EXPECT_EQ(aux.value(QStringLiteral("Firmware")).toString(), QStringLiteral("Firmware Version 1.10"));
    EXPECT_EQ(aux.value(QStringLiteral("ImageNumber")).toInt(), 1171771);
}

TEST(ImageSource, gpsPositionIsUnsignedWithReferences)
{
    SKIP_WITHOUT_CORPUS();
    const QVariantMap gps = group(propertiesOf(corpusFile(QStringLiteral("jpg/gps/DSCN0010.jpg"))), Key::GPSDictionary);
    EXPECT_NEAR(gps.value(QStringLiteral("Latitude")).toDouble(), 43.467448, 1e-6);
    EXPECT_EQ(gps.value(QStringLiteral("LatitudeRef")).toString(), QStringLiteral("N"));
    EXPECT_NEAR(gps.value(QStringLiteral("Longitude")).toDouble(), 11.885127, 1e-6);
    EXPECT_EQ(gps.value(QStringLiteral("LongitudeRef")).toString(), QStringLiteral("E"));
    EXPECT_EQ(gps.value(QStringLiteral("TimeStamp")).toString(), QStringLiteral("14:27:07.24"));
    EXPECT_EQ(gps.value(QStringLiteral("DateStamp")).toString(), QStringLiteral("2008:10:23"));
    EXPECT_EQ(gps.value(QStringLiteral("AltitudeRef")).typeId(), QMetaType::Int);

    // South and west stay positive numbers; only the references carry the sign.
    TestDir dir;
    TestImages::JpegOptions options;
    options.latitude = -33.856784;
    options.longitude = 151.215297;
    options.extra.insert(QStringLiteral("Exif.GPSInfo.GPSAltitude"), QStringLiteral("585/10"));
    const QVariantMap south =
        group(propertiesOf(TestImages::writeJpeg(dir.filePath(QStringLiteral("s.jpg")), {32, 32}, options)),
              Key::GPSDictionary);
    EXPECT_NEAR(south.value(QStringLiteral("Latitude")).toDouble(), 33.856784, 1e-6);
    EXPECT_EQ(south.value(QStringLiteral("LatitudeRef")).toString(), QStringLiteral("S"));
    EXPECT_NEAR(south.value(QStringLiteral("Longitude")).toDouble(), 151.215297, 1e-6);
    EXPECT_EQ(south.value(QStringLiteral("LongitudeRef")).toString(), QStringLiteral("E"));
    EXPECT_DOUBLE_EQ(south.value(QStringLiteral("Altitude")).toDouble(), 58.5);

    options.latitude = 48.1;
    options.longitude = -0.5;
    const QVariantMap west =
        group(propertiesOf(TestImages::writeJpeg(dir.filePath(QStringLiteral("w.jpg")), {32, 32}, options)),
              Key::GPSDictionary);
    EXPECT_NEAR(west.value(QStringLiteral("Longitude")).toDouble(), 0.5, 1e-6);
    EXPECT_EQ(west.value(QStringLiteral("LongitudeRef")).toString(), QStringLiteral("W"));
}

TEST(ImageSource, orientationLeavesTheStoredSizeAlone)
{
    // Stored turned a quarter: 90 wide, 120 high, shown as 120 by 90.
    const QVariantMap turned = propertiesOf(TestImages::dataFile(QStringLiteral("orientation-6.jpg")));
    EXPECT_EQ(value(turned, Key::Orientation).toInt(), 6);
    EXPECT_EQ(value(turned, Key::PixelWidth).toInt(), 90);
    EXPECT_EQ(value(turned, Key::PixelHeight).toInt(), 120);

    // The size comes from the frame header, even when the pixels are only a stand-in.
    TestDir dir;
    TestImages::JpegOptions options;
    options.orientation = 6;
    options.sizeInHeaderOnly = true;
    const QVariantMap big =
        propertiesOf(TestImages::writeJpeg(dir.filePath(QStringLiteral("big.jpg")), {4000, 3000}, options));
    EXPECT_EQ(value(big, Key::PixelWidth).toInt(), 4000);
    EXPECT_EQ(value(big, Key::PixelHeight).toInt(), 3000);
    EXPECT_EQ(value(big, Key::Orientation).toInt(), 6);
    EXPECT_EQ(group(big, Key::TIFFDictionary).value(QStringLiteral("Orientation")).toInt(), 6);
}

TEST(ImageSource, cameraPortraitKeepsItsStoredSizeAndProfile)
{
    SKIP_WITHOUT_CORPUS();
    const QVariantMap portrait = propertiesOf(corpusFile(QStringLiteral("jpg/orientation/portrait_6.jpg")));
    EXPECT_EQ(value(portrait, Key::Orientation).toInt(), 6);
    EXPECT_EQ(value(portrait, Key::PixelWidth).toInt(), 600);
    EXPECT_EQ(value(portrait, Key::PixelHeight).toInt(), 450);
    EXPECT_EQ(value(portrait, Key::ProfileName).toString(), QStringLiteral("Generic RGB Profile"));
}

TEST(ImageSource, writtenMetadataReadsBack)
{
    TestDir dir;
    TestImages::JpegOptions options;
    options.dateTimeOriginal = QStringLiteral("2021:07:04 18:30:05");
    options.model = QStringLiteral("Test Camera");
    options.iso = {200};
    options.fNumber = 2.8;
    options.keywords = {QStringLiteral("beach"), QStringLiteral("Zürich"), QStringLiteral("beach")};
    options.extra = {
        {QStringLiteral("Exif.Photo.UserComment"), QStringLiteral("charset=Unicode Grüße")},
        {QStringLiteral("Exif.Photo.LensModel"), QStringLiteral("50mm f/1.8   ")},
        {QStringLiteral("Exif.Photo.ExposureBiasValue"), QStringLiteral("-2/3")},
        {QStringLiteral("Iptc.Application2.Headline"), QStringLiteral("Sunset")},
        {QStringLiteral("Xmp.xmp.Rating"), QStringLiteral("4")},
        {QStringLiteral("Xmp.xmpRights.UsageTerms"), QStringLiteral("lang=x-default Ask first")},
    };
    const QVariantMap p = propertiesOf(TestImages::writeJpeg(dir.filePath(QStringLiteral("a.jpg")), {40, 30}, options));

    EXPECT_EQ(value(p, Key::PixelWidth).toInt(), 40);
    EXPECT_FALSE(p.contains(QLatin1String(Key::Orientation)));
    const QVariantMap exif = group(p, Key::ExifDictionary);
    EXPECT_EQ(exif.value(QStringLiteral("DateTimeOriginal")).toString(), options.dateTimeOriginal);
    // A single stored ISO value still reads as a list.
    EXPECT_EQ(exif.value(QStringLiteral("ISOSpeedRatings")), QVariant(QVariantList{200}));
    EXPECT_DOUBLE_EQ(exif.value(QStringLiteral("FNumber")).toDouble(), 2.8);
    EXPECT_EQ(exif.value(QStringLiteral("UserComment")).toString(), QStringLiteral("Grüße"));
    EXPECT_EQ(exif.value(QStringLiteral("LensModel")).toString(), QStringLiteral("50mm f/1.8"));
    EXPECT_DOUBLE_EQ(exif.value(QStringLiteral("ExposureBiasValue")).toDouble(), -2.0 / 3);
    EXPECT_EQ(group(p, Key::TIFFDictionary).value(QStringLiteral("Model")).toString(), options.model);

    const QVariantMap iptc = group(p, Key::IPTCDictionary);
    EXPECT_EQ(iptc.value(QStringLiteral("Keywords")),
              QVariant(QVariantList{QStringLiteral("beach"), QStringLiteral("Zürich"), QStringLiteral("beach")}));
    EXPECT_EQ(iptc.value(QStringLiteral("Headline")).toString(), QStringLiteral("Sunset"));
    EXPECT_EQ(iptc.value(QStringLiteral("StarRating")).typeId(), QMetaType::Int);
    EXPECT_EQ(iptc.value(QStringLiteral("StarRating")).toInt(), 4);
    EXPECT_EQ(iptc.value(QStringLiteral("RightsUsageTerms")).toString(), QStringLiteral("Ask first"));
    EXPECT_FALSE(p.contains(QLatin1String(Key::GPSDictionary)));
}

TEST(ImageSource, iptcTextThatIsNotUtf8ReadsAsLatin1)
{
    TestDir dir;
    TestImages::JpegOptions options;
    // Exiv2 writes what it is given; the one Latin-1 byte is put in afterwards, in place of a
    // placeholder of the same length so that the record stays valid.
    options.extra.insert(QStringLiteral("Iptc.Application2.City"), QStringLiteral("M_nchen"));
    const QString path = TestImages::writeJpeg(dir.filePath(QStringLiteral("latin1.jpg")), {16, 16}, options);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    QByteArray bytes = file.readAll();
    const qsizetype at = bytes.indexOf("M_nchen");
    ASSERT_GE(at, 0);
    bytes[at + 1] = char(0xFC);
    file.seek(0);
    file.write(bytes);
    file.close();
    EXPECT_EQ(group(propertiesOf(path), Key::IPTCDictionary).value(QStringLiteral("City")).toString(),
              QStringLiteral("München"));
}

TEST(ImageSource, filesThatAreNoImageGiveNullWithAReason)
{
    TestDir dir;
    const QString jpeg = TestImages::writeJpeg(dir.filePath(QStringLiteral("ok.jpg")), {16, 16});
    QFile file(jpeg);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    const qsizetype frame = bytes.indexOf("\xff\xc0");
    ASSERT_GT(frame, 0);
    QByteArray frameAsComment = bytes;
    frameAsComment[frame + 1] = char(0xFE);

    const QList<QString> paths = {
        dir.write(QStringLiteral("notes.txt"), "Not an image, just some words.\n"),
        dir.write(QStringLiteral("empty.jpg")),
        dir.write(QStringLiteral("cut-before-frame.jpg"), bytes.left(frame)),
        dir.write(QStringLiteral("frame-as-comment.jpg"), frameAsComment),
        dir.write(QStringLiteral("short.png"), QByteArray("\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR", 16)),
        // Exiv2 reads XMP sidecars, but a sidecar is no image.
        dir.write(QStringLiteral("sidecar.xmp"),
                  "<?xpacket begin=\"\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?><x:xmpmeta xmlns:x=\"adobe:ns:meta/\">"
                  "</x:xmpmeta><?xpacket end=\"w\"?>"),
        dir.filePath(QStringLiteral("missing.jpg")),
        dir.path(),
    };
    for (const QString &path : paths) {
        QString error;
        EXPECT_FALSE(ImageSource::create(path, QStringLiteral("public.jpeg"), &error)) << qPrintable(path);
        EXPECT_FALSE(error.isEmpty()) << qPrintable(path);
    }
}

TEST(ImageSource, damagedFilesStillGiveTheirHeaderFacts)
{
    const QVariantMap hole = propertiesOf(TestImages::dataFile(QStringLiteral("damaged-scan-hole.jpg")));
    EXPECT_EQ(value(hole, Key::PixelWidth).toInt(), 320);
    EXPECT_EQ(group(hole, Key::TIFFDictionary).value(QStringLiteral("ImageDescription")).toString(),
              QStringLiteral("TRUNCATED"));
    const QVariantMap cut = propertiesOf(TestImages::dataFile(QStringLiteral("truncated-in-scan.jpg")));
    EXPECT_EQ(value(cut, Key::PixelHeight).toInt(), 240);
    EXPECT_EQ(group(cut, Key::TIFFDictionary).value(QStringLiteral("Make")).toString(), QStringLiteral("Pixcove"));
    // Broken EXIF structures cost the metadata, never the pixel size.
    for (const char *name : {"exif-ifd-offset-out-of-range.jpg", "exif-entry-count-too-large.jpg"}) {
        const QVariantMap p = propertiesOf(TestImages::dataFile(QLatin1String(name)));
        EXPECT_EQ(value(p, Key::PixelWidth).toInt(), 320) << name;
        EXPECT_EQ(value(p, Key::PixelHeight).toInt(), 240) << name;
    }
}

TEST(ImageSource, damagedCameraFilesStillGiveTheirHeaderFacts)
{
    SKIP_WITHOUT_CORPUS();
    // A 16 KiB hole of 0xFF bytes in the scan data: every header segment is intact.
    const QVariantMap damaged = propertiesOf(corpusFile(QStringLiteral("jpg/corrupted.jpg")));
    EXPECT_EQ(value(damaged, Key::PixelWidth).toInt(), 3648);
    EXPECT_EQ(value(damaged, Key::PixelHeight).toInt(), 2736);
    EXPECT_EQ(group(damaged, Key::TIFFDictionary).value(QStringLiteral("ImageDescription")).toString(),
              QStringLiteral("OLYMPUS DIGITAL CAMERA"));

    // Broken EXIF structures cost the metadata, never the pixel size.
    for (const char *name : {"image00971.jpg", "image01088.jpg", "image01137.jpg", "image01551.jpg", "image01713.jpg",
                             "image01980.jpg", "image02206.jpg"}) {
        const QVariantMap p = propertiesOf(corpusFile(QStringLiteral("jpg/invalid/") + QLatin1String(name)));
        EXPECT_GT(value(p, Key::PixelWidth).toInt(), 0) << name;
        EXPECT_GT(value(p, Key::PixelHeight).toInt(), 0) << name;
    }
}

TEST(ImageSource, pngAndWebpHeadersGiveAlphaDepthAndColorModel)
{
    TestDir dir;
    QImage rgba(7, 5, QImage::Format_ARGB32);
    rgba.fill(QColor(10, 20, 30, 128));
    ASSERT_TRUE(rgba.save(dir.filePath(QStringLiteral("rgba.png"))));
    const QVariantMap p = propertiesOf(dir.filePath(QStringLiteral("rgba.png")));
    EXPECT_EQ(value(p, Key::PixelWidth).toInt(), 7);
    EXPECT_EQ(value(p, Key::PixelHeight).toInt(), 5);
    EXPECT_EQ(value(p, Key::HasAlpha), QVariant(true));
    EXPECT_EQ(value(p, Key::Depth).toInt(), 8);
    EXPECT_EQ(value(p, Key::ColorModel).toString(), QStringLiteral("RGB"));

    QImage gray(3, 3, QImage::Format_Grayscale16);
    gray.fill(Qt::gray);
    ASSERT_TRUE(gray.save(dir.filePath(QStringLiteral("gray.png"))));
    const QVariantMap g = propertiesOf(dir.filePath(QStringLiteral("gray.png")));
    EXPECT_EQ(value(g, Key::HasAlpha), QVariant(false));
    EXPECT_EQ(value(g, Key::Depth).toInt(), 16);
    EXPECT_EQ(value(g, Key::ColorModel).toString(), QStringLiteral("Gray"));

    // Qt's WebP plugin reports no pixel format: alpha comes from the first chunk.
    ASSERT_TRUE(rgba.save(dir.filePath(QStringLiteral("rgba.webp"))));
    const QVariantMap w = propertiesOf(dir.filePath(QStringLiteral("rgba.webp")));
    EXPECT_EQ(value(w, Key::PixelWidth).toInt(), 7);
    EXPECT_EQ(value(w, Key::HasAlpha), QVariant(true));
    ASSERT_TRUE(rgba.convertToFormat(QImage::Format_RGB32).save(dir.filePath(QStringLiteral("rgb.webp"))));
    EXPECT_EQ(value(propertiesOf(dir.filePath(QStringLiteral("rgb.webp"))), Key::HasAlpha), QVariant(false));
}

TEST(ImageSource, heifSizeComesFromLibheifAndMetadataFromItsItems)
{
    // Its thumbnail is no image of its own.
    QString error;
    const auto small =
        ImageSource::create(TestImages::dataFile(QStringLiteral("small-with-thumbnail.heic")), {}, &error);
    ASSERT_TRUE(small) << qPrintable(error);
    EXPECT_EQ(small->imageCount(), 1);
    EXPECT_EQ(value(small->propertiesAtIndex(0), Key::PixelWidth).toInt(), 120);
    EXPECT_EQ(value(small->propertiesAtIndex(0), Key::PixelHeight).toInt(), 90);
}

TEST(ImageSource, phoneHeicGivesItsProfileAndMetadata)
{
    SKIP_WITHOUT_CORPUS();
    QString error;
    const auto iphone = ImageSource::create(corpusFile(QStringLiteral("heic/IMG_5195.HEIC")), {}, &error);
    ASSERT_TRUE(iphone) << qPrintable(error);
    EXPECT_EQ(iphone->imageCount(), 1);
    const QVariantMap p = iphone->propertiesAtIndex(0);
    EXPECT_EQ(value(p, Key::PixelWidth).toInt(), 2566);
    EXPECT_EQ(value(p, Key::PixelHeight).toInt(), 3313);
    EXPECT_EQ(value(p, Key::Depth).toInt(), 8);
    EXPECT_EQ(value(p, Key::ProfileName).toString(), QStringLiteral("Display P3")); // a version 4 profile
    const QVariantMap tiff = group(p, Key::TIFFDictionary);
    EXPECT_EQ(tiff.value(QStringLiteral("Model")).toString(), QStringLiteral("iPhone 11 Pro Max"));
    EXPECT_EQ(group(p, Key::GPSDictionary).value(QStringLiteral("LongitudeRef")).toString(), QStringLiteral("W"));
    const QVariantMap exif = group(p, Key::ExifDictionary);
    EXPECT_EQ(exif.value(QStringLiteral("OffsetTimeOriginal")).toString(), QStringLiteral("-05:00"));
    EXPECT_TRUE(iphone->propertiesAtIndex(1).isEmpty());

    // EXIF stored inside the 'idat' box.
    const QVariantMap sample = propertiesOf(corpusFile(QStringLiteral("heic/samplefilehub.heif")));
    EXPECT_EQ(value(sample, Key::PixelWidth).toInt(), 640);
    EXPECT_EQ(value(sample, Key::Orientation).toInt(), 1);
}

TEST(ImageSource, tiffLayoutAndProfileComeFromTheFirstDirectory)
{
    SKIP_WITHOUT_CORPUS();
    const QVariantMap p = propertiesOf(corpusFile(QStringLiteral("tiff/BSG1.tiff")));
    EXPECT_EQ(value(p, Key::PixelWidth).toInt(), 635);
    EXPECT_EQ(value(p, Key::PixelHeight).toInt(), 348);
    EXPECT_EQ(value(p, Key::Depth).toInt(), 8);
    EXPECT_EQ(value(p, Key::HasAlpha), QVariant(true));
    EXPECT_EQ(value(p, Key::ColorModel).toString(), QStringLiteral("RGB"));
    EXPECT_EQ(value(p, Key::ProfileName).toString(), QStringLiteral("Color LCD"));

    const QVariantMap dpi = propertiesOf(corpusFile(QStringLiteral("tiff/Picoawards.tiff")));
    EXPECT_DOUBLE_EQ(value(dpi, Key::DPIWidth).toDouble(), 96.0);
    EXPECT_EQ(value(dpi, Key::HasAlpha), QVariant(false));
}

TEST(ImageSource, gifWithoutFramesHoldsNoImage)
{
    TestDir dir;
    // Header, a 1x1 logical screen without a colour table, then the trailer.
    const QString path =
        dir.write(QStringLiteral("empty.gif"), QByteArray("GIF89a\x01\x00\x01\x00\x00\x00\x00\x3b", 14));
    const auto source = ImageSource::create(path);
    ASSERT_TRUE(source);
    EXPECT_EQ(source->imageCount(), 0);
    EXPECT_TRUE(source->propertiesAtIndex(0).isEmpty());
}

TEST(ImageSource, opensNamesThatAreNotUtf8)
{
    TestDir dir;
    const QString written = TestImages::writeJpeg(dir.filePath(QStringLiteral("plain.jpg")), {24, 12});
    const QByteArray native = QFile::encodeName(dir.path()) + "/caf\xff.jpg";
    ASSERT_EQ(std::rename(QFile::encodeName(written).constData(), native.constData()), 0);

    QString error;
    const auto source = ImageSource::create(native, QStringLiteral("public.jpeg"), &error);
    ASSERT_TRUE(source) << qPrintable(error);
    EXPECT_EQ(value(source->propertiesAtIndex(0), Key::PixelWidth).toInt(), 24);
}

TEST(ImageSource, readsFromSeveralThreadsAtOnce)
{
    // XMP and IPTC exercise the XMP toolkit's lock, camera files Exiv2's maker-note tables.
    TestDir dir;
    QStringList files;
    // Packets that name the XMP namespace by its old prefix, as older writers do (Exiv2 registers
    // it anew on every read), with a rating that shows in the properties, so that a packet lost to
    // a race is seen.
    for (int i = 1; i <= 4; ++i) {
        TestImages::JpegOptions tagged;
        tagged.make = QStringLiteral("Canon");
        tagged.keywords = {QStringLiteral("Zürich")};
        const QString path =
            TestImages::writeJpeg(dir.filePath(QStringLiteral("tagged-%1.jpg").arg(i)), {64, 48}, tagged);
        insertXmpPacket(path,
                        R"(<x:xmpmeta xmlns:x="adobe:ns:meta/"><rdf:RDF )"
                        R"(xmlns:rdf="http://www.w3.org/1999/02/22-rdf-syntax-ns#">)"
                        R"(<rdf:Description rdf:about="" xmlns:xap="http://ns.adobe.com/xap/1.0/" )"
                        R"(xmlns:lab)"
                            + QByteArray::number(i) + R"(="http://example.com/lab/)" + QByteArray::number(i)
                            + R"(/" xap:Rating=")" + QByteArray::number(i) + R"(" lab)" + QByteArray::number(i)
                            + R"(:Batch="7"/></rdf:RDF></x:xmpmeta>)");
        files.append(path);
    }
    files += {
        TestImages::dataFile(QStringLiteral("orientation-6.jpg")),
        TestImages::dataFile(QStringLiteral("small-with-thumbnail.heic")),
        TestImages::dataFile(QStringLiteral("exif-entry-count-too-large.jpg")),
    };
    if (!TestImages::corpusDir().isEmpty()) {
        for (const char *name : {"jpg/xmp/BlueSquare.jpg", "jpg/xmp/no_exif.jpg", "jpg/Canon_40D.jpg",
                                 "jpg/Nikon_D70.jpg", "jpg/gps/DSCN0029.jpg", "heic/IMG_5195.HEIC", "tiff/Tless0.tiff"})
            files.append(corpusFile(QLatin1String(name)));
    }
    std::vector<QVariantMap> expected;
    for (const QString &file : files)
        expected.push_back(propertiesOf(file));

    std::atomic<int> mismatches{0};
    auto readAll = [&] {
        for (int round = 0; round < 20; ++round) {
            for (int i = 0; i < files.size(); ++i) {
                const auto source = ImageSource::create(files.at(i));
                if (!source || source->propertiesAtIndex(0) != expected.at(size_t(i)))
                    ++mismatches;
            }
        }
    };
    std::thread first(readAll);
    std::thread second(readAll);
    first.join();
    second.join();
    EXPECT_EQ(mismatches.load(), 0);
}
