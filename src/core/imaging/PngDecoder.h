#pragma once

#include <QByteArray>
#include <QImage>
#include <QSize>
#include <QString>

// PNG pictures reduced while they are read, a row at a time: a scan or a panorama of 30 000 x
// 30 000 pixels (3.6 GB decoded whole) is shown from a picture of the size the view needs, in
// the memory of that picture and one row. Qt's reader decodes a PNG whole before it scales.
namespace PngDecoder {

// The picture averaged down to fit `fitSize` (never enlarged), premultiplied RGBA, with the
// file's ICC profile as its colour space. Null with `error` set when the file is not a PNG, is
// interlaced (its rows arrive in passes, so it cannot be reduced row by row: the caller decodes it
// whole), or is damaged.
QImage decodeReduced(const QByteArray &nativePath, QSize fitSize, QString *error);

// Whether the file is an interlaced PNG.
bool isInterlaced(const QByteArray &nativePath);

} // namespace PngDecoder
