#include "core/imaging/ImageSource.h"

#include "core/app/Log.h"
#include "core/imaging/ExifReader.h"
#include "core/imaging/HeifReader.h"
#include "core/imaging/IccProfile.h"
#include "core/imaging/ImageHeaderReader.h"
#include "core/imaging/NativeFile.h"
#include "core/imaging/RawReader.h"
#include "core/model/PXFile.h"

#include <QFile>

namespace {

// One read covers the signature of every format and, in most camera JPEGs, every segment
// before the first scan (EXIF with maker notes and thumbnail, ICC profile, XMP).
constexpr qint64 HeadSize = 64 * 1024;

QString colorModelForPhotometric(int photometric)
{
    switch (photometric) {
    case 0: // white is zero
    case 1: return QStringLiteral("Gray");
    case 2: // RGB
    case 3: // palette
    case 6: return QStringLiteral("RGB"); // YCbCr
    case 5: return QStringLiteral("CMYK"); // separated
    case 8: // CIE L*a*b*
    case 9: // ICC L*a*b*
    case 10: return QStringLiteral("Lab"); // ITU L*a*b*
    default: return {};
    }
}

// A plain TIFF file says its layout in IFD0, more precisely than Qt's plugin can.
void applyTiffLayout(const ImageMetadata &metadata, ImageHeader *header)
{
    if (metadata.bitsPerSample > 0)
        header->depth = metadata.bitsPerSample;
    const QString model = colorModelForPhotometric(metadata.photometric);
    if (!model.isEmpty())
        header->colorModel = model;
    if (metadata.photometric >= 0)
        header->hasAlpha = metadata.extraSamples;
}

bool isImageMimeType(const QString &mimeType)
{
    return mimeType.startsWith(QLatin1String("image/")) && mimeType != QLatin1String("image/x-exv");
}

void insertGroup(QVariantMap *properties, const char *key, const QVariantMap &group)
{
    if (!group.isEmpty())
        properties->insert(QLatin1String(key), group);
}

QVariantMap buildProperties(const ImageHeader &header, const ImageMetadata &metadata)
{
    namespace Key = ImagePropertyKey;
    QVariantMap properties;
    const int width = header.width > 0 ? header.width : metadata.pixelWidth;
    const int height = header.height > 0 ? header.height : metadata.pixelHeight;
    if (width > 0)
        properties.insert(QLatin1String(Key::PixelWidth), width);
    if (height > 0)
        properties.insert(QLatin1String(Key::PixelHeight), height);
    if (header.depth > 0)
        properties.insert(QLatin1String(Key::Depth), header.depth);
    if (header.hasAlpha)
        properties.insert(QLatin1String(Key::HasAlpha), *header.hasAlpha);
    if (!header.colorModel.isEmpty())
        properties.insert(QLatin1String(Key::ColorModel), header.colorModel);
    const QString profileName =
        iccProfileDescription(header.iccProfile.isEmpty() ? metadata.iccProfile : header.iccProfile);
    if (!profileName.isEmpty())
        properties.insert(QLatin1String(Key::ProfileName), profileName);
    if (metadata.orientation)
        properties.insert(QLatin1String(Key::Orientation), *metadata.orientation);
    // The camera's own statement of density first, then the header's (JFIF, pHYs).
    const bool exifDensity = metadata.dpiWidth && metadata.dpiHeight;
    const std::optional<double> dpiWidth = exifDensity ? metadata.dpiWidth : header.dpiWidth;
    const std::optional<double> dpiHeight = exifDensity ? metadata.dpiHeight : header.dpiHeight;
    if (dpiWidth && dpiHeight) {
        properties.insert(QLatin1String(Key::DPIWidth), *dpiWidth);
        properties.insert(QLatin1String(Key::DPIHeight), *dpiHeight);
    }
    insertGroup(&properties, Key::ExifDictionary, metadata.exif);
    insertGroup(&properties, Key::ExifAuxDictionary, metadata.exifAux);
    insertGroup(&properties, Key::IPTCDictionary, metadata.iptc);
    insertGroup(&properties, Key::GPSDictionary, metadata.gps);
    insertGroup(&properties, Key::TIFFDictionary, metadata.tiff);
    return properties;
}

} // namespace

struct ImageSource::Private
{
    int imageCount = 0;
    QVariantMap properties;
};

ImageSource::ImageSource(std::unique_ptr<Private> d)
    : m_d(std::move(d))
{ }

ImageSource::~ImageSource() = default;

std::unique_ptr<ImageSource> ImageSource::create(const QString &path, const QString &typeHint, QString *error)
{
    return create(QFile::encodeName(path), typeHint, error);
}

std::unique_ptr<ImageSource> ImageSource::create(const QByteArray &nativePath, const QString &typeHint, QString *error)
{
    auto fail = [&](const QString &reason) {
        if (error)
            *error = reason;
        return std::unique_ptr<ImageSource>();
    };

    NativeFile file;
    QString reason;
    if (!file.open(nativePath, &reason))
        return fail(QStringLiteral("cannot open the file: %1").arg(reason));
    if (file.size() == 0)
        return fail(QStringLiteral("the file is empty"));
    const QByteArray head = file.read(0, HeadSize);

    ImageHeader header;
    ImageMetadata metadata;
    QString headerError;
    QString metadataError;
    bool haveHeader = false;
    bool haveMetadata = false;
    const ImageFormat format = ImageHeaderReader::detectFormat(head, typeHint, nativePath);
    switch (format) {
    case ImageFormat::Jpeg: {
        // A JPEG without a frame header has no image, whatever metadata it carries.
        QByteArray metadataBytes;
        if (!ImageHeaderReader::readJpeg(file, head, &header, &metadataBytes, &headerError))
            return fail(headerError);
        haveHeader = true;
        haveMetadata = ExifReader::readBuffer(metadataBytes, &metadata, &metadataError);
        break;
    }
    case ImageFormat::Png:
        haveHeader = ImageHeaderReader::readPng(file, head, &header, &headerError);
        haveMetadata = ExifReader::readFile(nativePath, &metadata, &metadataError);
        break;
    case ImageFormat::Heif:
        // libheif hands over the EXIF and XMP items; Exiv2's own ISO media parser misses
        // items that live in the 'idat' box.
        haveHeader = HeifReader::read(nativePath, &header, &headerError);
        haveMetadata = haveHeader
            ? ExifReader::readBlocks(header.exifBlock, header.xmpPacket, &metadata, &metadataError)
            : ExifReader::readFile(nativePath, &metadata, &metadataError);
        break;
    case ImageFormat::CameraRaw:
        haveHeader = RawReader::read(nativePath, &header, &headerError);
        if (!haveHeader) {
            header = {};
            haveHeader = ImageHeaderReader::readWithQt(file, head, &header, &headerError);
        }
        haveMetadata = ExifReader::readFile(nativePath, &metadata, &metadataError);
        break;
    case ImageFormat::Tiff:
    case ImageFormat::Other:
        haveHeader = ImageHeaderReader::readWithQt(file, head, &header, &headerError);
        haveMetadata = ExifReader::readFile(nativePath, &metadata, &metadataError);
        break;
    }

    if (!haveHeader) {
        // Exiv2 alone vouches for an image only when it recognised an image format (it also
        // reads videos, XMP sidecars and its own metadata files).
        if (!haveMetadata || !isImageMimeType(metadata.mimeType))
            return fail(headerError.isEmpty() ? metadataError : headerError);
        header = {}; // a half-read header says nothing reliable; the metadata reader's size stands
    }
    if (!haveMetadata) {
        logDebug(QStringLiteral("No metadata in %1: %2").arg(QFile::decodeName(nativePath), metadataError));
        metadata = {};
    } else if (format == ImageFormat::Tiff) {
        applyTiffLayout(metadata, &header);
    }

    auto d = std::make_unique<Private>();
    d->imageCount = header.imageCount;
    if (d->imageCount > 0)
        d->properties = buildProperties(header, metadata);
    return std::unique_ptr<ImageSource>(new ImageSource(std::move(d)));
}

void ImageSource::install()
{
    PXFile::setImagePropertiesReader(
        [](const QByteArray &nativePath, const QString &typeHint, QVariantMap *properties, QString *error) {
            const std::unique_ptr<ImageSource> source = create(nativePath, typeHint, error);
            if (!source)
                return false;
            if (source->imageCount() > 0)
                *properties = source->propertiesAtIndex(0);
            return true;
        });
}

int ImageSource::imageCount() const
{
    return m_d->imageCount;
}

QVariantMap ImageSource::propertiesAtIndex(int index) const
{
    return index == 0 && index < m_d->imageCount ? m_d->properties : QVariantMap();
}
