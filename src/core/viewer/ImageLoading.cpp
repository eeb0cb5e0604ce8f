#include "core/viewer/ImageLoading.h"

#include "core/app/Translate.h"
#include "core/imaging/EmbeddedPreview.h"
#include "core/imaging/ImageDecoder.h"
#include "core/imaging/ImageHeaderReader.h"
#include "core/imaging/ImageSource.h"
#include "core/imaging/JpegDecoder.h"
#include "core/imaging/JpegStructure.h"
#include "core/imaging/NativeFile.h"
#include "core/model/ImagePropertyKeys.h"
#include "core/viewer/ColorTransform.h"

#include <QColorSpace>
#include <QFile>

#include <algorithm>
#include <cmath>

namespace ImageLoading {
namespace {

constexpr Translator tr("ImageLoading");

QString partialNotice()
{
    return tr("Only part of this image could be read.");
}

QString unreadable(const QString &reason)
{
    return tr("This file cannot be shown: %1").arg(reason);
}

// What the JPEG's segments say: the stored size, the orientation and the colour profile.
struct JpegFacts
{
    QSize stored;
    int orientation = 1;
    QByteArray iccProfile;
    QSize upright() const { return orientation >= 5 ? stored.transposed() : stored; }
};

bool readJpegFacts(const NativeFile &file, const QByteArray &head, JpegFacts *facts, QString *error)
{
    ImageHeader header;
    QByteArray segments;
    if (!ImageHeaderReader::readJpeg(file, head, &header, &segments, error))
        return false;
    facts->stored = QSize(header.width, header.height);
    const int orientation = JpegStructure::parse(segments).orientation;
    facts->orientation = orientation >= 1 && orientation <= 8 ? orientation : 1;
    facts->iccProfile = ColorTransform::jpegIccProfile(segments);
    return !facts->stored.isEmpty();
}

// The full upright size from the file's properties (formats other than JPEG).
QSize propertiesSize(const QByteArray &nativePath)
{
    const auto source = ImageSource::create(nativePath);
    if (!source)
        return {};
    const QVariantMap properties = source->propertiesAtIndex(0);
    const QSize stored(properties.value(QLatin1String(ImagePropertyKey::PixelWidth)).toInt(),
                       properties.value(QLatin1String(ImagePropertyKey::PixelHeight)).toInt());
    const int orientation = properties.value(QLatin1String(ImagePropertyKey::Orientation)).toInt();
    return orientation >= 5 && orientation <= 8 ? stored.transposed() : stored;
}

// The stated size turned to the picture's shape: formats that turn themselves upright (HEIF's
// rotation boxes) state the stored size.
QSize matchingShape(QSize stated, QSize picture)
{
    if (stated.isEmpty() || picture.isEmpty())
        return stated;
    const bool statedWide = stated.width() >= stated.height();
    const bool pictureWide = picture.width() >= picture.height();
    if (statedWide != pictureWide && stated.width() != stated.height() && picture.width() != picture.height())
        return stated.transposed();
    return stated;
}

// The size a JPEG decodes to for a full-resolution request: whole when its pixels fit the memory
// limit, else the largest eighth (the DCT scales) that does.
QSize jpegFullDecodeSize(QSize stored, qint64 memoryLimit)
{
    const double pixels = double(stored.width()) * stored.height();
    if (pixels * 4 <= double(memoryLimit))
        return {};
    const int eighths = std::clamp(int(std::floor(8 * std::sqrt(double(memoryLimit) / (4 * pixels)))), 1, 8);
    return QSize(int(std::ceil(stored.width() * eighths / 8.0)), int(std::ceil(stored.height() * eighths / 8.0)));
}

Result decodeJpeg(const NativeFile &native, const QByteArray &head, const QByteArray &nativePath, QSize fitSize,
                  qint64 memoryLimit)
{
    Result result;
    JpegFacts facts;
    QString error;
    if (!readJpegFacts(native, head, &facts, &error)) {
        result.error = unreadable(error);
        return result;
    }
    result.imageSize = facts.upright();
    QFile file(QFile::decodeName(nativePath));
    if (!file.open(QIODevice::ReadOnly)) {
        result.error = unreadable(file.errorString());
        return result;
    }
    // Read, not mapped: a file written over in place while it is decoded (an editor saving, a
    // copy arriving) would take mapped pages away under the decoder, and the program would end
    // with a bus error. The copy costs a few milliseconds beside the decode.
    const QByteArray copy = file.readAll();
    const qint64 size = copy.size();
    const char *data = copy.constData();
    // Fitting the stored image into the turned box fits the upright one into the box.
    QSize storedFit = fitSize;
    if (facts.orientation >= 5)
        storedFit.transpose();
    // Never more than the memory limit allows, whatever was asked.
    const QSize largest = jpegFullDecodeSize(facts.stored, memoryLimit);
    if (storedFit.isEmpty()
        || (!largest.isEmpty() && (storedFit.width() > largest.width() || storedFit.height() > largest.height())))
        storedFit = largest;
    QString warning;
    // The picture on screen waits for this decode: both cores, where the file allows and is large
    // enough for it to pay (below 4 MP one core takes a few tens of milliseconds).
    const bool twoThreads = qint64(facts.stored.width()) * facts.stored.height() >= 4'000'000;
    QImage image = JpegDecoder::decode(data, size, storedFit, memoryLimit, &error, &warning, twoThreads);
    if (image.isNull() && error == QLatin1String("CMYK JPEG")) {
        // Qt's reader converts CMYK; it turns the picture upright itself.
        ImageDecoder::Options options;
        options.fitSize = fitSize.isEmpty() ? jpegFullDecodeSize(facts.upright(), memoryLimit) : fitSize;
        options.memoryLimit = memoryLimit;
        image = ImageDecoder::decode(nativePath, options, &error);
        if (image.isNull())
            result.error = unreadable(error);
        result.image = image;
        return result;
    }
    if (image.isNull()) {
        result.error = unreadable(error);
        return result;
    }
    if (!warning.isEmpty())
        result.notice = partialNotice();
    image = ImageDecoder::oriented(ImageDecoder::scaledToFit(image, storedFit), facts.orientation);
    ColorTransform::toDisplay(image, facts.iccProfile);
    result.image = image;
    return result;
}

Result decodeOther(const QByteArray &nativePath, QSize fitSize, qint64 memoryLimit)
{
    Result result;
    const QSize stated = propertiesSize(nativePath);
    ImageDecoder::Options options;
    options.fitSize = fitSize.isEmpty() && !stated.isEmpty() ? sizeWithinMemory(stated, memoryLimit) : fitSize;
    if (options.fitSize == stated)
        options.fitSize = {};
    options.memoryLimit = memoryLimit;
    QString error;
    QImage image = ImageDecoder::decode(nativePath, options, &error);
    if (image.isNull()) {
        result.imageSize = stated;
        result.error = unreadable(error);
        return result;
    }
    // Qt's readers attach the file's profile as the picture's colour space.
    const QColorSpace space = image.colorSpace();
    if (space.isValid() && space != QColorSpace(QColorSpace::SRgb)) {
        ColorTransform::toDisplay(image, space.iccProfile());
        image.setColorSpace(QColorSpace());
    }
    result.imageSize = options.fitSize.isEmpty() ? image.size() : matchingShape(stated, image.size());
    if (result.imageSize.isEmpty())
        result.imageSize = image.size();
    result.image = image;
    return result;
}

} // namespace

QSize sizeWithinMemory(QSize size, qint64 memoryLimit)
{
    const double pixels = double(size.width()) * size.height();
    if (size.isEmpty() || pixels * 4 <= double(memoryLimit))
        return size;
    const double scale = std::sqrt(double(memoryLimit) / (4 * pixels));
    return QSize(std::max(1, int(size.width() * scale)), std::max(1, int(size.height() * scale)));
}

Result preview(const QByteArray &nativePath, int neededPixels)
{
    Result result;
    NativeFile file;
    QString error;
    if (!file.open(nativePath, &error)) {
        result.error = unreadable(error);
        return result;
    }
    const QByteArray head = file.read(0, 256);
    if (ImageHeaderReader::detectFormat(head, {}, nativePath) == ImageFormat::Jpeg) {
        JpegFacts facts;
        if (readJpegFacts(file, head, &facts, &error))
            result.imageSize = facts.upright();
    } else {
        result.imageSize = propertiesSize(nativePath);
    }
    // A file without a preview is no error: the decode step follows.
    result.image = EmbeddedPreview::read(nativePath, neededPixels, &error);
    result.imageSize = matchingShape(result.imageSize, result.image.size());
    return result;
}

Result decode(const QByteArray &nativePath, QSize fitSize, qint64 memoryLimit)
{
    NativeFile file;
    QString error;
    if (!file.open(nativePath, &error))
        return {{}, {}, unreadable(error), {}};
    if (file.size() == 0)
        return {{}, {}, unreadable(tr("the file is empty")), {}};
    const QByteArray head = file.read(0, 256);
    if (ImageHeaderReader::detectFormat(head, {}, nativePath) == ImageFormat::Jpeg)
        return decodeJpeg(file, head, nativePath, fitSize, memoryLimit);
    return decodeOther(nativePath, fitSize, memoryLimit);
}

} // namespace ImageLoading
