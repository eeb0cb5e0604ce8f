#pragma once

#include <QByteArray>
#include <QImage>
#include <QSize>
#include <QString>

// Camera raw files through LibRaw: the preview the camera embedded, and the developed image
// (half size when that still covers the wanted size, which skips demosaicing). Both come out
// upright. The only file besides RawReader that sees LibRaw types.
namespace RawDecoder {

// The largest embedded preview, decoded with its long edge capped at `maxPixels`; null when
// the file has none.
QImage embeddedPreview(const QByteArray &nativePath, int maxPixels, QString *error);

QImage decode(const QByteArray &nativePath, QSize fitSize, qint64 memoryLimit, QString *error);

} // namespace RawDecoder
