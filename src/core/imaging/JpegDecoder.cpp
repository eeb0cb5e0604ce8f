#include "core/imaging/JpegDecoder.h"

#include <turbojpeg.h>

#include <memory>

namespace JpegDecoder {
namespace {

struct HandleCloser
{
    void operator()(void *handle) const { tjDestroy(handle); }
};
using Handle = std::unique_ptr<void, HandleCloser>;

// One decompressor per thread: making one allocates, and thumbnails decode thousands of files.
tjhandle threadHandle()
{
    thread_local Handle handle(tjInitDecompress());
    return handle.get();
}

} // namespace

QSize size(const char *data, qsizetype length)
{
    tjhandle handle = threadHandle();
    int width = 0, height = 0, subsampling = 0, colorspace = 0;
    if (!handle || length <= 0
        || tjDecompressHeader3(handle, reinterpret_cast<const unsigned char *>(data),
                               static_cast<unsigned long>(length), &width, &height, &subsampling, &colorspace)
            != 0)
        return {};
    return QSize(width, height);
}

QImage decode(const char *data, qsizetype length, QSize fitSize, qint64 memoryLimit, QString *error, QString *warning)
{
    tjhandle handle = threadHandle();
    if (!handle) {
        *error = QStringLiteral("cannot start the JPEG decoder");
        return {};
    }
    const auto *bytes = reinterpret_cast<const unsigned char *>(data);
    const auto byteCount = static_cast<unsigned long>(length);
    int width = 0, height = 0, subsampling = 0, colorspace = 0;
    if (length <= 0 || tjDecompressHeader3(handle, bytes, byteCount, &width, &height, &subsampling, &colorspace) != 0) {
        *error = QStringLiteral("not a readable JPEG: %1").arg(QString::fromUtf8(tjGetErrorStr2(handle)));
        return {};
    }
    if (colorspace == TJCS_CMYK || colorspace == TJCS_YCCK) {
        *error = QStringLiteral("CMYK JPEG");
        return {};
    }

    // The smallest scale whose output still covers the wanted size in the limiting direction.
    int scaledWidth = width;
    int scaledHeight = height;
    if (fitSize.isValid() && !fitSize.isEmpty()) {
        const double needed = qMin(double(fitSize.width()) / width, double(fitSize.height()) / height);
        int count = 0;
        const tjscalingfactor *factors = tjGetScalingFactors(&count);
        double best = 2;
        for (int i = 0; i < count; ++i) {
            const double factor = double(factors[i].num) / factors[i].denom;
            if (factor <= 1 && factor >= needed && factor < best) {
                best = factor;
                scaledWidth = TJSCALED(width, factors[i]);
                scaledHeight = TJSCALED(height, factors[i]);
            }
        }
    }
    if (qint64(scaledWidth) * scaledHeight * 4 > memoryLimit) {
        *error = QStringLiteral("a %1 x %2 JPEG needs more memory than allowed").arg(width).arg(height);
        return {};
    }
    QImage image(scaledWidth, scaledHeight, QImage::Format_RGB32);
    if (image.isNull()) {
        *error = QStringLiteral("out of memory for a %1 x %2 image").arg(scaledWidth).arg(scaledHeight);
        return {};
    }
    // Thumbnails do not show the difference of the exact DCT and upsampling.
    const int flags = fitSize.isEmpty() ? 0 : (TJFLAG_FASTDCT | TJFLAG_FASTUPSAMPLE);
    if (tjDecompress2(handle, bytes, byteCount, image.bits(), scaledWidth, int(image.bytesPerLine()), scaledHeight,
                      TJPF_BGRX, flags)
        != 0) {
        // A warning (a truncated or slightly damaged file) still leaves the part that decoded.
        if (tjGetErrorCode(handle) != TJERR_WARNING) {
            *error = QStringLiteral("damaged JPEG: %1").arg(QString::fromUtf8(tjGetErrorStr2(handle)));
            return {};
        }
        if (warning)
            *warning = QString::fromUtf8(tjGetErrorStr2(handle));
    }
    return image;
}

} // namespace JpegDecoder
