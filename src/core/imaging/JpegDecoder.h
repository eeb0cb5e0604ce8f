#pragma once

#include <QByteArray>
#include <QImage>
#include <QSize>
#include <QString>

// JPEG decoding through libjpeg-turbo. A size to fit picks the smallest DCT scale (1/8 .. 1)
// whose result still covers it, so a 24 MP photo wanted at 1024 pixels decodes a quarter of its
// edge and never the whole image. A truncated file gives what decoded (the rest is grey). The
// only file that sees libjpeg-turbo types.
namespace JpegDecoder {

// The pixel size from the frame header; empty when `data` is not a JPEG it can read.
QSize size(const char *data, qsizetype length);

// Decodes `data` (a whole JPEG stream). Refuses, before allocating, an output larger than
// `memoryLimit` bytes. The result may still be larger than `fitSize` (the nearest DCT scale);
// the caller scales it down. Not oriented. `warning`, when given, receives the decoder's warning
// about a file that decoded only in part (truncated or damaged scan data). `useTwoThreads`: a
// baseline file with restart markers (as many cameras write them) is cut in two at a marker near
// its middle and the halves decoded at once, the top one on a second thread; other files, and
// files whose markers are out of order or missing, decode on the calling thread alone. Worth it
// for large files only: a thread's start and the copies of the two halves cost about a
// millisecond.
QImage decode(const char *data, qsizetype length, QSize fitSize, qint64 memoryLimit, QString *error,
              QString *warning = nullptr, bool useTwoThreads = false);

// The pixel row at which a two-thread decode cuts `data` (the top part's height); 0 when it
// decodes the file whole.
int twoThreadCut(const char *data, qsizetype length);

} // namespace JpegDecoder
