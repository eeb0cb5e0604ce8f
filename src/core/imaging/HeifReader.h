#pragma once

#include "core/imaging/ImageHeader.h"

// Reads the header facts of a HEIF, HEIC or AVIF file through libheif: the box structure only,
// never the coded image. The image count is the number of top-level images (thumbnails and
// grid tiles excluded); size, alpha, depth, colour profile and the EXIF and XMP blocks are those
// of the primary image.
// The only file that sees libheif types.
namespace HeifReader {
bool read(const QByteArray &nativePath, ImageHeader *header, QString *error);
}
