#include "core/imaging/JpegDecoder.h"

#include <turbojpeg.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>
#include <thread>

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

// Where a baseline JPEG with restart markers can be cut into two streams that decode on their
// own: after a restart interval that ends an MCU row. The DC predictions start over after every
// marker, so the part after it needs nothing from the part before.
struct Split
{
    qsizetype heightAt = 0; // the frame header's height field
    qsizetype scanStart = 0; // the first byte of entropy-coded data
    qsizetype markerAt = 0; // the restart marker that ends the top part
    int topHeight = 0; // pixel rows in the top part: whole MCU rows
    int height = 0;
};

int readWord(const uchar *at)
{
    return (at[0] << 8) | at[1];
}

std::optional<Split> findSplit(const uchar *bytes, qsizetype size)
{
    if (size < 4 || bytes[0] != 0xFF || bytes[1] != 0xD8)
        return {};
    Split split;
    int restartInterval = 0, width = 0, components = 0, maxH = 1, maxV = 1;
    bool baseline = false;
    for (qsizetype at = 2;;) {
        if (at + 4 > size || bytes[at] != 0xFF)
            return {};
        const uchar marker = bytes[at + 1];
        if (marker == 0xFF) { // fill byte
            ++at;
            continue;
        }
        const int length = readWord(bytes + at + 2);
        if (length < 2 || at + 2 + length > size)
            return {};
        const uchar *segment = bytes + at + 4;
        if (marker == 0xC0 || marker == 0xC1) {
            if (length < 8)
                return {};
            baseline = true;
            split.heightAt = at + 5;
            split.height = readWord(segment + 1);
            width = readWord(segment + 3);
            components = segment[5];
            if (components < 1 || length < 8 + 3 * components)
                return {};
            for (int c = 0; c < components; ++c) {
                const int sampling = segment[6 + 3 * c + 1];
                maxH = std::max(maxH, sampling >> 4);
                maxV = std::max(maxV, sampling & 15);
            }
        } else if (marker >= 0xC2 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC) {
            return {}; // progressive, lossless or arithmetic-coded: decoded whole
        } else if (marker == 0xDD && length >= 4) {
            restartInterval = readWord(segment);
        } else if (marker == 0xDA) {
            // One scan holding every component (the MCUs interleave them), as cameras write.
            if (!baseline || restartInterval == 0 || split.height == 0 || width == 0 || segment[0] != components)
                return {};
            split.scanStart = at + 2 + length;
            break;
        }
        at += 2 + length;
    }
    const int mcuWidth = components == 1 ? 8 : 8 * maxH;
    const int mcuHeight = components == 1 ? 8 : 8 * maxV;
    const qint64 mcusPerRow = (width + mcuWidth - 1) / mcuWidth;
    const int mcuRows = (split.height + mcuHeight - 1) / mcuHeight;
    // The cut comes after a multiple of eight intervals, so that the bottom part's markers count
    // from RST0 as a stream's must; as near the middle as that allows, else not at all.
    const qint64 period = 8LL * restartInterval;
    int row = -1;
    for (int distance = 0; distance <= mcuRows / 6 && row < 0; ++distance) {
        for (const int candidate : {mcuRows / 2 - distance, mcuRows / 2 + distance}) {
            if (candidate > 0 && candidate < mcuRows && (candidate * mcusPerRow) % period == 0) {
                row = candidate;
                break;
            }
        }
    }
    if (row < 0)
        return {};
    const qint64 markersBefore = row * mcusPerRow / restartInterval;
    qint64 seen = 0;
    for (qsizetype at = split.scanStart; at + 1 < size;) {
        const auto *found = static_cast<const uchar *>(std::memchr(bytes + at, 0xFF, size_t(size - 1 - at)));
        if (!found)
            return {};
        at = found - bytes;
        const uchar next = bytes[at + 1];
        if (next >= 0xD0 && next <= 0xD7) {
            // Markers out of order: a damaged file, which the decode of the whole stream copes with.
            if (next != 0xD0 + seen % 8)
                return {};
            if (++seen == markersBefore) {
                split.markerAt = at;
                split.topHeight = row * mcuHeight;
                return split;
            }
            at += 2;
        } else if (next == 0x00 || next == 0xFF) { // a stuffed 0xFF, or fill
            at += next == 0x00 ? 2 : 1;
        } else {
            return {}; // the stream ends (or is cut off) before the middle
        }
    }
    return {};
}

// The header of `bytes` (up to the scan's data) with the frame's height set to `height`.
QByteArray headerWithHeight(const uchar *bytes, const Split &split, int height)
{
    QByteArray header(reinterpret_cast<const char *>(bytes), split.scanStart);
    header[split.heightAt] = char(height >> 8);
    header[split.heightAt + 1] = char(height & 0xFF);
    return header;
}

struct PartResult
{
    bool ok = true;
    QString error;
    QString warning;
};

PartResult decodePart(const QByteArray &stream, uchar *pixels, int width, int pitch, int height, int flags)
{
    PartResult result;
    tjhandle handle = threadHandle();
    if (!handle) {
        result.ok = false;
        result.error = QStringLiteral("cannot start the JPEG decoder");
        return result;
    }
    if (tjDecompress2(handle, reinterpret_cast<const unsigned char *>(stream.constData()),
                      static_cast<unsigned long>(stream.size()), pixels, width, pitch, height, TJPF_BGRX, flags)
        != 0) {
        const QString message = QString::fromUtf8(tjGetErrorStr2(handle));
        if (tjGetErrorCode(handle) == TJERR_WARNING) {
            result.warning = message;
        } else {
            result.ok = false;
            result.error = message;
        }
    }
    return result;
}

// Decodes the two parts of `bytes` into `image` (sized for the whole at `factor`), the top part
// on a thread of its own. False when a part fails; the caller then decodes the stream whole.
bool decodeInTwo(const uchar *bytes, qsizetype size, const Split &split, tjscalingfactor factor, int flags,
                 QImage &image, QString *warning)
{
    const int topRows = TJSCALED(split.topHeight, factor);
    const int pitch = int(image.bytesPerLine());
    uchar *pixels = image.bits(); // taken once, before two threads write to it
    PartResult top;
    std::thread topThread([&] {
        QByteArray stream = headerWithHeight(bytes, split, split.topHeight);
        stream.append(reinterpret_cast<const char *>(bytes) + split.scanStart, split.markerAt - split.scanStart);
        stream.append("\xFF\xD9", 2);
        top = decodePart(stream, pixels, image.width(), pitch, topRows, flags);
    });
    QByteArray stream = headerWithHeight(bytes, split, split.height - split.topHeight);
    stream.append(reinterpret_cast<const char *>(bytes) + split.markerAt + 2, size - split.markerAt - 2);
    const PartResult bottom =
        decodePart(stream, pixels + qsizetype(topRows) * pitch, image.width(), pitch, image.height() - topRows, flags);
    topThread.join();
    if (!top.ok || !bottom.ok)
        return false;
    if (warning && (!top.warning.isEmpty() || !bottom.warning.isEmpty()))
        *warning = top.warning.isEmpty() ? bottom.warning : top.warning;
    return true;
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

QImage decode(const char *data, qsizetype length, QSize fitSize, qint64 memoryLimit, QString *error, QString *warning,
              bool useTwoThreads)
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
    tjscalingfactor chosen{1, 1};
    if (fitSize.isValid() && !fitSize.isEmpty()) {
        const double needed = qMin(double(fitSize.width()) / width, double(fitSize.height()) / height);
        int count = 0;
        const tjscalingfactor *factors = tjGetScalingFactors(&count);
        double best = 2;
        for (int i = 0; i < count; ++i) {
            const double factor = double(factors[i].num) / factors[i].denom;
            if (factor <= 1 && factor >= needed && factor < best) {
                best = factor;
                chosen = factors[i];
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
    if (useTwoThreads) {
        if (const std::optional<Split> split = findSplit(bytes, length);
            split && decodeInTwo(bytes, length, *split, chosen, flags, image, warning))
            return image;
    }
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

int twoThreadCut(const char *data, qsizetype length)
{
    const std::optional<Split> split = findSplit(reinterpret_cast<const uchar *>(data), length);
    return split ? split->topHeight : 0;
}

} // namespace JpegDecoder
