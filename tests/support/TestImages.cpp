#include "support/TestImages.h"

#include "core/imaging/ExifReader.h"

#include <QColor>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QtEndian>

#include <exiv2/exiv2.hpp>

#include <cmath>

namespace TestImages {

QString corpusDir()
{
    const QString dir = QStringLiteral(PIXCOVE_CORPUS_DIR);
    return QDir(dir).exists() ? QDir(dir).canonicalPath() : QString();
}

QString dataFile(const QString &name)
{
    const QString path = QStringLiteral(PIXCOVE_TEST_DATA_DIR "/") + name;
    if (!QFile::exists(path))
        qFatal("TestImages: %s is missing from tests/data", qPrintable(name));
    return path;
}

namespace {

// Rewrites the height and width of the first baseline frame header (SOF0, as Qt writes it).
void patchFrameSize(const QString &path, QSize size)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite))
        qFatal("TestImages: cannot reopen %s", qPrintable(path));
    QByteArray bytes = file.readAll();
    qsizetype pos = 2;
    while (pos + 9 < bytes.size() && uchar(bytes.at(pos)) == 0xFF) {
        const uchar marker = uchar(bytes.at(pos + 1));
        const quint16 length = qFromBigEndian<quint16>(bytes.constData() + pos + 2);
        if (marker == 0xC0) {
            qToBigEndian<quint16>(quint16(size.height()), bytes.data() + pos + 5);
            qToBigEndian<quint16>(quint16(size.width()), bytes.data() + pos + 7);
            file.seek(0);
            file.write(bytes);
            return;
        }
        pos += 2 + length;
    }
    qFatal("TestImages: no frame header in %s", qPrintable(path));
}

Exiv2::URationalValue degreesMinutesSeconds(double degrees)
{
    // Seconds to a ten-thousandth, as phones write them.
    const double whole = std::floor(degrees);
    const double minutes = std::floor((degrees - whole) * 60);
    const double seconds = ((degrees - whole) * 60 - minutes) * 60;
    Exiv2::URationalValue value;
    value.value_.push_back({uint32_t(whole), 1});
    value.value_.push_back({uint32_t(minutes), 1});
    value.value_.push_back({uint32_t(std::lround(seconds * 10000)), 10000});
    return value;
}

void writeMetadata(const QString &path, const JpegOptions &options)
{
    ExifReader::initialize();
    Exiv2::Image::AutoPtr image = Exiv2::ImageFactory::open(QFile::encodeName(path).toStdString());
    image->readMetadata();
    Exiv2::ExifData &exif = image->exifData();
    Exiv2::IptcData &iptc = image->iptcData();
    Exiv2::XmpData &xmp = image->xmpData();

    if (!options.dateTimeOriginal.isEmpty())
        exif["Exif.Photo.DateTimeOriginal"] = options.dateTimeOriginal.toStdString();
    if (options.orientation > 0)
        exif["Exif.Image.Orientation"] = uint16_t(options.orientation);
    if (!options.make.isEmpty())
        exif["Exif.Image.Make"] = options.make.toStdString();
    if (!options.model.isEmpty())
        exif["Exif.Image.Model"] = options.model.toStdString();
    if (!options.iso.isEmpty()) {
        Exiv2::UShortValue iso;
        for (int value : options.iso)
            iso.value_.push_back(uint16_t(value));
        exif.add(Exiv2::ExifKey("Exif.Photo.ISOSpeedRatings"), &iso);
    }
    if (options.fNumber > 0)
        exif["Exif.Photo.FNumber"] = Exiv2::URational(uint32_t(std::lround(options.fNumber * 10)), 10);
    if (options.latitude && options.longitude) {
        exif["Exif.GPSInfo.GPSVersionID"] = "2 2 0 0";
        exif["Exif.GPSInfo.GPSLatitudeRef"] = *options.latitude < 0 ? "S" : "N";
        const Exiv2::URationalValue latitude = degreesMinutesSeconds(std::fabs(*options.latitude));
        exif.add(Exiv2::ExifKey("Exif.GPSInfo.GPSLatitude"), &latitude);
        exif["Exif.GPSInfo.GPSLongitudeRef"] = *options.longitude < 0 ? "W" : "E";
        const Exiv2::URationalValue longitude = degreesMinutesSeconds(std::fabs(*options.longitude));
        exif.add(Exiv2::ExifKey("Exif.GPSInfo.GPSLongitude"), &longitude);
    }
    for (const QString &keyword : options.keywords) {
        Exiv2::StringValue value(keyword.toStdString());
        iptc.add(Exiv2::IptcKey("Iptc.Application2.Keywords"), &value);
    }
    for (auto it = options.extra.begin(); it != options.extra.end(); ++it) {
        const std::string key = it.key().toStdString();
        const std::string value = it.value().toStdString();
        if (it.key().startsWith(QLatin1String("Exif.")))
            exif[key] = value;
        else if (it.key().startsWith(QLatin1String("Iptc.")))
            iptc[key] = value;
        else
            xmp[key] = value;
    }
    image->writeMetadata();
}

} // namespace

QString writeJpeg(const QString &path, QSize size, const JpegOptions &options)
{
    // 16x16: one block row of a 4:2:0 JPEG, the cheapest image that still encodes normally.
    QImage image(options.sizeInHeaderOnly ? QSize(16, 16) : size, QImage::Format_RGB32);
    image.fill(QColor(40, 120, 160));
    if (!image.save(path, "JPEG", 90))
        qFatal("TestImages: cannot write %s", qPrintable(path));
    if (options.sizeInHeaderOnly)
        patchFrameSize(path, size);
    try {
        writeMetadata(path, options);
    } catch (const Exiv2::AnyError &e) {
        qFatal("TestImages: cannot write metadata to %s: %s", qPrintable(path), e.what());
    }
    return path;
}

} // namespace TestImages
