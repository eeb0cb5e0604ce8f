#include "core/imaging/ImagePropertiesItem.h"

#include "core/app/Translate.h"
#include "core/imaging/ImageSource.h"
#include "core/model/PXFile.h"

#include <sys/stat.h>

#include <cmath>
#include <limits>

namespace {

bool isNumber(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Double:
    case QMetaType::Float: return true;
    default: return false;
    }
}

// A number that is exactly a whole 64-bit value; 5.5, NaN and text are not.
std::optional<qint64> exactInteger(const QVariant &value)
{
    if (!isNumber(value))
        return std::nullopt;
    if (value.typeId() == QMetaType::Double || value.typeId() == QMetaType::Float) {
        const double real = value.toDouble();
        // 2^63 itself does not fit; every double below it that is whole does.
        if (!std::isfinite(real) || real != std::trunc(real) || real >= 9223372036854775808.0
            || real < -9223372036854775808.0)
            return std::nullopt;
        return qint64(real);
    }
    if (value.typeId() == QMetaType::ULongLong && value.toULongLong() > quint64(std::numeric_limits<qint64>::max()))
        return std::nullopt;
    return value.toLongLong();
}

// Reads the typed fields of one group; a missing group or one that is not a dictionary reads
// as empty, so that every field of it stays absent.
class Group
{
public:
    Group(const QVariantMap &properties, const char *key)
    {
        const QVariant group = properties.value(QLatin1String(key));
        if (group.typeId() == QMetaType::QVariantMap)
            m_values = group.toMap();
    }
    explicit Group(const QVariantMap &topLevel)
        : m_values(topLevel)
    { }

    void read(const char *key, std::optional<QString> &field) const
    {
        const QVariant value = m_values.value(QLatin1String(key));
        if (value.typeId() == QMetaType::QString)
            field = value.toString();
    }
    void read(const char *key, std::optional<qint64> &field) const
    {
        field = exactInteger(m_values.value(QLatin1String(key)));
    }
    void read(const char *key, std::optional<double> &field) const
    {
        const QVariant value = m_values.value(QLatin1String(key));
        if (isNumber(value))
            field = value.toDouble();
    }
    void read(const char *key, std::optional<bool> &field) const
    {
        const QVariant value = m_values.value(QLatin1String(key));
        if (value.typeId() == QMetaType::Bool)
            field = value.toBool();
    }
    void read(const char *key, std::optional<QList<qint64>> &field) const
    {
        const QVariant value = m_values.value(QLatin1String(key));
        if (value.typeId() != QMetaType::QVariantList)
            return;
        QList<qint64> numbers;
        for (const QVariant &element : value.toList()) {
            const auto number = exactInteger(element);
            if (!number)
                return;
            numbers.append(*number);
        }
        field = numbers;
    }
    void read(const char *key, std::optional<QStringList> &field) const
    {
        const QVariant value = m_values.value(QLatin1String(key));
        if (value.typeId() == QMetaType::QStringList) {
            field = value.toStringList();
            return;
        }
        if (value.typeId() != QMetaType::QVariantList)
            return;
        QStringList texts;
        for (const QVariant &element : value.toList()) {
            if (element.typeId() != QMetaType::QString)
                return;
            texts.append(element.toString());
        }
        field = texts;
    }

private:
    QVariantMap m_values;
};

// A reference that marks the negative half: the letter, or a negative base-10 integer.
bool negatesCoordinate(const QString &reference, QChar negativeLetter)
{
    if (reference == negativeLetter)
        return true;
    if (reference.isEmpty())
        return false;
    bool ok = false;
    const qlonglong number = reference.toLongLong(&ok, 10);
    return ok && number < 0;
}

constexpr Translator tr("ImagePropertiesItem");

} // namespace

bool GPSInfo::operator==(const GPSInfo &other) const
{
    return file == other.file && coordinate == other.coordinate && latitude == other.latitude
        && longitude == other.longitude && altitude == other.altitude && latitudeReference == other.latitudeReference
        && longitudeReference == other.longitudeReference && altitudeReference == other.altitudeReference
        && positioningError == other.positioningError;
}

ImagePropertiesItem::ImagePropertiesItem(PXFilePtr file)
    : m_file(std::move(file))
    , m_lastPropertyLoadDate(distantPast())
{ }

ImagePropertiesItem::ImagePropertiesItem(PXFilePtr file, const QVariantMap &properties, const QDateTime &loadDate,
                                         const ImageFileStamp &stamp)
    : m_file(std::move(file))
    , m_hasMetadata(true)
    , m_originalProperties(properties)
    , m_lastPropertyLoadDate(loadDate.isValid() ? loadDate : distantPast())
    , m_sourceStamp(stamp)
{
    readProperties(properties);
}

ImageFileStamp ImageFileStamp::of(const QByteArray &nativePath)
{
    struct stat info
    { };
    if (nativePath.isEmpty() || ::stat(nativePath.constData(), &info) != 0)
        return {};
    return {qint64(info.st_size), qint64(info.st_mtim.tv_sec) * 1000000000 + qint64(info.st_mtim.tv_nsec)};
}

bool ImagePropertiesItem::isCurrent() const
{
    return m_sourceStamp.isValid() && m_file && ImageFileStamp::of(m_file->resolvedNativePath()) == m_sourceStamp;
}

QDateTime ImagePropertiesItem::distantPast()
{
    // The first day of year 1, as far back as a date needs to be to come before any load.
    static const QDateTime past(QDate(1, 1, 1), QTime(0, 0), Qt::UTC);
    return past;
}

ImagePropertiesItemPtr ImagePropertiesItem::load(const PXFilePtr &file, LoadingError *error, QString *reason)
{
    auto fail = [&](LoadingError kind, const QString &why) {
        if (error)
            *error = kind;
        if (reason)
            *reason = why;
        return ImagePropertiesItemPtr();
    };
    if (!file || file->nativePath().isEmpty())
        return fail(LoadingError::noURLForFile, tr("the file has no location"));

    // Taken before the read: a write that lands during it leaves the record older than the file.
    const ImageFileStamp stamp = ImageFileStamp::of(file->resolvedNativePath());
    QString sourceError;
    const auto source = ImageSource::create(file->resolvedNativePath(), file->resolvedTypeIdentifier(), &sourceError);
    if (!source) {
        file->cacheImageProperties({}); // what the file record itself would conclude
        return fail(LoadingError::cannotLoadData, sourceError);
    }

    // A source without an image, or without properties, still gives a record: one that says nothing.
    QVariantMap properties;
    QDateTime loadDate;
    if (source->imageCount() > 0) {
        properties = source->propertiesAtIndex(0);
        loadDate = QDateTime::currentDateTimeUtc();
    }
    // The file's own image facts (dimensions, megapixels) come from the same dictionary, so that
    // showing them later does not read the file again on the GUI thread.
    file->cacheImageProperties(properties);
    return std::make_shared<const ImagePropertiesItem>(file, properties, loadDate, stamp);
}

void ImagePropertiesItem::readProperties(const QVariantMap &properties)
{
    namespace Key = ImagePropertyKey;
    const Group top(properties);
    top.read(Key::Orientation, orientation);
    top.read(Key::PixelWidth, pixelWidth);
    top.read(Key::PixelHeight, pixelHeight);
    top.read(Key::Depth, colorDepth);
    top.read(Key::HasAlpha, hasAlpha);
    top.read(Key::NamedColorSpace, colorSpace);
    top.read(Key::ProfileName, colorProfile);
    top.read(Key::ColorModel, colorModel);

    const Group exif(properties, Key::ExifDictionary);
    exif.read("FNumber", fNumber);
    exif.read("ShutterSpeedValue", shutterSpeed);
    exif.read("ApertureValue", aperture);
    exif.read("FocalLength", focalLength);
    exif.read("ISOSpeedRatings", isoSpeeds);
    exif.read("MeteringMode", meteringMode);
    exif.read("ExposureMode", exposureMode);
    exif.read("ExposureTime", exposureTime);
    exif.read("LightSource", lightSource);
    exif.read("Flash", flashStatus);
    exif.read("WhiteBalance", whiteBalance);
    exif.read("ExposureProgram", exposureProgram);
    exif.read("DateTimeOriginal", dateTimeOriginal);
    exif.read("DateTimeDigitized", dateTimeDigitized);
    exif.read("OffsetTimeOriginal", offsetTimeOriginal);
    exif.read("OffsetTimeDigitized", offsetTimeDigitized);
    exif.read("OffsetTime", offsetTime);
    exif.read("LensModel", lensModel);
    exif.read("LensSerialNumber", lensSerialNumber);
    exif.read("UserComment", cameraUserComment);
    exif.read("CameraOwnerName", cameraOwnerName);
    exif.read("BodySerialNumber", cameraSerialNumber);
    exif.read("FileSource", fileSource);

    const Group aux(properties, Key::ExifAuxDictionary);
    aux.read("Firmware", firmwareVersion);
    aux.read("ImageNumber", imageNumber);

    const Group iptc(properties, Key::IPTCDictionary);
    iptc.read("Keywords", keywords);
    iptc.read("ContentLocationCode", locationCode);
    iptc.read("ContentLocationName", locationName);
    iptc.read("Caption/Abstract", caption);
    iptc.read("Headline", headline);
    iptc.read("Credit", credit);
    iptc.read("StarRating", starRating);
    iptc.read("CopyrightNotice", copyrightNotice);
    iptc.read("RightsUsageTerms", rightsUsageTerms);
    iptc.read("Byline", byline);
    iptc.read("BylineTitle", bylineTitle);
    iptc.read("Source", sourceOwner);
    iptc.read("City", city);
    iptc.read("SubLocation", subLocation);
    iptc.read("Province/State", state);
    iptc.read("Country/PrimaryLocationName", country);
    iptc.read("Country/PrimaryLocationCode", countryCode);
    iptc.read("OriginatingProgram", originatingSoftware);
    iptc.read("ProgramVersion", originatingSoftwareVersion);

    const Group gps(properties, Key::GPSDictionary);
    gps.read("Latitude", latitude);
    gps.read("Longitude", longitude);
    gps.read("Altitude", altitude);
    gps.read("LatitudeRef", latitudeReference);
    gps.read("LongitudeRef", longitudeReference);
    gps.read("AltitudeRef", altitudeReference);
    gps.read("HPositioningError", positioningError);
    gps.read("DestBearing", destinationBearing);
    gps.read("DestBearingRef", destinationBearingReference);
    gps.read("ImgDirection", imageDirection);
    // The reference is looked up under the direction's own key, which holds a number: the field
    // stays absent. Kept so that records agree with those written before.
    gps.read("ImgDirection", imageDirectionReference);
    gps.read("Speed", speed);
    gps.read("SpeedRef", speedReference);
    gps.read("TimeStamp", gpsTimeStamp);
    gps.read("DateStamp", gpsDateStamp);

    const Group tiff(properties, Key::TIFFDictionary);
    tiff.read("DocumentName", documentName);
    tiff.read("ImageDescription", imageDescription);
    tiff.read("Artist", artist);
    tiff.read("Copyright", tiffCopyright);
    tiff.read("DateTime", tiffDateTime);
    tiff.read("Make", tiffHardwareManufacturer);
    tiff.read("Model", tiffHardwareModel);
    tiff.read("Software", tiffSoftwareInfo);
    tiff.read("HostComputer", tiffHostComputer);
}

std::pair<double, double> ImagePropertiesItem::signedCoordinate() const
{
    if (!latitude || !longitude)
        return {0, 0};
    if (!latitudeReference || !longitudeReference)
        return {*latitude, *longitude};
    const double lat = negatesCoordinate(*latitudeReference, QLatin1Char('S')) ? -*latitude : *latitude;
    const double lon = negatesCoordinate(*longitudeReference, QLatin1Char('W')) ? -*longitude : *longitude;
    return {lat, lon};
}

GPSInfo ImagePropertiesItem::gpsInfo() const
{
    GPSInfo info;
    info.file = m_file;
    info.coordinate = signedCoordinate();
    info.latitude = latitude;
    info.longitude = longitude;
    info.altitude = altitude;
    info.latitudeReference = latitudeReference;
    info.longitudeReference = longitudeReference;
    info.altitudeReference = altitudeReference;
    info.positioningError = positioningError;
    return info;
}

std::optional<QString> ImagePropertiesItem::colorInformation() const
{
    if (colorDepth && colorModel)
        return tr("%1-bit %2").arg(*colorDepth).arg(*colorModel);
    if (colorModel)
        return *colorModel;
    if (colorDepth)
        return tr("%1-bit").arg(*colorDepth);
    return std::nullopt;
}

std::optional<qint64> ImagePropertiesItem::iso() const
{
    if (!isoSpeeds || isoSpeeds->isEmpty())
        return std::nullopt;
    return isoSpeeds->first();
}

namespace {

std::optional<QString> dateWithOffset(const std::optional<QString> &date, const std::optional<QString> &offset,
                                      const std::optional<QString> &fallbackOffset)
{
    if (!date)
        return std::nullopt;
    if (offset)
        return *date + QLatin1Char(' ') + *offset;
    if (fallbackOffset)
        return *date + QLatin1Char(' ') + *fallbackOffset;
    return *date;
}

} // namespace

std::optional<QString> ImagePropertiesItem::fullDateTaken() const
{
    return dateWithOffset(dateTimeOriginal, offsetTimeOriginal, offsetTime);
}

std::optional<QString> ImagePropertiesItem::fullDateDigitized() const
{
    return dateWithOffset(dateTimeDigitized, offsetTimeDigitized, offsetTime);
}

std::optional<QString> ImagePropertiesItem::keywordsText() const
{
    if (!keywords)
        return std::nullopt;
    const QString joined = keywords->join(QStringLiteral(", "));
    if (joined.isEmpty())
        return std::nullopt;
    return joined;
}

std::optional<QString> ImagePropertiesItem::bylineInformation() const
{
    if (!byline)
        return std::nullopt;
    if (bylineTitle)
        return *bylineTitle + QLatin1Char(' ') + *byline;
    return *byline;
}

std::optional<QString> ImagePropertiesItem::textualLocation() const
{
    // A sub-location with its city and no state reads as a street address: the country is left out.
    if (subLocation && city && !state)
        return *subLocation + QStringLiteral(", ") + *city;
    QStringList parts;
    for (const auto *part : {&subLocation, &city, &state})
        if (*part)
            parts.append(**part);
    if (country)
        parts.append(*country);
    else if (countryCode)
        parts.append(*countryCode);
    if (parts.isEmpty())
        return std::nullopt;
    return parts.join(QStringLiteral(", "));
}

std::optional<QString> ImagePropertiesItem::softwareInformation() const
{
    if (!originatingSoftware)
        return std::nullopt;
    if (originatingSoftwareVersion)
        return *originatingSoftware + QLatin1Char(' ') + *originatingSoftwareVersion;
    return *originatingSoftware;
}

std::optional<QString> ImagePropertiesItem::latLongInformation() const
{
    if (!latitude || !longitude)
        return std::nullopt;
    if (latitudeReference && longitudeReference)
        return QString::asprintf("%.6f %s, %.6f %s", *latitude, qUtf8Printable(*latitudeReference), *longitude,
                                 qUtf8Printable(*longitudeReference));
    return QString::asprintf("%.6f, %.6f", *latitude, *longitude);
}

std::optional<QString> ImagePropertiesItem::altitudeInformation() const
{
    if (!altitude)
        return std::nullopt;
    if (altitudeReference == 1)
        return tr("-%1 meters").arg(QString::asprintf("%1.0f", *altitude));
    return tr("%1 meters").arg(QString::asprintf("%1.0f", *altitude));
}

std::optional<QString> ImagePropertiesItem::positioningErrorInformation() const
{
    if (!positioningError)
        return std::nullopt;
    if (*positioningError == 1)
        return tr("%1 meter").arg(*positioningError);
    return tr("%1 meters").arg(*positioningError);
}

std::optional<QString> ImagePropertiesItem::speedInformation() const
{
    if (!speed)
        return std::nullopt;
    const QString number = QString::asprintf("%1.1f", *speed);
    if (speedReference == QLatin1String("K"))
        return tr("%1 KPH").arg(number);
    if (speedReference == QLatin1String("M"))
        return tr("%1 MPH").arg(number);
    if (speedReference == QLatin1String("N"))
        return tr("%1 Knots").arg(number);
    return number;
}
