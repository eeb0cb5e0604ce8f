#include "core/imaging/ImageDecoder.h"

#include "core/imaging/HeifDecoder.h"
#include "core/imaging/ImageHeaderReader.h"
#include "core/imaging/JpegDecoder.h"
#include "core/imaging/JpegStructure.h"
#include "core/imaging/NativeFile.h"
#include "core/imaging/PngDecoder.h"
#include "core/imaging/RawDecoder.h"

#include <QBuffer>
#include <QFile>
#include <QImageReader>
#include <QPainter>
#include <QSvgRenderer>
#include <QTransform>

namespace ImageDecoder {
namespace {

bool looksLikeSvg(const QByteArray &head, const QByteArray &nativePath)
{
    const QByteArray lower = nativePath.toLower();
    if (lower.endsWith(".svgz"))
        return head.startsWith("\x1F\x8B");
    return lower.endsWith(".svg") && (head.contains("<svg") || head.contains("<?xml") || head.contains("<!--"));
}

QImage decodeJpeg(const QByteArray &nativePath, const Options &options, QString *error)
{
    QFile file(QFile::decodeName(nativePath));
    if (!file.open(QIODevice::ReadOnly)) {
        *error = file.errorString();
        return {};
    }
    // Read, not mapped: a file written over in place while it is decoded (an editor saving, a
    // copy arriving) would take mapped pages away under the decoder, and the program would end
    // with a bus error. The copy costs a few milliseconds beside the decode.
    const QByteArray copy = file.readAll();
    const qint64 size = copy.size();
    const char *data = copy.constData();
    QImage image = JpegDecoder::decode(data, size, options.fitSize, options.memoryLimit, error);
    int orientation = 1;
    if (!image.isNull() && options.applyOrientation)
        orientation = JpegStructure::parse(QByteArray::fromRawData(data, qsizetype(size))).orientation;
    if (image.isNull())
        return {};
    // Fitting the unrotated image into the rotated box fits the upright one into the box.
    QSize fit = options.fitSize;
    if (orientation >= 5)
        fit.transpose();
    return oriented(scaledToFit(image, fit), orientation);
}

QImage decodeSvg(const QByteArray &nativePath, const Options &options, QString *error)
{
    QSvgRenderer renderer(QFile::decodeName(nativePath));
    if (!renderer.isValid()) {
        *error = QStringLiteral("not a readable SVG file");
        return {};
    }
    QSize size = renderer.defaultSize();
    if (size.isEmpty())
        size = QSize(512, 512);
    if (!options.fitSize.isEmpty())
        size = size.scaled(options.fitSize, Qt::KeepAspectRatio);
    if (qint64(size.width()) * size.height() * 4 > options.memoryLimit) {
        *error =
            QStringLiteral("a %1 x %2 drawing needs more memory than allowed").arg(size.width()).arg(size.height());
        return {};
    }
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    renderer.render(&painter);
    return image;
}

QImage decodeWithQt(const QByteArray &nativePath, const Options &options, QString *error)
{
    QImageReader reader(QFile::decodeName(nativePath));
    reader.setAutoTransform(options.applyOrientation);
    reader.setDecideFormatFromContent(true);
    const QSize size = reader.size();
    if (size.isValid() && qint64(size.width()) * size.height() * 4 > options.memoryLimit) {
        *error = QStringLiteral("a %1 x %2 image needs more memory than allowed").arg(size.width()).arg(size.height());
        return {};
    }
    reader.setAllocationLimit(int(options.memoryLimit / (1024 * 1024)));
    // Plugins that scale while decoding (JPEG, WebP) do it themselves; the others decode whole
    // and the one full-size copy is dropped once scaled.
    if (!options.fitSize.isEmpty() && size.isValid() && reader.supportsOption(QImageIOHandler::ScaledSize)
        && (size.width() > options.fitSize.width() || size.height() > options.fitSize.height()))
        reader.setScaledSize(size.scaled(options.fitSize, Qt::KeepAspectRatio));
    QImage image = reader.read();
    if (image.isNull()) {
        *error = reader.errorString();
        return {};
    }
    return scaledToFit(image, options.fitSize);
}

// A PNG larger than the size to fit, read a row at a time and reduced on the way (Qt's reader
// would decode it whole first). Null when Qt's reader should read it instead: nothing to reduce,
// an interlaced file, or a file this reader gives up on.
QImage decodePngReduced(const QByteArray &nativePath, const Options &options, QString *error)
{
    if (options.fitSize.isEmpty())
        return {};
    const QSize size = QImageReader(QFile::decodeName(nativePath), "png").size();
    if (!size.isValid() || (size.width() <= options.fitSize.width() && size.height() <= options.fitSize.height())
        || PngDecoder::isInterlaced(nativePath))
        return {};
    return PngDecoder::decodeReduced(nativePath, options.fitSize, error);
}

} // namespace

QByteArray sniffFormat(const QByteArray &head, const QByteArray &nativePath)
{
    switch (ImageHeaderReader::detectFormat(head, {}, nativePath)) {
    case ImageFormat::Jpeg: return "jpeg";
    case ImageFormat::Png: return "png";
    case ImageFormat::Tiff: return "tiff";
    case ImageFormat::Heif: return "heif";
    case ImageFormat::CameraRaw: return "raw";
    case ImageFormat::Other: break;
    }
    if (looksLikeSvg(head, nativePath))
        return "svg";
    QBuffer buffer;
    buffer.setData(head);
    buffer.open(QIODevice::ReadOnly);
    return QImageReader::imageFormat(&buffer);
}

QImage oriented(const QImage &image, int orientation)
{
    switch (orientation) {
    case 2: return image.mirrored(true, false);
    case 3: return image.transformed(QTransform().rotate(180));
    case 4: return image.mirrored(false, true);
    case 5: return image.transformed(QTransform().rotate(90)).mirrored(true, false);
    case 6: return image.transformed(QTransform().rotate(90));
    case 7: return image.transformed(QTransform().rotate(-90)).mirrored(true, false);
    case 8: return image.transformed(QTransform().rotate(-90));
    default: return image;
    }
}

QImage scaledToFit(const QImage &image, QSize size)
{
    if (image.isNull() || size.isEmpty() || (image.width() <= size.width() && image.height() <= size.height()))
        return image;
    return image.scaled(size, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

QImage decode(const QByteArray &nativePath, const Options &options, QString *error)
{
    QString ignored;
    QString &message = error ? *error : ignored;
    NativeFile file;
    if (!file.open(nativePath, &message))
        return {};
    if (file.size() == 0) {
        message = QStringLiteral("empty file");
        return {};
    }
    const QByteArray head = file.read(0, 256);
    const QByteArray format = sniffFormat(head, nativePath);
    QImage image;
    if (format == "jpeg") {
        image = decodeJpeg(nativePath, options, &message);
        if (image.isNull() && message == QLatin1String("CMYK JPEG"))
            image = decodeWithQt(nativePath, options, &message);
    } else if (format == "png") {
        image = decodePngReduced(nativePath, options, &message);
        if (image.isNull())
            image = decodeWithQt(nativePath, options, &message);
    } else if (format == "heif") {
        image = HeifDecoder::decode(nativePath, options.fitSize, options.memoryLimit, &message);
    } else if (format == "raw") {
        image = RawDecoder::decode(nativePath, options.fitSize, options.memoryLimit, &message);
    } else if (format == "svg") {
        image = decodeSvg(nativePath, options, &message);
    } else if (!format.isEmpty()) {
        image = decodeWithQt(nativePath, options, &message);
    } else {
        message = QStringLiteral("not an image format that can be read");
    }
    return image;
}

} // namespace ImageDecoder
