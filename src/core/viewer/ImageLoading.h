#pragma once

#include <QByteArray>
#include <QImage>
#include <QSize>
#include <QString>

// The steps a viewer loads a file's picture in, each a plain call that runs on a worker thread
// (ImageViewDataSource schedules them). Pictures come out upright (EXIF orientation applied) and
// converted to sRGB, or to the display's profile when one is set (ColorTransform), when the file
// carries an ICC profile.
namespace ImageLoading {

struct Result
{
    QImage image; // null when the step gave no picture
    QSize imageSize; // the full-resolution upright size, when known
    QString error; // why there is no picture, for the user
    QString notice; // a remark on a picture that is there (it decoded only in part)
};

// The image's full size and the best preview embedded in the file covering `neededPixels`
// (long edge). A file without a preview gives its size only. Cheap: header and preview reads.
Result preview(const QByteArray &nativePath, int neededPixels);

// The picture decoded to cover `fitSize` (device pixels, upright; empty: full resolution),
// within `memoryLimit` bytes: an image whose full decode would pass the limit is decoded reduced
// to the largest size within it. A JPEG that ends early or is damaged gives what decoded and a
// notice.
Result decode(const QByteArray &nativePath, QSize fitSize, qint64 memoryLimit);

// The largest size with `size`'s aspect ratio whose 32-bit pixels fit `memoryLimit` bytes;
// `size` itself when it fits.
QSize sizeWithinMemory(QSize size, qint64 memoryLimit);

} // namespace ImageLoading
