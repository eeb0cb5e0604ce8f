#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>

// The pictures that a file carries besides its main image: the EXIF thumbnail, larger JPEG
// previews (a JPEG's MPF second image, previews in the metadata of TIFF-based files), the
// previews of camera raw files and the thumbnails of HEIF files. Reading one costs a small read
// of the file; the main image is never decoded.
namespace EmbeddedPreview {

// Previews are capped at this long edge: larger ones are decoded scaled down.
inline constexpr int maxPixelSize = 1080;

// The smallest preview whose long edge covers `neededPixels`, else the largest there is,
// decoded, turned upright by the file's orientation and scaled down to fit `neededPixels` (and
// `maxPixelSize`) on its long edge. Null when the file has none (with the reason in `error`).
QImage read(const QByteArray &nativePath, int neededPixels, QString *error = nullptr);

} // namespace EmbeddedPreview
