#include "core/imaging/ImagePropertiesItem.h"
#include "core/model/PXFile.h"

#include "support/TestDir.h"
#include "support/TestImages.h"

#include <QFile>

#include <gtest/gtest.h>

namespace {

QVariantMap gpsProperties(double latitude, const QVariant &latitudeRef, double longitude, const QVariant &longitudeRef)
{
    QVariantMap gps{{QStringLiteral("Latitude"), latitude}, {QStringLiteral("Longitude"), longitude}};
    if (latitudeRef.isValid())
        gps.insert(QStringLiteral("LatitudeRef"), latitudeRef);
    if (longitudeRef.isValid())
        gps.insert(QStringLiteral("LongitudeRef"), longitudeRef);
    return {{QStringLiteral("{GPS}"), gps}};
}

ImagePropertiesItem record(const QVariantMap &properties)
{
    return ImagePropertiesItem(PXFile::fileForPath(QStringLiteral("/nonexistent/a.jpg")), properties,
                               QDateTime::currentDateTimeUtc());
}

} // namespace

TEST(ImagePropertiesItem, takesOnlyValuesOfTheFieldsType)
{
    const QVariantMap properties{
        {QStringLiteral("PixelWidth"), 4000},
        {QStringLiteral("PixelHeight"), QStringLiteral("3000")}, // text where a number belongs
        {QStringLiteral("Depth"), 8.0}, // a whole real is a whole number
        {QStringLiteral("HasAlpha"), false},
        {QStringLiteral("ColorModel"), QStringLiteral("RGB")},
        {QStringLiteral("{Exif}"),
         QVariantMap{{QStringLiteral("ISOSpeedRatings"), 200}, // one number, not a list
                     {QStringLiteral("FNumber"), 4}, // a whole number is a real too
                     {QStringLiteral("Flash"), 16.5},
                     {QStringLiteral("LensModel"), 50},
                     {QStringLiteral("DateTimeOriginal"), QStringLiteral("2023:07:14 18:30:05")}}},
        {QStringLiteral("{ExifAux}"), QStringLiteral("not a dictionary")},
        {QStringLiteral("{IPTC}"),
         QVariantMap{{QStringLiteral("Keywords"), QVariantList{QStringLiteral("a"), 2}}, // mixed list
                     {QStringLiteral("City"), QStringLiteral("Zürich")}}},
        {QStringLiteral("{GPS}"),
         QVariantMap{{QStringLiteral("HPositioningError"), 5.5},
                     {QStringLiteral("ImgDirection"), 123.4},
                     {QStringLiteral("ImgDirectionRef"), QStringLiteral("T")},
                     {QStringLiteral("AltitudeRef"), 1}}},
    };
    const ImagePropertiesItem item = record(properties);

    EXPECT_TRUE(item.hasMetadata());
    EXPECT_EQ(item.originalProperties(), properties);
    EXPECT_EQ(item.pixelWidth, 4000);
    EXPECT_FALSE(item.pixelHeight);
    EXPECT_EQ(item.colorDepth, 8);
    EXPECT_EQ(item.hasAlpha, false);
    EXPECT_FALSE(item.isoSpeeds);
    EXPECT_FALSE(item.iso());
    EXPECT_EQ(item.fNumber, 4.0);
    EXPECT_FALSE(item.flashStatus);
    EXPECT_FALSE(item.lensModel);
    EXPECT_EQ(item.dateTimeOriginal, QStringLiteral("2023:07:14 18:30:05"));
    EXPECT_FALSE(item.firmwareVersion);
    EXPECT_FALSE(item.keywords);
    EXPECT_EQ(item.city, QStringLiteral("Zürich"));
    EXPECT_FALSE(item.positioningError);
    EXPECT_EQ(item.imageDirection, 123.4);
    // The reference is read under the direction's key, which holds a number.
    EXPECT_FALSE(item.imageDirectionReference);
    EXPECT_EQ(item.altitudeReference, 1);

    const ImagePropertiesItem listed =
        record({{QStringLiteral("{Exif}"), QVariantMap{{QStringLiteral("ISOSpeedRatings"), QVariantList{400, 800}}}},
                {QStringLiteral("{GPS}"), QVariantMap{{QStringLiteral("HPositioningError"), 5.0}}}});
    EXPECT_EQ(listed.isoSpeeds, (QList<qint64>{400, 800}));
    EXPECT_EQ(listed.iso(), 400);
    EXPECT_EQ(listed.positioningError, 5);

    const ImagePropertiesItem plain(PXFile::fileForPath(QStringLiteral("/nonexistent/a.txt")));
    EXPECT_FALSE(plain.hasMetadata());
    EXPECT_TRUE(plain.originalProperties().isEmpty());
    EXPECT_LT(plain.lastPropertyLoadDate(), QDateTime(QDate(1900, 1, 1), QTime(0, 0)));
    EXPECT_FALSE(plain.orientation);
}

TEST(ImagePropertiesItem, signsCoordinatesByTheirReferences)
{
    using Coordinate = std::pair<double, double>;
    EXPECT_EQ(record(gpsProperties(48.1, QStringLiteral("S"), 11.5, QStringLiteral("W"))).signedCoordinate(),
              Coordinate(-48.1, -11.5));
    EXPECT_EQ(record(gpsProperties(48.1, QStringLiteral("-1"), 11.5, QStringLiteral("E"))).signedCoordinate(),
              Coordinate(-48.1, 11.5));
    EXPECT_EQ(record(gpsProperties(48.1, QString(), 11.5, QStringLiteral("1"))).signedCoordinate(),
              Coordinate(48.1, 11.5));
    EXPECT_EQ(record(gpsProperties(48.1, QStringLiteral("N"), 11.5, QStringLiteral("x"))).signedCoordinate(),
              Coordinate(48.1, 11.5));
    // Without both references nothing is signed.
    EXPECT_EQ(record(gpsProperties(48.1, QStringLiteral("S"), 11.5, QVariant())).signedCoordinate(),
              Coordinate(48.1, 11.5));
    const ImagePropertiesItem none = record({});
    EXPECT_EQ(none.signedCoordinate(), Coordinate(0, 0));
    const GPSInfo info = none.gpsInfo();
    EXPECT_EQ(info.coordinate, Coordinate(0, 0));
    EXPECT_FALSE(info.latitude);
    EXPECT_FALSE(info.altitude);
}

TEST(ImagePropertiesItem, buildsTextsFromSeveralFields)
{
    ImagePropertiesItem item = record({});
    item.dateTimeOriginal = QStringLiteral("2023:07:14 18:30:05");
    EXPECT_EQ(item.fullDateTaken(), QStringLiteral("2023:07:14 18:30:05"));
    item.offsetTime = QStringLiteral("+01:00");
    EXPECT_EQ(item.fullDateTaken(), QStringLiteral("2023:07:14 18:30:05 +01:00"));
    item.offsetTimeOriginal = QStringLiteral("+02:00");
    EXPECT_EQ(item.fullDateTaken(), QStringLiteral("2023:07:14 18:30:05 +02:00"));
    EXPECT_FALSE(item.fullDateDigitized());

    item.bylineTitle = QStringLiteral("Photographer");
    EXPECT_FALSE(item.bylineInformation());
    item.byline = QStringLiteral("Ann");
    EXPECT_EQ(item.bylineInformation(), QStringLiteral("Photographer Ann"));

    item.city = QStringLiteral("Paris");
    item.countryCode = QStringLiteral("FR"); // the country's name wins over its code
    item.country = QStringLiteral("France");
    item.state = QStringLiteral("IDF");
    EXPECT_EQ(item.textualLocation(), QStringLiteral("Paris, IDF, France"));
    item.subLocation = QStringLiteral("Rue X");
    EXPECT_EQ(item.textualLocation(), QStringLiteral("Rue X, Paris, IDF, France"));
    item.state.reset(); // a street and its city: no country
    EXPECT_EQ(item.textualLocation(), QStringLiteral("Rue X, Paris"));

    item.latitude = 48.1;
    item.longitude = 11.5;
    item.latitudeReference = QStringLiteral("S");
    item.longitudeReference = QStringLiteral("E");
    EXPECT_EQ(item.latLongInformation(), QStringLiteral("48.100000 S, 11.500000 E"));

    item.altitude = 12.6;
    EXPECT_EQ(item.altitudeInformation(), QStringLiteral("13 meters"));
    item.altitudeReference = 1;
    EXPECT_EQ(item.altitudeInformation(), QStringLiteral("-13 meters"));
    item.speed = 3.26;
    EXPECT_EQ(item.speedInformation(), QStringLiteral("3.3"));
    item.speedReference = QStringLiteral("N");
    EXPECT_EQ(item.speedInformation(), QStringLiteral("3.3 Knots"));
}

TEST(ImagePropertiesItem, loadsAFileOrSaysWhyNot)
{
    TestDir dir;
    TestImages::JpegOptions options;
    options.make = QStringLiteral("Canon");
    options.model = QStringLiteral("Canon EOS 5D");
    options.iso = {640};
    options.latitude = -33.5;
    options.longitude = 151.25;
    options.keywords = {QStringLiteral("beach"), QStringLiteral("Sydney")};
    options.extra.insert(QStringLiteral("Exif.Photo.ExposureTime"), QStringLiteral("1/250"));
    const QString path = TestImages::writeJpeg(dir.filePath(QStringLiteral("a.jpg")), QSize(64, 48), options);

    LoadingError error = LoadingError::noURLForFile;
    QString reason;
    const ImagePropertiesItemPtr item = ImagePropertiesItem::load(PXFile::fileForPath(path), &error, &reason);
    ASSERT_TRUE(item) << qPrintable(reason);
    EXPECT_TRUE(item->hasMetadata());
    EXPECT_GT(item->lastPropertyLoadDate(), QDateTime::currentDateTimeUtc().addSecs(-60));
    EXPECT_EQ(item->tiffHardwareModel, QStringLiteral("Canon EOS 5D"));
    EXPECT_EQ(item->iso(), 640);
    EXPECT_DOUBLE_EQ(*item->exposureTime, 0.004);
    EXPECT_EQ(item->pixelWidth, 64);
    EXPECT_EQ(item->keywords, (QStringList{QStringLiteral("beach"), QStringLiteral("Sydney")}));
    EXPECT_NEAR(item->signedCoordinate().first, -33.5, 1e-6);
    EXPECT_NEAR(item->signedCoordinate().second, 151.25, 1e-6);
    // The file record's own image facts come from the same read, not from a second one.
    ASSERT_TRUE(QFile::remove(path));
    EXPECT_EQ(item->file()->dimensionsString(), QStringLiteral("64x48"));

    const QString empty = dir.write(QStringLiteral("empty.jpg"));
    EXPECT_FALSE(ImagePropertiesItem::load(PXFile::fileForPath(empty), &error, &reason));
    EXPECT_EQ(error, LoadingError::cannotLoadData);
    EXPECT_FALSE(reason.isEmpty());
}

// Many programs write the description, keywords, title and creator to XMP only; the IPTC block
// keeps precedence where a file has both.
TEST(ImagePropertiesItem, fillsTheIptcValuesFromXmpWhereTheIptcBlockHasNone)
{
    TestDir dir;
    TestImages::JpegOptions xmpOnly;
    xmpOnly.extra.insert(QStringLiteral("Xmp.dc.subject"), QStringLiteral("harbour"));
    xmpOnly.extra.insert(QStringLiteral("Xmp.dc.description"), QStringLiteral("Boats at dawn"));
    xmpOnly.extra.insert(QStringLiteral("Xmp.dc.title"), QStringLiteral("Morning"));
    xmpOnly.extra.insert(QStringLiteral("Xmp.dc.creator"), QStringLiteral("Ana Lima"));
    const QString onlyXmp = TestImages::writeJpeg(dir.filePath(QStringLiteral("xmp.jpg")), QSize(32, 32), xmpOnly);
    const ImagePropertiesItemPtr fromXmp = ImagePropertiesItem::load(PXFile::fileForPath(onlyXmp));
    ASSERT_TRUE(fromXmp);
    EXPECT_EQ(fromXmp->keywords, QStringList{QStringLiteral("harbour")});
    EXPECT_EQ(fromXmp->caption, QStringLiteral("Boats at dawn"));
    EXPECT_EQ(fromXmp->headline, QStringLiteral("Morning"));
    EXPECT_EQ(fromXmp->byline, QStringLiteral("Ana Lima"));

    TestImages::JpegOptions both = xmpOnly;
    both.keywords = {QStringLiteral("quay")};
    both.extra.insert(QStringLiteral("Iptc.Application2.Caption"), QStringLiteral("Fishing boats"));
    both.extra.insert(QStringLiteral("Xmp.photoshop.Headline"), QStringLiteral("Dawn"));
    const QString bothPath = TestImages::writeJpeg(dir.filePath(QStringLiteral("both.jpg")), QSize(32, 32), both);
    const ImagePropertiesItemPtr fromBoth = ImagePropertiesItem::load(PXFile::fileForPath(bothPath));
    ASSERT_TRUE(fromBoth);
    EXPECT_EQ(fromBoth->keywords, QStringList{QStringLiteral("quay")});
    EXPECT_EQ(fromBoth->caption, QStringLiteral("Fishing boats"));
    EXPECT_EQ(fromBoth->headline, QStringLiteral("Dawn"));
    EXPECT_EQ(fromBoth->byline, QStringLiteral("Ana Lima"));
}
