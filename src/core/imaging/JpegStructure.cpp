#include "core/imaging/JpegStructure.h"

#include "core/imaging/TiffView.h"

namespace {

void parseExif(const TiffView &tiff, JpegStructure *structure)
{
    const quint32 ifd0 = tiff.u32(4);
    const quint32 ifd1 = tiff.walkIfd(ifd0, [&](quint32 tag, quint32, quint32, qint64 value) {
        if (tag == 0x0112) {
            const int orientation = int(tiff.u16(value));
            if (orientation >= 1 && orientation <= 8)
                structure->orientation = orientation;
        }
    });
    if (ifd1 == 0 || ifd1 == ifd0)
        return;
    quint32 offset = 0, length = 0;
    tiff.walkIfd(ifd1, [&](quint32 tag, quint32, quint32, qint64 value) {
        if (tag == 0x0201)
            offset = tiff.u32(value);
        else if (tag == 0x0202)
            length = tiff.u32(value);
    });
    if (offset > 0 && length > 0)
        structure->exifThumbnail = JpegStructure::Range{tiff.start() + offset, length};
}

void parseMpf(const TiffView &tiff, JpegStructure *structure)
{
    quint32 entries = 0, entriesOffset = 0, imageCount = 0;
    tiff.walkIfd(tiff.u32(4), [&](quint32 tag, quint32, quint32 count, qint64 value) {
        if (tag == 0xB001)
            imageCount = tiff.u32(value);
        else if (tag == 0xB002) {
            entries = count / 16;
            entriesOffset = tiff.u32(value);
        }
    });
    entries = qMin(entries, imageCount ? imageCount : entries);
    // The first entry is the main image itself (offset 0).
    for (quint32 i = 1; i < entries && i < 64; ++i) {
        const qint64 at = entriesOffset + qint64(i) * 16;
        if (!tiff.contains(at, 16))
            break;
        const quint32 length = tiff.u32(at + 4);
        const quint32 offset = tiff.u32(at + 8);
        if (offset > 0 && length > 0)
            structure->extraImages.append({tiff.start() + offset, length});
    }
}

} // namespace

JpegStructure JpegStructure::parse(const QByteArray &segments)
{
    JpegStructure structure;
    const qint64 size = segments.size();
    qint64 pos = 2;
    while (pos + 4 <= size) {
        if (quint8(segments.at(pos)) != 0xFF) {
            ++pos;
            continue;
        }
        const quint8 marker = quint8(segments.at(pos + 1));
        if (marker == 0xFF) {
            ++pos;
            continue;
        }
        if (marker == 0xDA || marker == 0xD9)
            break;
        const qint64 length = quint8(segments.at(pos + 2)) << 8 | quint8(segments.at(pos + 3));
        const qint64 data = pos + 4;
        const qint64 end = qMin(size, pos + 2 + length);
        if (length < 2)
            break;
        if (marker == 0xE1 && end - data > 6 && segments.mid(data, 6) == QByteArray("Exif\0\0", 6)) {
            TiffView tiff(segments, data + 6, end);
            if (tiff.valid())
                parseExif(tiff, &structure);
        } else if (marker == 0xE2 && end - data > 4 && segments.mid(data, 4) == QByteArray("MPF\0", 4)) {
            TiffView tiff(segments, data + 4, end);
            if (tiff.valid())
                parseMpf(tiff, &structure);
        }
        pos += 2 + length;
    }
    return structure;
}
