#pragma once

#include "core/imaging/ExifReader.h"
#include "support/TestImages.h"

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QtEndian>

#include <exiv2/exiv2.hpp>

// JPEGs laid out as cameras write them: an EXIF thumbnail in IFD1 and a large preview as the
// second image of a multi-picture (MPF) file. Header-only so that every test target can use it.
namespace CameraJpegs {

inline QByteArray encodeJpeg(QSize size, QColor color, int quality = 85)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(color);
    // A mark in the top-left corner, so that tests can tell how a picture was turned.
    for (int y = 0; y < size.height() / 4; ++y)
        for (int x = 0; x < size.width() / 4; ++x)
            image.setPixel(x, y, qRgb(255, 0, 0));
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "JPEG", quality);
    return bytes;
}

// An APP2 "MPF" segment naming the main image and one preview `previewOffset` bytes after the
// segment's TIFF header.
inline QByteArray mpfSegment(quint32 mainLength, quint32 previewLength, quint32 previewOffset)
{
    QByteArray tiff;
    auto u16 = [&tiff](quint16 v) { tiff.append(char(v & 0xFF)).append(char(v >> 8)); };
    auto u32 = [&](quint32 v) {
        u16(quint16(v & 0xFFFF));
        u16(quint16(v >> 16));
    };
    tiff.append("II*\0", 4);
    u32(8);
    u16(3);
    u16(0xB000);
    u16(7);
    u32(4);
    tiff.append("0100", 4);
    u16(0xB001);
    u16(4);
    u32(1);
    u32(2);
    u16(0xB002);
    u16(7);
    u32(32);
    u32(8 + 2 + 3 * 12 + 4);
    u32(0);
    u32(0x20030000);
    u32(mainLength);
    u32(0);
    u32(0);
    u32(0x00010002);
    u32(previewLength);
    u32(previewOffset);
    u32(0);
    QByteArray segment("\xFF\xE2", 2);
    const int length = 2 + 4 + int(tiff.size());
    segment.append(char(length >> 8)).append(char(length & 0xFF)).append("MPF\0", 4).append(tiff);
    return segment;
}

// Writes a JPEG of `size` at `path`; `thumbnail` (if not empty) goes into the EXIF data,
// `preview` (if not empty) becomes the MPF second image. Answers `path`.
inline QString write(const QString &path, QSize size, QSize thumbnail, QSize preview, int orientation = 0)
{
    TestImages::JpegOptions options;
    options.orientation = orientation;
    TestImages::writeJpeg(path, size, options);
    if (!thumbnail.isEmpty()) {
        ExifReader::initialize();
        auto image = Exiv2::ImageFactory::open(QFile::encodeName(path).toStdString());
        image->readMetadata();
        const QByteArray thumb = encodeJpeg(thumbnail, Qt::darkGreen);
        Exiv2::ExifThumb(image->exifData())
            .setJpegThumbnail(reinterpret_cast<const Exiv2::byte *>(thumb.constData()), long(thumb.size()));
        image->writeMetadata();
    }
    if (!preview.isEmpty()) {
        QFile file(path);
        file.open(QIODevice::ReadOnly);
        const QByteArray main = file.readAll();
        file.close();
        const QByteArray previewBytes = encodeJpeg(preview, Qt::darkBlue);
        // SOI, the MPF segment, the rest of the main image, then the preview.
        const qsizetype segmentLength = mpfSegment(0, 0, 0).size();
        const quint32 mpStart = 2 + 8;
        const quint32 previewOffset = quint32(main.size() + segmentLength) - mpStart;
        QByteArray out = main.left(2);
        out += mpfSegment(quint32(main.size() + segmentLength), quint32(previewBytes.size()), previewOffset);
        out += main.mid(2);
        out += previewBytes;
        file.open(QIODevice::WriteOnly | QIODevice::Truncate);
        file.write(out);
    }
    return path;
}

} // namespace CameraJpegs
