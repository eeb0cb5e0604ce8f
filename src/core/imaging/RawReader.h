#pragma once

#include "core/imaging/ImageHeader.h"

// Reads the header facts of a camera raw file through LibRaw: it identifies the camera and the
// sensor's output size without unpacking or developing any pixel. The only file that sees
// LibRaw types.
namespace RawReader {
bool read(const QByteArray &nativePath, ImageHeader *header, QString *error);
}
