#pragma once

#include <QList>
#include <QMap>
#include <QSize>
#include <QString>
#include <QStringList>

#include <optional>

// Images made by the tests themselves.
namespace TestImages {

// The shared corpus of real camera files, or an empty string when it is not beside the checkout.
QString corpusDir();
// A small file checked into tests/data, named after what it tests ("truncated-in-scan.jpg").
QString dataFile(const QString &name);

// What writeJpeg() puts into a file; every member left empty or unset is left out.
struct JpegOptions
{
    QString dateTimeOriginal; // "yyyy:MM:dd HH:mm:ss"
    int orientation = 0; // 1..8
    QString make;
    QString model;
    QList<int> iso; // Exif ISOSpeedRatings: one value or more
    double fNumber = 0;
    std::optional<double> latitude; // signed degrees; written unsigned with an N/S reference
    std::optional<double> longitude; // signed degrees; written unsigned with an E/W reference
    QStringList keywords; // IPTC keywords, UTF-8
    // Any further values by Exiv2 key ("Exif.Photo.UserComment", "Iptc.Application2.City",
    // "Xmp.xmp.Rating"), as text in Exiv2's notation for the key's type ("28/10", "1 2 3").
    QMap<QString, QString> extra;
    // Encodes a 16x16 image and writes the requested size into the frame header only: cheap for
    // big sizes and right for anything that reads headers, but the pixels do not decode to it.
    bool sizeInHeaderOnly = false;
};

// Writes a JPEG of `size` pixels with `options`' metadata to `path` (its folder must exist) and
// answers `path`. Aborts the test program when the file cannot be written.
QString writeJpeg(const QString &path, QSize size, const JpegOptions &options = {});

} // namespace TestImages
