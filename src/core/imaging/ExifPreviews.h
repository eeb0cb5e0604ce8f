#pragma once

#include <QByteArray>
#include <QString>

// The previews that Exiv2 finds in a file's metadata (the EXIF thumbnail, JPEG previews in
// TIFF-based files and maker notes, XMP thumbnails). Every Exiv2 error becomes an empty answer
// with a message. The only file besides ExifReader that sees Exiv2 types.
namespace ExifPreviews {

struct Preview
{
    QByteArray data; // an encoded picture (JPEG, TIFF or PNG)
    int width = 0;
    int height = 0;
    int orientation = 0; // of the file, 0 when not stated
};

// The smallest preview whose long edge covers `neededPixels`, else the largest.
Preview best(const QByteArray &nativePath, int neededPixels, QString *error);

} // namespace ExifPreviews
