#pragma once

#include <QByteArray>
#include <QString>

// The EXIF orientation of formats whose pixels are not turned losslessly here (TIFF and the
// camera RAW files built on it): a quarter turn is written as a new orientation tag, the pixels
// stay as they are. Works on the file's bytes in memory; never throws.
namespace OrientationTag {

// The orientation (1 to 8) shown after turning one shown as `orientation` a quarter turn.
int turned(int orientation, bool clockwise);
// The file's bytes with its orientation turned; empty with `error` set when the format's
// metadata cannot be written.
QByteArray turnedFile(const QByteArray &bytes, bool clockwise, QString &error);

} // namespace OrientationTag
