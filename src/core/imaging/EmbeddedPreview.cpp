#include "core/imaging/EmbeddedPreview.h"

#include "core/imaging/ExifPreviews.h"
#include "core/imaging/HeifDecoder.h"
#include "core/imaging/ImageDecoder.h"
#include "core/imaging/ImageHeaderReader.h"
#include "core/imaging/JpegDecoder.h"
#include "core/imaging/JpegStructure.h"
#include "core/imaging/NativeFile.h"
#include "core/imaging/RawDecoder.h"

#include <algorithm>

namespace EmbeddedPreview {
namespace {

// Previews are small pictures; 64 MB is far above any that a camera stores.
constexpr qint64 previewMemoryLimit = qint64(64) * 1024 * 1024;

// The long edge a preview is delivered at: what was asked for, within the cap. A grid cell keeps
// its picture in memory, so a 1080-pixel picture for a 400-pixel cell would cost seven times
// what it shows.
QSize deliveredSize(int neededPixels)
{
    const int edge = neededPixels > 0 ? std::min(neededPixels, maxPixelSize) : maxPixelSize;
    return {edge, edge};
}

QImage decodeEncoded(const QByteArray &data, int orientation, QSize fitSize, QString *error)
{
    QImage image;
    if (data.startsWith("\xFF\xD8")) {
        image = JpegDecoder::decode(data.constData(), data.size(), fitSize, previewMemoryLimit, error);
    } else {
        image = QImage::fromData(data);
        if (image.isNull())
            *error = QStringLiteral("unreadable embedded preview");
    }
    if (image.isNull())
        return {};
    return ImageDecoder::oriented(ImageDecoder::scaledToFit(image, fitSize), orientation);
}

// A JPEG's EXIF thumbnail and its further MPF images, read straight from the file.
QImage jpegPreview(const NativeFile &file, const QByteArray &head, int neededPixels, QString *error)
{
    ImageHeader header;
    QByteArray segments;
    if (!ImageHeaderReader::readJpeg(file, head, &header, &segments, error))
        return {};
    const JpegStructure structure = JpegStructure::parse(segments);
    QList<JpegStructure::Range> ranges = structure.extraImages;
    if (structure.exifThumbnail)
        ranges.prepend(*structure.exifThumbnail);

    QByteArray best;
    int bestEdge = 0;
    for (const JpegStructure::Range &range : std::as_const(ranges)) {
        if (range.offset + range.length > file.size())
            continue;
        const QByteArray data = file.read(range.offset, range.length);
        const QSize size = JpegDecoder::size(data.constData(), data.size());
        const int edge = qMax(size.width(), size.height());
        if (edge == 0)
            continue;
        const bool better =
            best.isEmpty() || (bestEdge < neededPixels ? edge > bestEdge : (edge >= neededPixels && edge < bestEdge));
        if (better) {
            best = data;
            bestEdge = edge;
        }
    }
    if (best.isEmpty()) {
        *error = QStringLiteral("no embedded preview");
        return {};
    }
    return decodeEncoded(best, structure.orientation, deliveredSize(neededPixels), error);
}

} // namespace

QImage read(const QByteArray &nativePath, int neededPixels, QString *error)
{
    QString ignored;
    QString &message = error ? *error : ignored;
    NativeFile file;
    if (!file.open(nativePath, &message))
        return {};
    const QByteArray head = file.read(0, 64);
    switch (ImageHeaderReader::detectFormat(head, {}, nativePath)) {
    case ImageFormat::Jpeg: return jpegPreview(file, head, neededPixels, &message);
    case ImageFormat::Heif: {
        const QImage image = HeifDecoder::thumbnail(nativePath, neededPixels, &message);
        return ImageDecoder::scaledToFit(image, deliveredSize(neededPixels));
    }
    case ImageFormat::CameraRaw:
        return RawDecoder::embeddedPreview(nativePath, deliveredSize(neededPixels).width(), &message);
    case ImageFormat::Png:
    case ImageFormat::Tiff:
    case ImageFormat::Other: break;
    }
    const ExifPreviews::Preview preview = ExifPreviews::best(nativePath, neededPixels, &message);
    if (preview.data.isEmpty())
        return {};
    return decodeEncoded(preview.data, preview.orientation, deliveredSize(neededPixels), &message);
}

} // namespace EmbeddedPreview
