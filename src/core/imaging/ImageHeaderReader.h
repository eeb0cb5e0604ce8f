#pragma once

#include "core/imaging/ImageHeader.h"

#include <QByteArray>
#include <QString>

class NativeFile;

// Reads pixel size, depth, alpha and colour model from a file's header without decoding pixels:
// a marker walk for JPEG, the chunk list before the image data for PNG, Qt's image plugins for
// the rest. `head` is the start of the file, already read by the caller.
namespace ImageHeaderReader {

ImageFormat detectFormat(const QByteArray &head, const QString &typeHint, const QByteArray &nativePath);

// Walks the markers from the start of the file up to the first scan. `metadataBytes` receives
// exactly those bytes (every metadata segment lives there), so that the metadata reader never
// touches the file again. Fails without a frame header (SOF).
bool readJpeg(const NativeFile &file, const QByteArray &head, ImageHeader *header, QByteArray *metadataBytes,
              QString *error);

bool readPng(const NativeFile &file, const QByteArray &head, ImageHeader *header, QString *error);

// Any format that an installed Qt image plugin reads (TIFF, WebP, GIF, BMP, ...).
bool readWithQt(const NativeFile &file, const QByteArray &head, ImageHeader *header, QString *error);

} // namespace ImageHeaderReader
