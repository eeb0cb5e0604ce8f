#pragma once

#include <QByteArray>

// A TIFF structure (EXIF or MPF) inside a JPEG segment: bounds-checked reads in its byte order.
// A read past its end answers 0, so a damaged block loses only what it damaged. Holds a reference
// to the bytes: make one where it is used.
class TiffView
{
public:
    TiffView(const QByteArray &bytes, qint64 start, qint64 end)
        : m_bytes(bytes)
        , m_start(start)
        , m_end(end)
    {
        m_valid = end - start >= 8 && ((byte(0) == 'I' && byte(1) == 'I') || (byte(0) == 'M' && byte(1) == 'M'));
        m_little = m_valid && byte(0) == 'I';
    }

    bool valid() const { return m_valid; }
    bool isLittleEndian() const { return m_little; }
    qint64 start() const { return m_start; }
    bool contains(qint64 offset, qint64 length) const
    {
        return offset >= 0 && length >= 0 && m_start + offset + length <= m_end;
    }
    quint32 u16(qint64 offset) const
    {
        if (!contains(offset, 2))
            return 0;
        return m_little ? byte(offset) | byte(offset + 1) << 8 : byte(offset) << 8 | byte(offset + 1);
    }
    quint32 u32(qint64 offset) const
    {
        if (!contains(offset, 4))
            return 0;
        return m_little ? u16(offset) | u16(offset + 2) << 16 : u16(offset) << 16 | u16(offset + 2);
    }
    // Calls `entry(tag, type, count, valueOffset)` for each entry of the IFD at `offset`
    // and answers the offset of the next IFD (0 at the end).
    template<typename F>
    quint32 walkIfd(quint32 offset, F entry) const
    {
        const quint32 count = u16(offset);
        // An IFD may be empty (IFD0 of a file with only a thumbnail) and still link to the next.
        if (!contains(offset + 2, qint64(count) * 12 + 4))
            return 0;
        for (quint32 i = 0; i < count; ++i) {
            const qint64 at = offset + 2 + qint64(i) * 12;
            entry(u16(at), u16(at + 2), u32(at + 4), at + 8);
        }
        return u32(offset + 2 + qint64(count) * 12);
    }

private:
    quint32 byte(qint64 offset) const { return quint8(m_bytes.at(m_start + offset)); }

    const QByteArray &m_bytes;
    qint64 m_start;
    qint64 m_end;
    bool m_valid = false;
    bool m_little = false;
};
