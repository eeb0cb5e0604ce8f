#pragma once

#include <QByteArray>
#include <QImage>
#include <QSize>
#include <QString>

// Decodes image files to QImage, whole or scaled to fit a size, turned upright by the file's
// EXIF orientation. The format is recognised by the file's first bytes, never by its name, so a
// PNG named .jpg still decodes. JPEG goes through libjpeg-turbo with DCT scaling (a 24 MP photo
// decodes straight to the smallest scale that still covers the wanted size); HEIF and AVIF
// through libheif; camera raw files through LibRaw (half size when that covers); SVG through Qt
// Svg; everything else through Qt's image plugins.
//
// Images whose decoded size would pass `memoryLimit` bytes are refused before anything is
// allocated; at most one full-size copy of an image is held while it is scaled. Truncated files
// give what decoded. Safe to call from several threads at once.
namespace ImageDecoder {

// 512 MB: a 100 MP photo in 32-bit pixels with room to spare; a 30 000 x 30 000 image is refused.
inline constexpr qint64 defaultMemoryLimit = qint64(512) * 1024 * 1024;

struct Options
{
    QSize fitSize; // empty: full size
    qint64 memoryLimit = defaultMemoryLimit;
    bool applyOrientation = true;
};

QImage decode(const QByteArray &nativePath, const Options &options, QString *error = nullptr);

// The file's first bytes named as a format: "jpeg", "png", "heif", "raw", "svg", ... or empty.
QByteArray sniffFormat(const QByteArray &head, const QByteArray &nativePath);

// `image` turned upright for EXIF `orientation` (1..8).
QImage oriented(const QImage &image, int orientation);

// `image` scaled to fit `size` with smooth filtering; unchanged when it already fits.
QImage scaledToFit(const QImage &image, QSize size);

} // namespace ImageDecoder
