#include "core/imaging/RawDecoder.h"

#include "core/imaging/ImageDecoder.h"
#include "core/imaging/JpegDecoder.h"

#include <libraw/libraw.h>

#include <memory>

namespace {

struct RawDeleter
{
    void operator()(libraw_data_t *raw) const { libraw_close(raw); }
};
struct MemImageDeleter
{
    void operator()(libraw_processed_image_t *image) const { libraw_dcraw_clear_mem(image); }
};
using Raw = std::unique_ptr<libraw_data_t, RawDeleter>;
using MemImage = std::unique_ptr<libraw_processed_image_t, MemImageDeleter>;

Raw openRaw(const QByteArray &nativePath, QString *error)
{
    // Without these flags LibRaw reports damaged data and memory errors on stderr itself.
    Raw raw(libraw_init(LIBRAW_OPIONS_NO_MEMERR_CALLBACK | LIBRAW_OPIONS_NO_DATAERR_CALLBACK));
    if (!raw) {
        *error = QStringLiteral("out of memory");
        return {};
    }
    const int result = libraw_open_file(raw.get(), nativePath.constData());
    if (result != LIBRAW_SUCCESS) {
        *error = QString::fromUtf8(libraw_strerror(result));
        return {};
    }
    return raw;
}

// LibRaw's flip code as an EXIF orientation.
int orientationForFlip(int flip)
{
    switch (flip) {
    case 3: return 3;
    case 5: return 8;
    case 6: return 6;
    default: return 1;
    }
}

QImage bitmapImage(const libraw_processed_image_t *image)
{
    if (image->type != LIBRAW_IMAGE_BITMAP || image->colors != 3 || image->bits != 8)
        return {};
    QImage result(image->width, image->height, QImage::Format_RGB888);
    if (result.isNull())
        return {};
    const qsizetype rowBytes = qsizetype(image->width) * 3;
    for (int y = 0; y < image->height; ++y)
        memcpy(result.scanLine(y), image->data + y * rowBytes, size_t(rowBytes));
    return result;
}

} // namespace

namespace RawDecoder {

QImage embeddedPreview(const QByteArray &nativePath, int maxPixels, QString *error)
{
    const Raw raw = openRaw(nativePath, error);
    if (!raw)
        return {};
    int result = libraw_unpack_thumb(raw.get());
    if (result != LIBRAW_SUCCESS) {
        *error = QString::fromUtf8(libraw_strerror(result));
        return {};
    }
    const MemImage thumb(libraw_dcraw_make_mem_thumb(raw.get(), &result));
    if (!thumb) {
        *error = QString::fromUtf8(libraw_strerror(result));
        return {};
    }
    QImage image;
    if (thumb->type == LIBRAW_IMAGE_JPEG) {
        // Previews are small JPEGs; 64 MB is far above any that a camera stores.
        image = JpegDecoder::decode(reinterpret_cast<const char *>(thumb->data), qsizetype(thumb->data_size),
                                    QSize(maxPixels, maxPixels), qint64(64) * 1024 * 1024, error);
    } else {
        image = bitmapImage(thumb.get());
        if (image.isNull())
            *error = QStringLiteral("unsupported raw preview format");
    }
    if (image.isNull())
        return {};
    image = ImageDecoder::scaledToFit(image, QSize(maxPixels, maxPixels));
    return ImageDecoder::oriented(image, orientationForFlip(raw->sizes.flip));
}

QImage decode(const QByteArray &nativePath, QSize fitSize, qint64 memoryLimit, QString *error)
{
    const Raw raw = openRaw(nativePath, error);
    if (!raw)
        return {};
    const int width = raw->sizes.width;
    const int height = raw->sizes.height;
    // LibRaw holds the raw samples and a 16-bit RGB image while it develops: about 10 bytes a pixel.
    if (qint64(width) * height * 10 > memoryLimit) {
        *error = QStringLiteral("a %1 x %2 raw image needs more memory than allowed").arg(width).arg(height);
        return {};
    }
    // Half size skips demosaicing; it serves whenever the image is shown at half or less.
    const bool half =
        !fitSize.isEmpty() && qMin(double(fitSize.width()) / width, double(fitSize.height()) / height) <= 0.5;
    raw->params.half_size = half ? 1 : 0;
    raw->params.use_camera_wb = 1;
    raw->params.output_bps = 8;
    int result = libraw_unpack(raw.get());
    if (result == LIBRAW_SUCCESS)
        result = libraw_dcraw_process(raw.get());
    if (result != LIBRAW_SUCCESS) {
        *error = QString::fromUtf8(libraw_strerror(result));
        return {};
    }
    const MemImage processed(libraw_dcraw_make_mem_image(raw.get(), &result));
    if (!processed) {
        *error = QString::fromUtf8(libraw_strerror(result));
        return {};
    }
    QImage image = bitmapImage(processed.get());
    if (image.isNull()) {
        *error = QStringLiteral("unsupported developed raw image");
        return {};
    }
    return ImageDecoder::scaledToFit(image, fitSize);
}

} // namespace RawDecoder
