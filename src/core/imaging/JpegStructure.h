#pragma once

#include <QByteArray>
#include <QList>

#include <optional>

// What the segments before a JPEG's first scan say about the pictures in the file: the EXIF
// orientation, where the EXIF thumbnail is and where the further images of a multi-picture
// (MPF) file are (cameras store their large preview as the second image). Offsets are
// absolute in the file. Our own parser: tags are read with bounds checks, so a damaged
// segment only loses what it damaged.
struct JpegStructure
{
    struct Range
    {
        qint64 offset = 0;
        qint64 length = 0;
    };

    int orientation = 0; // 0: none stated
    std::optional<Range> exifThumbnail;
    QList<Range> extraImages; // MPF images after the first

    // `segments` holds the file's bytes from its start up to its first scan.
    static JpegStructure parse(const QByteArray &segments);
};
