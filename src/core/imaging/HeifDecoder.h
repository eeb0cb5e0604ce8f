#pragma once

#include <QByteArray>
#include <QImage>
#include <QSize>
#include <QString>

// HEIC, HEIF and AVIF pictures through libheif: the primary image (turned upright by the file's
// own rotation and mirror boxes, never by its EXIF orientation) and its stored thumbnails. The
// only file besides HeifReader that sees libheif types.
namespace HeifDecoder {

// The primary image, refused before decoding when its pixels would pass `memoryLimit` bytes.
// The decoded planes are handed to the image without a copy; a size to fit scales them down.
QImage decode(const QByteArray &nativePath, QSize fitSize, qint64 memoryLimit, QString *error);

// The smallest stored thumbnail whose long edge covers `neededPixels`, else the largest; null
// when there is none.
QImage thumbnail(const QByteArray &nativePath, int neededPixels, QString *error);

} // namespace HeifDecoder
